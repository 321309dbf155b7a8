// Which zone of its sample set a "Sample" element plays for a note, and at which pitch.
#pragma once

#include "base/random.h"
#include "content/sample_set.h"
#include "patch/element_controls.h"

namespace stratovane {

/// A note as it reaches the element.
struct ZoneNote {
    int note = 60;      // transposed by the part
    int velocity = 64;  // 1..127
    float sustain = 0;  // position of the pedal, 0..1
};

/// Null, null when there is nothing to be played. The data stay as long as the set does.
struct ZoneChoice {
    const Zone* zone = nullptr;
    const SampleData* data = nullptr;
};

/// The zone and its sample, or nothing when the note is refused or the sample is not there. Draws
/// two numbers. Audio thread, like all below.
ZoneChoice chooseZone(const SampleSet& set, const ElementControls& controls, const ZoneNote& note,
                      Random& random);

/// ln of the frames per sample that a zone plays at while the note pitch is 0. `note` as transposed
/// by the part, `outputRate` in hertz.
float zonePitch(const ZoneChoice& choice, const ElementControls& controls, int note,
                double outputRate);

}  // namespace stratovane
