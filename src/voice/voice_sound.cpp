#include "voice/voice_sound.h"

#include <cmath>

#include "patch/parameter_ids.h"
#include "voice/note_sound.h"
#include "voice/part_state.h"
#include "voice/start_sound.h"

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
        case ElementType::sample:
        case ElementType::drawbar:
        case ElementType::wavetable:
        case ElementType::fm:
            return true;
        default:
            return false;
    }
}

bool chooseSound(PartState& part, const Element& element, int note, int velocity,
                 NoteSound& sound) {
    sound = {};
    sound.content = element.content();  // once: the UI thread may select something else meanwhile
    switch (element.type()) {
        case ElementType::sample: {
            const auto* set = sound.content ? sound.content->get<SampleSet>() : nullptr;
            if (set == nullptr) return false;
            const ZoneNote wanted{note + part.patch.controls().transpose, velocity,
                                  part.controllers.sustain};
            sound.zone = chooseZone(*set, element.controls(), wanted, part.random);
            return sound.zone.zone != nullptr;
        }
        case ElementType::drawbar:
            sound.wheels = sound.content ? sound.content->get<ToneWheels>() : nullptr;
            return sound.wheels != nullptr;
        default:
            return true;
    }
}

float startSound(const PartState& part, Voice& voice, const VoiceNote& note) {
    switch (voice.type) {
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
        case ElementType::sample:
            return startSample(part, voice, note);
        case ElementType::drawbar:
            startDrawbar(part, voice, note);
            return 1;
        default:
            return 1;
    }
}

void refreshSound(const PartState& part, Voice& voice) {
    switch (voice.type) {
        case ElementType::analog:
            return voice.analog.refresh(voice.controls(), static_cast<float>(part.rate));
        case ElementType::sample:
            return voice.sample.refresh(voice.controls());
        case ElementType::drawbar:
            return voice.drawbar.refresh(voice.controls());
        case ElementType::wavetable:
            return voice.wavetable.refresh(voice.controls());
        case ElementType::fm:
            return voice.fm.refresh(voice.controls(), static_cast<float>(part.rate));
        default:
            return;
    }
}

void renderSound(Voice& voice, VoiceTick& tick) {
    float* samples = tick.samples;
    tick.stereo = false;
    const VoiceInputs& in = voice.inputs;
    const FilterInputs filter{in.pitch, in.cutoff, voice.controls().cutoffKeytrack, in.resonance};
    const float phasePerSample = std::exp(voice.basePitch + in.pitch);
    switch (voice.type) {
        case ElementType::analog:
            voice.analog.tick(phasePerSample, in.shape1, in.shape2, filter);
            voice.analog.render(samples);
            voice.filterInput = voice.analog.filterInput();
            return;
        case ElementType::sample:
            voice.sample.tick(phasePerSample, filter);
            voice.sample.render(samples, tick.right);
            tick.stereo = voice.sample.isStereo();
            voice.basePitch += voice.sample.takeLoopTune() * semitonePitch;
            voice.filterInput = voice.sample.filterInput();
            return;
        case ElementType::drawbar:
            voice.drawbar.tick(phasePerSample, filter);
            voice.drawbar.render(samples);
            voice.filterInput = voice.drawbar.filterInput();
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
    if (voice.type == ElementType::analog) voice.analog.click(k);
}

void releaseSound(Voice& voice) {
    if (voice.type == ElementType::drawbar) voice.drawbar.release(voice.controls());
}

bool soundIsOver(const Voice& voice) {
    return voice.type == ElementType::sample && voice.sample.isOver();
}

}  // namespace stratovane
