// Which elements play a note, and which of the held keys a mono element plays.
#pragma once

#include <cstdint>

#include "patch/element_controls.h"
#include "voice/midi_bytes.h"

namespace stratovane {

struct NoteSound;
struct PartState;

/// What trigger conditions look at.
struct TriggerState {
    bool oddNote = false;  // of the part, counted from 0
    bool modWheelUp = false;
    bool sustainDown = false;
};

TriggerState triggerState(const PartState& part);

/// Gains of two zones multiplied, in units of 1e-8.
using ZoneGain = std::int32_t;
inline constexpr ZoneGain fullZoneGain = 100000000;

/// Gain of the part's own zones. Audio thread.
ZoneGain partZoneGain(const PartState& part, int note, int velocity);

/// Gain of the element's zones for a played note, 0 when it stays silent. Counts the note for the
/// element and chooses what its voices will play. A mono element that sounds already (`monoSounds`)
/// ignores its velocity zone. Audio thread.
ZoneGain acceptNote(PartState& part, int element, int note, int velocity,
                    const TriggerState& trigger, bool monoSounds, NoteSound& sound);

/// Whether a message of this source concerns an element: those marked "No Arp" are for the player's
/// own keys.
inline bool reaches(EventSource source, TriggerCondition condition) {
    const bool ofPlayer = condition == TriggerCondition::noArpeggiator;
    return source == EventSource::host || ofPlayer == (source == EventSource::taken);
}

/// Gain 0..1 of a voice that both part and element let through.
inline float voiceGain(ZoneGain ofPart, ZoneGain ofElement) {
    return static_cast<float>(double(ofPart) * double(ofElement) * 1e-16);
}

/// The held key that a mono element plays by its rule; -1 if none lies in its zones.
int priorityNote(const PartState& part, int element);

}  // namespace stratovane
