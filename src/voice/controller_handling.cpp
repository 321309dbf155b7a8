#include "voice/controller_handling.h"

#include <cmath>

#include "voice/note_handling.h"
#include "voice/part_state.h"
#include "voice/pitch_bend.h"
#include "voice/start_voice.h"
#include "voice/voice_allocation.h"

namespace stratovane {
namespace {

constexpr int monoPolyParameter = 57;

/// "Redamper": the lifted damper catches what is still dying away and slows it.
void catchReleased(PartState& part, int amount) {
    const float slower = std::exp(-0.03f * static_cast<float>(amount));
    for (int slot = 0; slot < part.slots.active(); ++slot) {
        if (part.slots[slot].key != VoiceSlot::released) continue;
        part.slots[slot].key = VoiceSlot::held;
        part.voiceAt(slot).amp.scaleSpeed(slower);
    }
}

void sustainPedal(PartState& part, int value) {
    Controllers& state = part.controllers;
    state.sustain = controllerFraction(value);
    for (int slot = 0; slot < part.slots.active(); ++slot)
        part.voiceAt(slot).sustain = state.sustain;
    const bool wasDown = state.sustainDown;
    state.sustainDown = pedalDown(value);
    if (wasDown && !state.sustainDown) noteOff(part, pedalKey, EventSource::host);
    const int redamper = part.patch.controls().redamper;
    if (!wasDown && state.sustainDown && redamper != 0) catchReleased(part, redamper);
}

/// Down, it holds the keys that are down. Up, a key that is still down is its player's again; what
/// remains is let go unless the sustain pedal holds it.
void sostenutoPedal(PartState& part, int value) {
    Controllers& state = part.controllers;
    const bool wasDown = state.sostenutoDown;
    if (pedalDown(value) && part.arpeggiatorView().on()) return;
    state.sostenutoDown = pedalDown(value);
    for (int slot = 0; slot < part.slots.active(); ++slot) {
        VoiceSlot& entry = part.slots[slot];
        if (state.sostenutoDown && entry.keyDown())
            entry.key = VoiceSlot::held;
        else if (wasDown && !state.sostenutoDown && entry.key == VoiceSlot::held &&
                 part.heldFor(part.voiceAt(slot).controls()).contains(entry.note))
            entry.key = entry.note;
    }
    if (wasDown && !state.sostenutoDown && !state.sustainDown)
        noteOff(part, pedalKey, EventSource::host);
}

void setGlideStart(PartState& part, int note) {
    for (int element = 1; element <= part.patch.elementCount(); ++element)
        part.patch.element(element).lastPitch = static_cast<float>(note - 60) * 100 * centPitch;
}

void releaseAll(PartState& part, EventSource source) {
    for (int slot = 0; slot < part.slots.active(); ++slot)
        if (source == EventSource::host || part.slots[slot].source == source)
            releaseSlot(part, slot);
}

void resetControllers(PartState& part) {
    Controllers& state = part.controllers;
    sustainPedal(part, 0);
    state.sustain = 0;
    state.legato = false;
    state.softPedal = 0;
    state.pressure = 0;
    part.clock.resetPressure();
    state.modWheel = state.wheelPosition = 0;
    state.expression = 1;
    state.bendPosition = state.bendSemitones = 0;
}

/// What a controller does by itself, without a parameter that it is mapped to.
void ownFunction(PartState& part, int number, int value, EventSource source) {
    Controllers& state = part.controllers;
    const float fraction = controllerFraction(value);
    switch (number) {
        case controller::modWheel:
            state.modWheel = fraction;
            break;
        case controller::breath:
            state.breath = fraction;
            break;
        case controller::general3:
            state.general3 = fraction;
            break;
        case controller::foot:
            state.foot = fraction;
            break;
        case controller::expression:
            state.expression = fraction * fraction + 1e-8f;
            break;
        case controller::sustain:
            sustainPedal(part, value);
            break;
        case controller::sostenuto:
            sostenutoPedal(part, value);
            break;
        case controller::softPedal:
            state.softPedal = pedalDown(value) ? 1.0f : 0.0f;
            break;
        case controller::legato:
            state.legato = pedalDown(value);
            break;
        case controller::glideStart:
            setGlideStart(part, value);
            break;
        case controller::allSoundOff:
        case controller::allNotesOff:
            releaseAll(part, source);
            break;
        case controller::reset:
            resetControllers(part);
            break;
        case controller::mono:
            part.patch.set(0, monoPolyParameter, value != 0 ? 1.0f : 0.0f);
            break;
        case controller::poly:
            part.patch.set(0, monoPolyParameter, 0.0f);
            break;
        case controller::sequencer1:
            state.sequencer1 = static_cast<float>(value - 63) / 63;
            break;
        case controller::sequencer2:
            state.sequencer2 = static_cast<float>(value - 63) / 63;
            break;
        default:
            break;
    }
}

/// On rotary organs without a bend range the lever switches the first rotary speaker's speed.
void switchRotary(PartState& part) {
    constexpr int organ = 3;  // patch type
    constexpr int rotary = 55, rotary2 = 56, speedParameter = 27;
    constexpr float threshold = 0.25f;
    const PatchControls& patch = part.patch.controls();
    const float lever = part.controllers.bendPosition;
    if (patch.type != organ || patch.bendUp != 0 || patch.bendDown != 0) return;
    if (std::fabs(lever) <= threshold) return;
    for (int number = 1; number <= part.patch.elementCount(); ++number) {
        const Element& element = part.patch.element(number);
        const int type = element.controls().effect.type;
        if (element.type() != ElementType::effect || element.controls().muted ||
            (type != rotary && type != rotary2))
            continue;
        part.patch.set(number, speedParameter, lever > 0 ? 1.0f : 0.0f);
        return;
    }
}

}  // namespace

void controlChange(PartState& part, int number, int value, EventSource source) {
    if (number > controller::sequencer2 || value > 127) return;
    if (number == controller::modWheel) part.controllers.wheelPosition = controllerFraction(value);
    if (number < controller::sequencer1) {
        if (source == EventSource::host) part.patch.learn(number);
        const ParameterId id = part.patch.controllerTarget(number);
        if (id != noParameter) return part.patch.set(id >> 8, id & 255, controllerFraction(value));
    }
    ownFunction(part, number, value, source);
}

void channelPressure(PartState& part, int value) {
    if (value <= 127) part.controllers.pressure = controllerFraction(value);
}

void pitchBend(PartState& part, int low, int high) {
    constexpr int editorWheel = 254;
    if (high > 127 || (low > 127 && low != editorWheel)) return;
    if (low == editorWheel) low = high == 127 ? 127 : 0;
    Controllers& state = part.controllers;
    const PatchControls& patch = part.patch.controls();
    state.bendPosition = bendPosition(low, high);
    state.bendSemitones =
        bendSemitones(state.bendPosition, state.bendPosition >= 0 ? patch.bendUp : patch.bendDown);
    followHighestKey(part);
    switchRotary(part);
}

}  // namespace stratovane
