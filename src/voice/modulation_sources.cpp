#include "voice/modulation_sources.h"

#include <cstddef>

#include "voice/part_state.h"

namespace stratovane {
namespace {
constexpr float zero = 0, one = 1;
}

const float* sourceAddress(const PartState& part, const Voice& voice, std::int32_t source) {
    namespace from = modulationSource;
    const Controllers& controllers = part.controllers;
    const ElementControls& element = voice.controls();
    if (source >= from::firstKnob && source <= from::lastKnob)
        return &part.patch.controls().knobs[static_cast<std::size_t>(source - from::firstKnob)];
    if (source >= from::firstRow && source <= from::lastRow)
        return &voice.slots[static_cast<std::size_t>(source - from::firstRow)].output;
    switch (source) {
        case from::constant:
            return &one;
        case from::random:
            return &voice.randomValue;
        case from::velocity:
            return &voice.velocity;
        case from::key:
            return &voice.notePitch;
        case from::pitch:
            return &voice.lastPitch;
        case from::modWheel:
            return element.receiveModWheel ? &controllers.modWheel : &zero;
        case from::pressure:
            return element.receivePressure ? &voice.step.pressure : &zero;
        case from::pitchBend:
            return &controllers.bendPosition;
        case from::breath:
            return &controllers.breath;
        case from::general3:
            return &controllers.general3;
        case from::foot:
            return &controllers.foot;
        case from::sustain:
            return &voice.sustain;
        case from::softPedal:
            return &voice.softPedal;
        case from::tuning2:
            return &voice.tuning2;
        case from::sequencer1:
            return &controllers.sequencer1;
        case from::sequencer2:
            return &controllers.sequencer2;
        case from::lfo1:
            return &voice.step.lfo[0];
        case from::lfo2:
            return &voice.step.lfo[1];
        case from::lfo3:
            return &voice.lfo3.value;
        case from::modulationEnvelope:
            return &voice.modulation.level;
        case from::filterEnvelope:
            return &voice.filterEnvelope.level;
        case from::ampEnvelope:
            return &voice.amp.level;
        case from::filterInput:
            return &voice.filterInput;
        default:
            return &zero;
    }
}

float* destinationAddress(Voice& voice, std::int32_t destination) {
    namespace to = modulationDestination;
    VoiceInputs& in = voice.inputs;
    switch (destination) {
        case to::pitch:
            return &in.pitch;
        case to::shape1:
            return &in.shape1;
        case to::cutoff:
            return &in.cutoff;
        case to::resonance:
            return &in.resonance;
        case to::amp:
            return &in.amplitude;
        case to::pan:
            return &in.pan;
        case to::lfo3Rate:
            return &in.lfo3Rate;
        case to::envelopeRate:
            return &in.envelopeRate;
        case to::shape2:
            return &in.shape2;
        default:
            return &in.nowhere;
    }
}

}  // namespace stratovane
