#include "voice/start_voice.h"

#include <algorithm>
#include <cmath>

#include "base/tempo_divisions.h"
#include "base/tempo_factor.h"
#include "content/tuning_table.h"
#include "voice/control_tick.h"
#include "voice/glide.h"
#include "voice/part_state.h"
#include "voice/start_sound.h"
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

/// The semitones of a table that is selected and resident.
std::span<const float> tuningTable(const ItemSlot* slot) {
    const TuningTable* table = slot != nullptr ? slot->get<TuningTable>() : nullptr;
    return table != nullptr ? std::span<const float>{table->semitones} : std::span<const float>{};
}

/// How far note and micro-tuning lie above middle C.
void setNotePitch(const PartState& part, Voice& voice, const VoiceNote& note) {
    const PatchControls& patch = part.patch.controls();
    const auto tuning = [&](int i) {
        const auto& controls = patch.tuning[static_cast<std::size_t>(i)];
        return tuningCents(tuningTable(part.patch.tuning(i)), note.note - controls.root);
    };
    const float tuning1 = tuning(0), tuning2 = tuning(1);
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

/// Amplitude of the newest other voice of a slot's element, 0 without one.
float levelBefore(const PartState& part, int slot) {
    for (int other = part.slots.active() - 1; other >= 0; --other)
        if (other != slot && part.slots[other].element == part.slots[slot].element)
            return part.voiceAt(other).amp.level;
    return 0;
}

void startEnvelopes(const PartState& part, int slot, Voice& voice) {
    const ElementControls& element = voice.controls();
    voice.modulation.setStage(0, element.modulation, envelopeTimeFactor(part, voice));
    voice.filterEnvelope.setStage(0, envelopeContext(part, voice, element.filterEnvelope));
    const EnvelopeContext context = envelopeContext(part, voice, element.ampEnvelope);
    if (clicks(element)) return click(part, voice);
    if (voice.type == ElementType::sample && isLegato(part, voice)) {
        voice.amp.level = levelBefore(part, slot);
        return voice.amp.setStage(-1, context);
    }
    voice.amp.setStage(0, context);
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
    voice.type = owner.type();
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
    voice.modulation.level = element.modulation.levels[0];
    startSlots(part, voice);
    resetInputs(part, voice);
    voice.lastPitch = voice.inputs.pitch;
    voice.chosen = note.sound.content;
    voice.content = voice.chosen == nullptr ? 0 : voice.chosen->id.word;
    const float soundLevel = startSound(part, voice, note);  // may move the pan, too
    voice.offsets.level = unisonLevel(unisonIndex, element.unisonExtra) * soundLevel *
                          panLevel(element.pan + voice.offsets.pan);
    startEnvelopes(part, slot, voice);
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
        if (mode == Retrigger::newVoice && voice.type == ElementType::analog && clicks(element))
            click(part, voice);
    }
    voice.filterEnvelope.setStage(-1, envelopeContext(part, voice, element.filterEnvelope));
}

}  // namespace stratovane
