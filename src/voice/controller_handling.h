// Controllers, pedals, pressure and pitch bend of a part.
#pragma once

#include "voice/midi_bytes.h"

namespace stratovane {

struct PartState;

/// Number 0..129 (128 and 129 exist inside the instrument only), value 0..127; what lies outside is
/// ignored. Audio thread, like all below.
void controlChange(PartState& part, int number, int value, EventSource source);
void channelPressure(PartState& part, int value);
/// `low` 254 marks the editor's wheel, which knows seven bits only.
void pitchBend(PartState& part, int low, int high);

}  // namespace stratovane
