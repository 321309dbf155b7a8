#include "voice/voice_modulation.h"

#include <algorithm>
#include <cstddef>

#include "voice/control_tick.h"
#include "voice/modulation_sources.h"
#include "voice/part_state.h"

namespace stratovane {
namespace {

void takeRow(const PartState& part, Voice& voice, std::size_t index) {
    const ModulationRow& row = voice.controls().rows.rows[index];
    const CompiledRow& compiled = row.compiled;
    ModulationSlot& slot = voice.slots[index];
    slot.source = sourceAddress(part, voice, compiled.source);
    slot.modifier = sourceAddress(part, voice, compiled.secondSource);
    slot.destination = destinationAddress(voice, compiled.destination);
    slot.processor = compiled.processor;
    slot.amount = compiled.amount;
    slot.depth = compiled.depth;
    slot.stamp = row.stamp;
    if (slot.edited == row.edited) return;
    slot.edited = row.edited;
    slot.state = compiled.initialState;
    slot.output = 0;
}

/// However far rows go, exponentials and squares of the inputs stay finite.
void limitInputs(VoiceInputs& in) {
    constexpr float widestPitch = 80, widestShape = 1000;
    in.pitch = std::clamp(in.pitch, -widestPitch, widestPitch);
    in.shape1 = std::clamp(in.shape1, -widestShape, widestShape);
    in.shape2 = std::clamp(in.shape2, -widestShape, widestShape);
}

}  // namespace

void startSlots(const PartState& part, Voice& voice) {
    voice.rowChanges = voice.controls().rows.changes;
    for (std::size_t i = 0; i < voice.slots.size(); ++i) {
        voice.slots[i] = {};
        takeRow(part, voice, i);
    }
}

void followRows(const PartState& part, Voice& voice) {
    const ModulationRows& rows = voice.controls().rows;
    if (rows.changes == voice.rowChanges) return;
    voice.rowChanges = rows.changes;
    for (std::size_t i = 0; i < voice.slots.size(); ++i)
        if (voice.slots[i].stamp != rows.rows[i].stamp) takeRow(part, voice, i);
}

void refreshSources(const PartState& part, Voice& voice) {
    const ModulationRows& rows = voice.controls().rows;
    const auto active = static_cast<std::size_t>(rows.active);
    for (std::size_t i = 0; i < active; ++i) {
        voice.slots[i].source = sourceAddress(part, voice, rows.rows[i].compiled.source);
        voice.slots[i].modifier = sourceAddress(part, voice, rows.rows[i].compiled.secondSource);
    }
}

void modulateInputs(const PartState& part, Voice& voice) {
    resetInputs(part, voice);
    const int active = voice.controls().rows.active;
    for (int i = 0; i < active; ++i)
        runSlot(voice.slots[static_cast<std::size_t>(i)], voice.random);
    if (active > 0) limitInputs(voice.inputs);
    voice.lastPitch = voice.inputs.pitch;
}

void startLfo3(Voice& voice) {
    const LfoControls& controls = voice.controls().lfo3;
    const float random = voice.random.unipolar();  // every note draws, whatever its phase
    voice.lfo3 = {};
    voice.lfo3.reset(controls.sync == LfoSync::off ? random : lfoStartPhase(controls, random),
                     lfoWave(controls));
}

void retriggerLfo3(Voice& voice) {
    const LfoControls& controls = voice.controls().lfo3;
    if (controls.sync != LfoSync::eachNote) return;
    voice.lfo3.reset(lfoStartPhase(controls, voice.random.unipolar()), lfoWave(controls));
}

void tickLfo3(const PartState& part, Voice& voice) {
    const LfoControls& controls = voice.controls().lfo3;
    const float factor = std::clamp(voice.inputs.lfo3Rate, 0.0f, 10.0f);
    voice.lfo3.setWave(lfoWave(controls));
    voice.lfo3.advance(lfoIncrement(controls, part.beatsPerTick(), factor), voice.random);
}

}  // namespace stratovane
