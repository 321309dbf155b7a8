// What the element types do differently: one row of functions per type that sounds.
#pragma once

#include "patch/element_controls.h"

namespace stratovane {

class Element;
struct PartState;
struct Voice;

/// Whether an element of this type has what it needs to play. Audio thread, like all below.
bool canSound(const Element& element);
/// Starts the sound of a voice whose note is set; returns the factor that the sound has on its
/// level.
float startSound(const PartState& part, Voice& voice);
/// The element's settings changed.
void refreshSound(const PartState& part, Voice& voice);
/// The next 32 samples at the voice's present inputs.
void renderSound(Voice& voice, float* samples);
/// The note-on click in the filter; nothing on types whose filter does not click.
void clickSound(Voice& voice, float k);

}  // namespace stratovane
