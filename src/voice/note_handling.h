// Keys going down and up.
#pragma once

#include <cstdint>

#include "voice/midi_bytes.h"

namespace stratovane {

struct PartState;

/// The key that stands for all keys a pedal holds.
inline constexpr int pedalKey = 255;

/// A key goes down: velocity 1..127, note 0..127. `detune` is in cents from the host, in semitones
/// from the arpeggiator. Audio thread.
void noteOn(PartState& part, int note, int velocity, std::int8_t detune, EventSource source);

/// A key goes up. 128..254 stand for the keys 128..2 (256 - key) let go without a mono element
/// returning to another key; pedalKey lets go of what a pedal holds. Audio thread.
void noteOff(PartState& part, int key, EventSource source);

/// Follows the held keys: pitch of the highest one, bend included.
void followHighestKey(PartState& part);

}  // namespace stratovane
