// How a phrase walks through the held keys: the chord commands.
#pragma once

#include <array>

#include "base/random.h"
#include "voice/arpeggiator/arpeggiator_keys.h"

namespace stratovane {

/// Indices into the sorted keys, each at most once.
class ChordNotes {
  public:
    void add(int index) {
        for (const int other : *this)
            if (other == index) return;
        indices_[static_cast<std::size_t>(count_++)] = index;
    }
    const int* begin() const { return indices_.data(); }
    const int* end() const { return indices_.data() + count_; }

  private:
    std::array<int, ArpeggiatorKeys::capacity> indices_{};
    int count_ = 0;
};

/// Audio thread.
class ChordWalk {
  public:
    /// As at a pattern's start.
    void reset() { *this = {}; }
    /// Carries out a command (a note number of a phrase's chord channels) with its value (the
    /// velocity) for `keys` held keys, at least one; answers the keys that sound.
    ChordNotes command(int number, int value, int keys, Random& random);
    int octaveShift() const { return octaveShift_; }  // -1..1
    int transpose() const { return transpose_; }      // semitones, -24..24

  private:
    bool walk(int number, int keys, Random& random);
    int shuffled(int order, int keys);
    int bounced(int keys);

    int index_ = 0;
    int direction_ = 1;
    int octaveShift_ = 0, transpose_ = 0;
    std::array<int, 4> cursors_{};
};

}  // namespace stratovane
