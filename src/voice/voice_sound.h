// What the element types do differently: one row of functions per type that sounds.
#pragma once

#include "patch/element_controls.h"

namespace stratovane {

class Element;
struct NoteSound;
struct PartState;
struct Voice;
struct VoiceNote;
struct VoiceTick;

/// Whether elements of this type make a sound. Audio thread, like all below.
bool canSound(const Element& element);
/// Finds what the element plays for a note (not yet transposed); false when it has nothing.
bool chooseSound(PartState& part, const Element& element, int note, int velocity, NoteSound& sound);
/// Starts the sound of a voice whose note is set; returns the factor that the sound has on its
/// level.
float startSound(const PartState& part, Voice& voice, const VoiceNote& note);
/// The element's settings changed.
void refreshSound(const PartState& part, Voice& voice);
/// The next 32 samples at the voice's present inputs.
void renderSound(Voice& voice, VoiceTick& tick);
/// The key was let go.
void releaseSound(Voice& voice);
/// Whether nothing but the last value is left to be played.
bool soundIsOver(const Voice& voice);
/// The note-on click in the filter; nothing on types whose filter does not click.
void clickSound(Voice& voice, float k);

}  // namespace stratovane
