// Finding a voice for a note.
#pragma once

namespace stratovane {

struct PartState;

/// A slot for a new voice of an element (1..64): free, or taken from the voice that is missed
/// least. A taken voice fades in one of a few slots beyond the limit while these last, else its
/// record is used again at once. Never fails; the caller starts the voice. Audio thread.
int allocateVoice(PartState& part, int element);

/// Lets go of a voice by its mute fade. Audio thread.
void releaseSlot(PartState& part, int slot);

}  // namespace stratovane
