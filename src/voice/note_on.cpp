#include <bit>

#include "voice/element_notes.h"
#include "voice/note_handling.h"
#include "voice/part_state.h"
#include "voice/start_voice.h"
#include "voice/voice_allocation.h"

namespace stratovane {
namespace {

/// A note on its way through the elements.
struct PlayedNote {
    VoiceNote note;
    ZoneGain zoneGain = fullZoneGain;  // of the part
    TriggerState trigger;
    bool resumes = true;  // notes in progress may be taken over
};

/// The "Mute Condition" of an element that plays `note`.
void muteOthers(PartState& part, int element, int note) {
    const int value = part.patch.element(element).controls().muteCondition;
    const auto isMuted = [&](int slot) {
        const VoiceSlot& other = part.slots[slot];
        switch (static_cast<MuteCondition>(value)) {
            case MuteCondition::none:
            case MuteCondition::none4:
                return false;
            case MuteCondition::sameNote:
                return other.note == note;
            case MuteCondition::otherElements:
                return other.element != element;
            case MuteCondition::wholePatch:
                return true;
            case MuteCondition::firstGroup:
                break;
        }
        const bool poly = part.voiceAt(slot).controls().monoMode == MonoMode::poly;
        return other.muteCondition == value && !(poly && other.note == note);
    };
    for (int slot = 0; slot < part.slots.active(); ++slot)
        if (isMuted(slot)) releaseSlot(part, slot);
}

/// The voice of this note that a poly element takes up again, -1 if there is none. A voice that
/// died waiting for its delay is no use.
int resumableSlot(const PartState& part, int element, int note) {
    for (int slot = 0; slot < part.slots.active(); ++slot) {
        const Voice& voice = part.voiceAt(slot);
        const bool diedWaiting = !voice.ticked && voice.amp.state != VoiceState::sounding;
        if (part.slots[slot].element == element && part.slots[slot].note == note &&
            voice.startStamp >= part.intervalStart && !diedWaiting)
            return slot;
    }
    return -1;
}

void playPoly(PartState& part, int element, const PlayedNote& played, float gain) {
    const ElementControls& controls = part.patch.element(element).controls();
    if (!played.resumes) part.intervalStart = part.eventCounter;
    const int resumed =
        controls.resumeEnvelopes ? resumableSlot(part, element, played.note.note) : -1;
    if (part.controllers.legato && part.heldFor(controls).count() >= 2)
        for (int slot = 0; slot < part.slots.active(); ++slot)
            if (part.slots[slot].element == element && part.slots[slot].keyDown())
                retargetVoice(part, slot, played.note, controls.legatoRetrigger);
    if (resumed >= 0)
        retargetVoice(part, resumed, played.note, Retrigger::newVoice);
    else
        startVoice(part, allocateVoice(part, element), played.note, gain, 0);
}

bool monoPlays(const PartState& part, int element, int note) {
    const ElementControls& controls = part.patch.element(element).controls();
    switch (controls.monoMode) {
        case MonoMode::first:
            return part.heldFor(controls).count() == 1;
        case MonoMode::lowest:
        case MonoMode::highest:
            return priorityNote(part, element) == note;
        default:
            return true;
    }
}

/// Hands the note to the voices that a mono element has; how many still have to be started, and
/// the unison places taken (bit 1 is the first).
int takeOver(PartState& part, int element, const PlayedNote& played, std::uint32_t& places) {
    const ElementControls& controls = part.patch.element(element).controls();
    int wanted = controls.unisonExtra + 1;
    for (int slot = part.slots.active() - 1; slot >= 0; --slot) {
        if (part.slots[slot].element != element) continue;
        const Voice& voice = part.voiceAt(slot);
        const bool down = part.slots[slot].keyDown();
        if (!down && !controls.resumeEnvelopes) {
            releaseSlot(part, slot);
            continue;
        }
        if (wanted <= 0 && voice.amp.state == VoiceState::fading) continue;
        places |= 1u << voice.unisonIndex;
        retargetVoice(part, slot, played.note,
                      down ? controls.legatoRetrigger : Retrigger::newVoice);
        --wanted;
    }
    return wanted;
}

void playMono(PartState& part, int element, const PlayedNote& played, float gain) {
    const ElementControls& controls = part.patch.element(element).controls();
    if (!monoPlays(part, element, played.note.note)) return;
    std::uint32_t places = 1;  // place 0 is none
    int wanted = controls.unisonExtra + 1;
    if (controls.legatoRetrigger != Retrigger::newVoice && played.resumes) {
        wanted = takeOver(part, element, played, places);
    } else {
        for (int slot = 0; slot < part.slots.active(); ++slot)
            if (part.slots[slot].element == element) releaseSlot(part, slot);
    }
    for (; wanted > 0; --wanted) {
        const int place = controls.unisonExtra > 0 ? std::countr_one(places) : 0;
        places |= 1u << place;
        startVoice(part, allocateVoice(part, element), played.note, gain, place);
    }
}

bool sounds(const PartState& part, int element) {
    for (int slot = 0; slot < part.slots.active(); ++slot)
        if (part.slots[slot].element == element) return true;
    return false;
}

/// Whether any element plays notes of this source.
bool isWanted(const PartState& part, EventSource source) {
    for (int element = 1; element <= part.patch.elementCount(); ++element)
        if (reaches(source, part.patch.element(element).controls().trigger)) return true;
    return false;
}

void playElement(PartState& part, int element, PlayedNote& played) {
    const ElementControls& controls = part.patch.element(element).controls();
    if (!reaches(played.note.source, controls.trigger)) return;
    const bool mono = controls.monoMode != MonoMode::poly;
    const ZoneGain zoneGain =
        acceptNote(part, element, played.note.note, played.note.velocity, played.trigger,
                   mono && sounds(part, element), played.note.sound);
    if (zoneGain == 0) return;
    muteOthers(part, element, played.note.note);
    const float gain = voiceGain(played.zoneGain, zoneGain);
    if (mono)
        playMono(part, element, played, gain);
    else
        playPoly(part, element, played, gain);
}

}  // namespace

void followHighestKey(PartState& part) {
    if (part.held.count() == 0) return;
    const int highest = part.held.sorted().back();
    part.controllers.highestKeyPitch =
        static_cast<float>(highest + part.patch.controls().transpose) * semitonePitch +
        part.bendPitch();
}

void noteOn(PartState& part, int note, int velocity, std::int8_t detune, EventSource source) {
    if (source != EventSource::arpeggiator) part.heldKeys.press(note);
    if (source != EventSource::taken) part.held.press(note);
    PlayedNote played;
    played.note = {note, static_cast<float>(detune) * 100, velocity, source};
    if (source != EventSource::arpeggiator) {
        part.detuneCents[static_cast<std::size_t>(note)] = detune;
        played.note.detuneCents = detune;
        played.zoneGain = partZoneGain(part, note, velocity);
    }
    if (source == EventSource::taken && !isWanted(part, source)) return;
    followHighestKey(part);
    if (played.zoneGain == 0 || part.patch.controls().muted) return;
    played.trigger = triggerState(part);
    ++part.eventCounter;
    if (source != EventSource::taken) {
        ++part.notesPlayed;
        const auto& lfos = part.patch.controls().lfo;
        for (std::size_t i = 0; i < lfos.size(); ++i)
            part.clock.noteOn(i, lfos[i], part.held.count() == 1);
    }
    played.resumes = !part.patch.takeLayoutChanged();
    for (int element = 1; element <= part.patch.elementCount(); ++element)
        playElement(part, element, played);
}

}  // namespace stratovane
