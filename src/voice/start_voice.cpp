#include "voice/start_voice.h"

#include <algorithm>
#include <cmath>

#include "base/tempo_divisions.h"
#include "base/tempo_factor.h"
#include "voice/control_tick.h"
#include "voice/glide.h"
#include "voice/part_state.h"
#include "voice/tuning_lookup.h"
#include "voice/voice_modulation.h"
#include "voice/voice_sound.h"

namespace stratovane {
namespace {

constexpr float shortestClickAttack = 0.0005f;  // seconds; longer attacks do not click
constexpr float smallestClick = 0.01f;

float normalisedVelocity(const ElementControls& element, int velocity) {
    return element.velocityToAll ? static_cast<float>(velocity - 1) * 0.015873f - 1 : 0.0f;
}

/// How far note and micro-tuning lie above middle C.
void setNotePitch(const PartState& part, Voice& voice, const VoiceNote& note) {
    const PatchControls& patch = part.patch.controls();
    // Tuning tables come with the content library; without one a slot moves nothing.
    const float tuning1 = tuningCents({}, note.note - patch.tuning[0].root);
    const float tuning2 = tuningCents({}, note.note - patch.tuning[1].root);
    const auto semitones = static_cast<float>(note.note + patch.transpose - 60);
    voice.tuning2 = tuning2 * 0.01f;
    voice.notePitch =
        (semitones * 100 + note.detuneCents + (tuning1 + tuning2 * patch.tuning2Depth)) * centPitch;
}

/// Place of a unison voice between its outer neighbours, -0.5..0.5; 0 without unison.
float unisonPlace(const ElementControls& element, int unisonIndex) {
    if (unisonIndex == 0 || element.unisonExtra == 0) return 0;
    return static_cast<float>(unisonIndex - 1) / static_cast<float>(element.unisonExtra) - 0.5f;
}

float targetPitch(Voice& voice) {
    const ElementControls& element = voice.controls();
    const float spread = static_cast<float>(element.unisonExtra + 1) * element.unisonDetune *
                         unisonPlace(element, voice.unisonIndex);
    const float first = voice.random.unipolar();
    const float random = (first - voice.random.unipolar()) * element.randomPitch;
    return random + spread + element.pitchKeytrack * voice.notePitch;
}

constexpr double longestDelayFrames = 1e15;  // however slow the tempo

std::int64_t delayFrames(const PartState& part, const ElementControls& element, float velocity,
                         float random) {
    switch (element.noteDelay) {
        case NoteDelay::time: {
            const float full = timeSeconds(element.delayTime) * static_cast<float>(part.rate) *
                               (1 + random * element.randomDelay);
            return static_cast<std::int64_t>(
                std::max(0.0f, full - element.velocityToDelay * velocity * full));
        }
        case NoteDelay::tempo: {
            if (!(part.time.beatsPerFrame > 0)) return 0;
            const double beats = 1.0 / double(tempoDivision(1 - element.delayTime).perBeat);
            return static_cast<std::int64_t>(
                std::min(beats / part.time.beatsPerFrame, longestDelayFrames));
        }
        default:
            return 0;
    }
}

void capture(const PartState& part, Voice& voice) {
    voice.sustain = part.controllers.sustain;
    voice.pressure = part.controllers.pressure;
    voice.softPedal = part.controllers.softPedal;
}

/// Everything that follows the velocity and may be set anew under a sounding voice.
void setVelocity(Voice& voice, int velocity) {
    const ElementControls& element = voice.controls();
    voice.velocity = normalisedVelocity(element, velocity);
    voice.amp.peak = amplitudePeak(element.ampEnvelope.velocityToLevel,
                                   static_cast<float>(velocity), voice.startGain);
    voice.filterEnvelope.peak = filterPeak(element.filterEnvelope.velocityToLevel, voice.velocity);
    voice.offsets.cutoffVelocity =
        (voice.velocity - 1) * element.velocityToCutoff * tenOctavesPitch;
    voice.offsets.resonance = voice.velocity * element.velocityToResonance;
}

void setPan(Voice& voice, float random) {
    const ElementControls& element = voice.controls();
    const float side = static_cast<float>(voice.element->noteCounter % 2) - 0.5f;
    voice.offsets.pan = random * element.randomPan + side * element.alternatingPan +
                        unisonPlace(element, voice.unisonIndex) * element.unisonPan +
                        element.panKeytrack * voice.notePitch;
}

/// Equal at the centre and not twice as loud at the sides: 0.5 of the level there, 0.707 here.
float panLevel(float pan) { return 1 - 0.5858f * std::min(std::fabs(pan - 0.5f), 0.5f); }

/// Several voices on one note are turned down, the more the lower.
float unisonLevel(int unisonIndex, int extra) {
    if (unisonIndex == 0) return 1;
    const auto below = static_cast<float>(extra - 7);
    return below * below * 0.0067f + 0.6f;
}

bool clicks(const ElementControls& element) {
    return element.ampEnvelope.attackSeconds < shortestClickAttack &&
           element.noteOnClick > smallestClick;
}

/// The amplitude begins at its peak with the gains there at once, and the filter is struck.
void click(const PartState& part, Voice& voice) {
    const ElementControls& element = voice.controls();
    modulateInputs(part, voice);  // rows may turn the click down
    const float k = (shortestClickAttack - element.ampEnvelope.attackSeconds) *
                    voiceLevel(part, voice) * voice.amp.peak * voice.inputs.amplitude *
                    element.noteOnClick * 8000;
    voice.amp.setStage(1, envelopeContext(part, voice, element.ampEnvelope));
    voice.gain.right = k * std::clamp(voice.inputs.pan, 0.0f, 1.0f);
    voice.gain.left = k - voice.gain.right;
    clickSound(voice, k);
}

void takeNote(VoiceSlot& slot, const VoiceNote& note) {
    slot.note = static_cast<std::uint8_t>(note.note);
    slot.key = slot.note;
    slot.source = note.source;
}

void resetRecord(Voice& voice) {
    voice.amp.reset();
    voice.filterEnvelope.reset();
    voice.modulation.reset();
    voice.offsets = {};
    voice.inputs = {};
    voice.filterInput = 0;
    voice.gain = {};
    voice.playing = -1;
    voice.ticked = false;
}

void startEnvelopes(const PartState& part, Voice& voice) {
    const ElementControls& element = voice.controls();
    voice.modulation.level = element.modulation.levels[0];
    voice.modulation.setStage(0, element.modulation, envelopeTimeFactor(part, voice));
    voice.filterEnvelope.setStage(0, envelopeContext(part, voice, element.filterEnvelope));
    if (clicks(element))
        click(part, voice);
    else
        voice.amp.setStage(0, envelopeContext(part, voice, element.ampEnvelope));
}

}  // namespace

float envelopeTimeFactor(const PartState& part, const Voice& voice) {
    return tempoFactor(part.time.tempo, voice.controls().tempoToEnvelopes);
}

EnvelopeContext envelopeContext(const PartState& part, const Voice& voice,
                                const EnvelopeControls& envelope) {
    return {&envelope,
            voice.velocity,
            voice.notePitch,
            envelopeTimeFactor(part, voice),
            part.tickSeconds,
            voice.controls().muteFadeSeconds,
            voice.startsAtRelease};
}

void startVoice(PartState& part, int slot, const VoiceNote& note, float gain, int unisonIndex) {
    VoiceSlot& entry = part.slots[slot];
    Voice& voice = part.voiceAt(slot);
    Element& owner = part.patch.element(entry.element);
    const ElementControls& element = owner.controls();
    takeNote(entry, note);
    entry.muteCondition = element.muteCondition;

    resetRecord(voice);
    voice.element = &owner;
    voice.elementChanges = owner.changes();
    voice.startStamp = part.eventCounter;
    voice.unisonIndex = unisonIndex;
    voice.startGain = gain;
    voice.note = note.note;
    setNotePitch(part, voice, note);
    voice.random = Random{part.random.seed()};
    voice.randomValue = voice.random.bipolar();
    setVelocity(voice, note.velocity);
    capture(part, voice);
    startGlide(part, voice, note.note, targetPitch(voice));
    voice.offsets.cutoffRandom = voice.random.unipolar() * element.randomCutoff * tenOctavesPitch;
    voice.offsets.shape1 = element.keyToWave * voice.notePitch +
                           element.velocityToWave * voice.velocity +
                           element.randomWave * voice.random.unipolar();
    setPan(voice, voice.random.bipolar());
    voice.noteFrame = part.clock.frame();
    const float delayRandom = voice.random.unipolar();
    voice.startsAtRelease = element.noteDelay == NoteDelay::noteOff;
    voice.dueFrame =
        voice.startsAtRelease
            ? Voice::never
            : voice.noteFrame + delayFrames(part, element, voice.velocity, delayRandom);
    voice.step = part.clock.now();
    startLfo3(voice);
    startSlots(part, voice);
    resetInputs(part, voice);
    voice.lastPitch = voice.inputs.pitch;
    // Taken once: the UI thread may select something else meanwhile.
    voice.chosen = owner.content();
    voice.content = voice.chosen == nullptr ? 0 : voice.chosen->id.word;
    voice.offsets.level = unisonLevel(unisonIndex, element.unisonExtra) * startSound(part, voice) *
                          panLevel(element.pan + voice.offsets.pan);
    startEnvelopes(part, voice);
}

void retargetVoice(PartState& part, int slot, const VoiceNote& note, Retrigger mode) {
    VoiceSlot& entry = part.slots[slot];
    Voice& voice = part.voiceAt(slot);
    const ElementControls& element = voice.controls();
    takeNote(entry, note);
    voice.startStamp = part.eventCounter;
    if (mode == Retrigger::newVoice) {
        setVelocity(voice, note.velocity);
        capture(part, voice);
    }
    setNotePitch(part, voice, note);
    retargetGlide(part, voice, note.note, targetPitch(voice));

    if (mode == Retrigger::pitchOnly) return;
    if (mode == Retrigger::newVoice || mode == Retrigger::allModulation) {
        retriggerLfo3(voice);
        voice.modulation.setStage(0, element.modulation, envelopeTimeFactor(part, voice));
    }
    if (mode != Retrigger::filter) {
        voice.amp.setStage(-1, envelopeContext(part, voice, element.ampEnvelope));
        if (mode == Retrigger::newVoice && voice.element->type() == ElementType::analog &&
            clicks(element))
            click(part, voice);
    }
    voice.filterEnvelope.setStage(-1, envelopeContext(part, voice, element.filterEnvelope));
}

}  // namespace stratovane
