#include <algorithm>
#include <cmath>

#include "voice/element_notes.h"
#include "voice/glide.h"
#include "voice/note_handling.h"
#include "voice/part_state.h"
#include "voice/start_voice.h"
#include "voice/voice_allocation.h"
#include "voice/voice_sound.h"

namespace stratovane {
namespace {

/// Notes high up may ring on like undamped strings, if they die away by themselves.
bool isUndamped(const Voice& voice, int note) {
    const ElementControls& element = voice.controls();
    const EnvelopeControls& amp = element.ampEnvelope;
    return note >= element.undampedFrom &&
           (amp.fadeSeconds < 0 || (amp.fadeSeconds == 0 && amp.sustain == 0));
}

/// The note begins now that its key is let go, the softer the longer it was held.
void startAtRelease(PartState& part, Voice& voice) {
    constexpr float shortestFade = 0.01f;  // of the raw control
    constexpr float decay = -3.45f;        // natural log of the level after one fade time
    const float fade = voice.controls().delayTime;
    if (fade >= shortestFade) {
        const double held = static_cast<double>(part.clock.frame() - voice.noteFrame);
        const double fadeFrames = double(timeSeconds(fade)) * part.rate;
        voice.offsets.level *= static_cast<float>(std::exp(held * double(decay) / fadeFrames));
    }
    voice.dueFrame = part.clock.frame();
}

void dieWaiting(PartState& part, Voice& voice) {
    voice.amp.level = 0;
    voice.amp.setStage(4, envelopeContext(part, voice, voice.controls().ampEnvelope));
    voice.dueFrame = part.clock.frame();
}

void releaseKey(PartState& part, int slot) {
    Voice& voice = part.voiceAt(slot);
    part.slots[slot].key = VoiceSlot::released;
    if (voice.waitsForRelease()) return startAtRelease(part, voice);
    if (!voice.ticked && voice.dueFrame > part.clock.frame()) return dieWaiting(part, voice);
    const ElementControls& element = voice.controls();
    releaseSound(voice);
    releaseGlide(voice);
    voice.modulation.setStage(4, element.modulation, envelopeTimeFactor(part, voice));
    voice.filterEnvelope.setStage(3, envelopeContext(part, voice, element.filterEnvelope));
    if (!isUndamped(voice, part.slots[slot].note))
        voice.amp.setStage(3, envelopeContext(part, voice, element.ampEnvelope));
}

/// A mono element returns to a key that is still held. False when no such key is there for it.
bool returnToHeldKey(PartState& part, int slot) {
    const int element = part.slots[slot].element;
    const ElementControls& controls = part.patch.element(element).controls();
    const int note = priorityNote(part, element);
    if (note < 0) return false;
    const Voice& voice = part.voiceAt(slot);
    const int velocity = std::clamp(static_cast<int>(voice.velocity * 63 + 64.5f), 1, 127);
    VoiceNote next{note, float(part.detuneCents[static_cast<std::size_t>(note)]), velocity,
                   part.slots[slot].source};
    if (controls.releaseRetrigger != Retrigger::newVoice) {
        retargetVoice(part, slot, next, controls.releaseRetrigger);
        return true;
    }
    const ZoneGain zoneGain =
        acceptNote(part, element, note, velocity, triggerState(part), true, next.sound);
    if (zoneGain == 0) return false;
    const float gain = voiceGain(partZoneGain(part, note, velocity), zoneGain);
    const int unisonIndex = voice.unisonIndex;
    const int leaving = part.slots[slot].voice;
    const int started = allocateVoice(part, element);
    const bool sameRecord = part.slots[started].voice == leaving;
    startVoice(part, started, next, gain, unisonIndex);
    if (!sameRecord) releaseSlot(part, part.slots.slotOf(leaving));
    return true;
}

/// While the arpeggiator is on, notes end when it or the player ends them: no pedal holds them, and
/// mono elements return to no other key.
void letGo(PartState& part, int slot, bool mayReturn) {
    const ArpeggiatorView arpeggiator = part.arpeggiatorView();
    const bool off = !arpeggiator.on();
    const bool pedalActs = off || arpeggiator.mode() == ArpeggiatorMode::controllerSequence;
    if (part.controllers.sustainDown && pedalActs) {
        part.slots[slot].key = VoiceSlot::held;
        return;
    }
    const ElementControls& element = part.voiceAt(slot).controls();
    const bool mono = element.monoMode != MonoMode::poly;
    const bool keysLeft = part.heldFor(element).count() > 0;
    if (off && mono && mayReturn && keysLeft && returnToHeldKey(part, slot)) return;
    releaseKey(part, slot);
}

/// Whether a note-off of this source is for a voice. What the same source started it also ends,
/// whatever the element has been set to since.
bool ends(EventSource source, const VoiceSlot& slot, const Voice& voice) {
    return source == slot.source || reaches(source, voice.controls().trigger);
}

}  // namespace

void noteOff(PartState& part, int key, EventSource source) {
    const bool mayReturn = key < 128 || key == pedalKey;
    if (!mayReturn) {
        key = 256 - key;
    } else {
        if (source != EventSource::arpeggiator) part.heldKeys.release(key);
        if (source != EventSource::taken) part.held.release(key);
    }
    if (part.held.count() > 0)
        followHighestKey(part);
    else if (!part.controllers.sustainDown)
        part.controllers.highestKeyPitch = Controllers::noKeyPitch;

    // Starting voices moves slots about: the voices concerned are gathered first.
    std::array<std::uint8_t, voicesPerPart> voices{};
    int count = 0;
    for (int slot = 0; slot < part.slots.active(); ++slot)
        if (part.slots[slot].key == key && ends(source, part.slots[slot], part.voiceAt(slot)))
            voices[static_cast<std::size_t>(count++)] = part.slots[slot].voice;
    for (int i = 0; i < count; ++i) {
        const int slot = part.slots.slotOf(voices[static_cast<std::size_t>(i)]);
        if (slot >= 0 && part.slots[slot].key == key) letGo(part, slot, mayReturn);
    }
}

}  // namespace stratovane
