// What one step of an arpeggio or of the step sequencer plays.
#pragma once

#include <cstdint>

#include "base/random.h"
#include "voice/arpeggiator/arpeggiator_keys.h"
#include "voice/arpeggiator/arpeggiator_view.h"
#include "voice/arpeggiator/note_output.h"

namespace stratovane {

struct PatternStep {
    const ArpeggiatorView& view;
    const ArpeggiatorKeys& keys;  // at least one
    NoteOutput& output;
    Random& random;
    std::uint32_t counter = 0;  // of steps; wraps at the sequence's length if it has one
    bool odd = false;           // on the grid
    double stepBeats = 0.25;
    float swing = 0;  // as the grid uses it
    double now = 0;   // beats
};

/// Sends the controllers, then the notes, of a step in any mode but "Phrase"; modes beyond it play
/// nothing. Audio thread.
void playStep(const PatternStep& step);

}  // namespace stratovane
