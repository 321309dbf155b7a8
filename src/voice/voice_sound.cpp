#include "voice/voice_sound.h"

#include <cmath>

#include "voice/part_state.h"

// A type that sounds has a case in each of these functions and a member in Voice.
namespace stratovane {

bool canSound(const Element& element) { return element.type() == ElementType::analog; }

float startSound(const PartState& part, Voice& voice) {
    switch (voice.element->type()) {
        case ElementType::analog:
            // Its phase counts half periods: twice the note's frequency.
            voice.basePitch = part.middleCPitch + octavePitch;
            voice.analog.start(voice.controls(), voice.velocity, static_cast<float>(part.rate),
                               voice.random);
            return 1;
        default:
            return 1;
    }
}

void refreshSound(const PartState& part, Voice& voice) {
    switch (voice.element->type()) {
        case ElementType::analog:
            return voice.analog.refresh(voice.controls(), static_cast<float>(part.rate));
        default:
            return;
    }
}

void renderSound(Voice& voice, float* samples) {
    const VoiceInputs& in = voice.inputs;
    const FilterInputs filter{in.pitch, in.cutoff, voice.controls().cutoffKeytrack, in.resonance};
    const float phasePerSample = std::exp(voice.basePitch + in.pitch);
    switch (voice.element->type()) {
        case ElementType::analog:
            voice.analog.tick(phasePerSample, in.shape1, in.shape2, filter);
            voice.analog.render(samples);
            voice.filterInput = voice.analog.filterInput();
            return;
        default:
            return;
    }
}

void clickSound(Voice& voice, float k) {
    if (voice.element->type() == ElementType::analog) voice.analog.click(k);
}

}  // namespace stratovane
