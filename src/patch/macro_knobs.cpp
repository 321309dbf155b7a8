// What the patch's knobs and macro destinations set off in its elements.
#include "patch/macro_knobs.h"

#include "base/units.h"
#include "patch/element.h"
#include "patch/global_rows.h"
#include "patch/macro_readers.h"
#include "patch/patch.h"

namespace stratovane {

namespace {
constexpr int startMacro = 10, sustainMacro = 13, filterSustainMacro = 14;
constexpr int gmControllers = 10;
}  // namespace

/// Destination -1..14 of a knob 0..5; -1 is none.
int Patch::knobDestination(int knob) const {
    return choice(get(0, macroKnobs[static_cast<std::size_t>(knob)].destination), 15.9f) - 1;
}

float Patch::scaledKnob(int knob) const {
    const MacroKnob& k = macroKnobs[static_cast<std::size_t>(knob)];
    return (get(0, k.position) - get(0, k.offset)) * get(0, k.range);
}

/// The knob 0..5 stands at its stored position.
void Patch::turnKnob(int knob) {
    const float position = get(0, macroKnobs[static_cast<std::size_t>(knob)].position);
    controls_.knobs[static_cast<std::size_t>(knob)] = position;
    for (int number = 1; number <= elementTotal; ++number)
        if (number <= elementCount_ || number >= firstSendSlot)
            element(number).knobTurned(knob + 1, position);
    const int destination = knobDestination(knob);
    if (destination < 0) return;
    controls_.macroOffset[static_cast<std::size_t>(destination)] = scaledKnob(knob);
    if (destination == rotaryMacro)
        turnRotary(knob);
    else
        reapplyReaders(destination);
}

/// Knobs 2..6 each drive one parameter of the first rotary speaker that is not muted.
void Patch::turnRotary(int knob) {
    constexpr int rotary = 55, rotary2 = 56;
    constexpr int parameters[6] = {-1, 0, 2, 3, 4, 5};
    if (parameters[knob] < 0) return;
    for (int number = 1; number <= elementCount_; ++number) {
        const Element& effect = element(number);
        const int type = effect.controls().effect.type;
        if (effect.type() != ElementType::effect || effect.controls().muted ||
            (type != rotary && type != rotary2))
            continue;
        return write(number, elementIndex::firstEffectParameter + parameters[knob],
                     scaledKnob(knob), When::owner);
    }
}

/// After a knob's destination, offset or range: what no knob drives any more goes back.
void Patch::rebuildMacros() {
    controls_.macroBase = {};
    controls_.macroOffset = {};
    for (int knob = 0; knob < 6; ++knob)
        if (const int destination = knobDestination(knob); destination >= 0)
            controls_.macroOffset[static_cast<std::size_t>(destination)] = scaledKnob(knob);
    for (int i = 0; i < gmControllers; ++i) applyGlobal(global::firstMacro + i);
    reapplyReaders(startMacro);
    applyGlobal(global::glideTime);
    reapplyReaders(sustainMacro);
    reapplyReaders(filterSustainMacro);
}

float Patch::macro(int destination, float v) const {
    const auto k = static_cast<std::size_t>(destination);
    return bendMacro(v, controls_.macroBase[k], controls_.macroOffset[k]);
}

void Patch::resend(int index) {
    for (int number = 1; number <= elementCount_; ++number)
        if (element(number).controls_.receive) settle(number, index, When::owner);
}

void Patch::reapplyReaders(int destination) {
    if (destination == lfoRateMacro) {
        applyGlobal(global::lfo1Rate);
        applyGlobal(global::lfo2Rate);
    }
    const MacroReaders& readers = macroReaders[static_cast<std::size_t>(destination)];
    if (readers.first >= 0) resend(readers.first);
    if (destination == waveMacro) {
        for (int number = 1; number <= elementCount_; ++number) {
            Element& sample = element(number);
            if (sample.controls_.receive && sample.type_ == ElementType::sample)
                settle(number, elementIndex::formant, When::owner);
        }
    } else if (readers.second >= 0) {
        resend(readers.second);
    }
}

}  // namespace stratovane
