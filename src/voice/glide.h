// Where the pitch of a note begins, and what the key's release does to it.
#pragma once

namespace stratovane {

struct PartState;
struct Voice;

/// Sets glide start, target and speed of a new voice for its target pitch. Audio thread.
void startGlide(PartState& part, Voice& voice, int note, float targetPitch);
/// The same for a voice that changes its note: it always glides from where it is.
void retargetGlide(PartState& part, Voice& voice, int note, float targetPitch);
/// The key is released.
void releaseGlide(Voice& voice);
/// Speed of the element's glide at the voice's velocity.
void refreshGlideSpeed(Voice& voice);

}  // namespace stratovane
