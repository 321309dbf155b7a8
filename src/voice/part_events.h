// Channel messages of a part.
#pragma once

#include "voice/midi_bytes.h"

namespace stratovane {

struct PartState;

/// Acts on one message: notes, controllers, channel pressure and pitch bend; others, and data bytes
/// that no message has, do nothing. Audio thread.
void handlePartEvent(PartState& part, const MidiBytes& bytes, EventSource source);

}  // namespace stratovane
