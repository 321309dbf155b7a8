// Nine tone wheels mixed in integers.
#pragma once

#include <array>
#include <cstdint>

#include "base/random.h"
#include "base/units.h"
#include "content/tone_wheels.h"

namespace stratovane {

/// Weights in the order of the wheels: 16', 8', 4', 2', 1'; 5 1/3', 2 2/3', 1 1/3'; 1 3/5'.
using WheelWeights = std::array<std::int32_t, 9>;

/// Keys that drawbars reach; others play as the nearest of them.
inline constexpr int lowestDrawbarKey = 36, highestDrawbarKey = 120;

/// Weights of drawbar positions 0..8 in display order, folded back at the key's end of the
/// keyboard, where no higher wheel is left. Any thread.
WheelWeights foldedWeights(const std::array<std::int32_t, 9>& bars, int key);

/// Three read positions in three loops that move together: octaves, fifths and the major third.
/// Audio thread.
class ToneWheelMix {
  public:
    /// Finds the loops of a key 36..120 and begins at random frames; draws three numbers.
    void start(const ToneWheels& wheels, int key, Random& random);
    /// In 1/65536 frames per sample, up to 4 frames.
    void setIncrement(std::int32_t increment) { increment_ = increment; }
    /// The next 32 sums of wheels times weights.
    void render(const WheelWeights& weights, std::int32_t* sums);
    /// The set has a wheel at this place for the key.
    bool hasWheel(std::size_t slot) const;

  private:
    struct Group {
        std::int32_t index = 0;  // of a frame's value, counted from the item's first
        std::int32_t loopEnd = 0, loopLength = 8;
        std::int32_t octave = 0;  // of that value
    };
    void place(Group& group, int pitchClass, int octave);

    const ToneWheels* wheels_ = nullptr;
    std::array<Group, 3> groups_;
    std::int32_t position_ = 0;  // fraction of a frame, 16 bits
    std::int32_t increment_ = 0;
};

}  // namespace stratovane
