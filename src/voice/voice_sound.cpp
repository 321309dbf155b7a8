#include "voice/voice_sound.h"

#include <cmath>

#include "patch/parameter_ids.h"
#include "voice/part_state.h"

// A type that sounds has a case in each of these functions and a member in Voice.
namespace stratovane {
namespace {

/// The table that a starting voice plays; null while it is not in memory.
const Wavetable* chosenTable(const Voice& voice) {
    return voice.chosen == nullptr ? nullptr : voice.chosen->get<Wavetable>();
}

FmVoice::Note fmNote(const Voice& voice) {
    const float velocityToDecay = voice.element->stored(elementIndex::fmVelocityToDecay);
    return {voice.note, voice.velocity, (0.5f - velocityToDecay) * 8 * voice.velocity};
}

}  // namespace

bool canSound(const Element& element) {
    switch (element.type()) {
        case ElementType::analog:
        case ElementType::wavetable:
        case ElementType::fm:
            return true;
        default:
            return false;
    }
}

float startSound(const PartState& part, Voice& voice) {
    switch (voice.element->type()) {
        case ElementType::analog:
            // Its phase counts half periods: twice the note's frequency.
            voice.basePitch = part.middleCPitch + octavePitch;
            voice.analog.start(voice.controls(), voice.velocity, static_cast<float>(part.rate),
                               voice.random, chosenTable(voice));
            return 1;
        case ElementType::wavetable:
            voice.wavetable.start(voice.controls(), chosenTable(voice), voice.velocity,
                                  voice.random);
            voice.basePitch = part.middleCPitch + (voice.wavetable.runsTwice() ? octavePitch : 0);
            return voice.wavetable.levelFactor();
        case ElementType::fm:
            voice.basePitch = part.middleCPitch + octavePitch;
            voice.fm.start(voice.controls(), fmNote(voice), static_cast<float>(part.rate),
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
        case ElementType::wavetable:
            return voice.wavetable.refresh(voice.controls());
        case ElementType::fm:
            return voice.fm.refresh(voice.controls(), static_cast<float>(part.rate));
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
        case ElementType::wavetable:
            voice.wavetable.tick(phasePerSample, in.shape1, in.shape2, filter);
            voice.wavetable.render(samples);
            voice.filterInput = voice.wavetable.filterInput();
            return;
        case ElementType::fm:
            voice.fm.tick(phasePerSample, in.shape1, filter);
            voice.fm.render(samples);
            voice.filterInput = voice.fm.filterInput();
            return;
        default:
            return;
    }
}

void clickSound(Voice& voice, float k) {
    if (voice.element->type() == ElementType::analog) voice.analog.click(k);
}

}  // namespace stratovane
