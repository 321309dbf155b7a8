// How an element follows its knob slots and modulation rows.
#include "base/tempo_factor.h"
#include "base/units.h"
#include "patch/element.h"
#include "patch/element_rows.h"
#include "patch/patch.h"

namespace stratovane {

// Knob slots.

/// The value that conversions see: as stored, moved by the knobs that point at it.
float Element::routed(int index) const { return knobs_.routed(index, stored(index)); }

/// Brings a slot (0, 1) in line with its stored mode, input, destinations and depths.
void Element::followSlot(int slot) {
    using namespace elementIndex;
    KnobSlot& held = knobs_.slots[static_cast<std::size_t>(slot)];
    const KnobSlot before = held;
    const auto mode = static_cast<KnobMode>(choice(stored(firstSlotMode + slot), 3.9f));
    held.value = slotValue(mode, stored(firstSlotInput + slot));
    for (int i = 0; i < 2; ++i) {
        const int index = firstSlotDestination + 4 * slot + 2 * i;
        knobs_.point(slot, i, firstRouted + choice(stored(index), 235.9f));
        held.depths[static_cast<std::size_t>(i)] = 2.0f * stored(index + 1) - 1.0f;
    }
    if (held == before) return;
    knobs_.applying = true;
    for (std::size_t i = 0; i < 2; ++i) {
        // What is pointed at no longer returns to its plain value.
        if (before.destinations[i] != held.destinations[i])
            patch_->settle(number_, before.destinations[i], Patch::When::owner);
        patch_->settle(number_, held.destinations[i], Patch::When::owner);
    }
    knobs_.applying = false;
}

/// A slot is connected to knob 1..6 (others: to none) and takes its position over. Not while a knob
/// itself moves the connection: that could go on for ever.
void Element::connectSlot(int slot, int knob) {
    int& held = knobs_.knobs[static_cast<std::size_t>(slot)];
    if (held == knob) return;
    held = knob;
    if (knob < 1 || knob > 6 || knobs_.applying) return;
    feedSlot(slot, patch_->get(0, global::knobs[knob - 1]));
}

void Element::knobTurned(int knob, float position) {
    for (int slot = 0; slot < KnobSlots::count; ++slot)
        if (knobs_.knobs[static_cast<std::size_t>(slot)] == knob) feedSlot(slot, position);
}

void Element::feedSlot(int slot, float position) {
    values_[static_cast<std::size_t>(elementIndex::firstSlotInput + slot)] = position;
    followSlot(slot);
}

// Modulation rows.

void Element::editRow(int row) {
    constexpr float sources = 71.9f, destinations = 15.9f;
    const int first = elementIndex::firstModulationRow + 5 * row;
    controls_.rows.edit(row,
                        {.source = choice(routed(first), sources),
                         .modifier = choice(routed(first + 1), sources),
                         .destination = choice(routed(first + 3), destinations),
                         .parameter = 2.0f * routed(first + 2) - 1.0f,
                         .depth = 4.0f * signedSquare(routed(first + 4))},
                        rowContext());
}

void Element::recompileRows() {
    if (controls_.rows.active > 0) controls_.rows.recompile(rowContext());
}

RowContext Element::rowContext() const {
    return {type_ == ElementType::wavetable, static_cast<float>(tickFrames / patch_->rate_),
            tempoFactor(patch_->tempo_, controls_.tempoToEnvelopes)};
}

void ElementScope::followSlot(int slot) { element.followSlot(slot); }
void ElementScope::connectSlot(int slot, int knob) { element.connectSlot(slot, knob); }
void ElementScope::editRow(int row) { element.editRow(row); }
void ElementScope::recompileRows() { element.recompileRows(); }

}  // namespace stratovane
