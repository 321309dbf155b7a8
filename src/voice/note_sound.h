// What of an element's content a note will play.
#pragma once

#include "content/tone_wheels.h"
#include "patch/element_content.h"
#include "voice/sample/zone_choice.h"

namespace stratovane {

/// Chosen when the element accepts the note and handed to its voices, so that both see the same
/// content whatever the UI thread selects meanwhile. Valid while the note starts; a voice may keep
/// the data as long as it names the content.
struct NoteSound {
    const ElementContent* content = nullptr;
    ZoneChoice zone;                     // "Sample"
    const ToneWheels* wheels = nullptr;  // "Drawbar"
};

}  // namespace stratovane
