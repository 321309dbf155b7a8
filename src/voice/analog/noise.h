// The noise source of a voice: a 16-bit multiplicative generator.
#pragma once

#include <cstdint>

namespace stratovane {

/// State times 91 modulo 2^16, read as a fraction. An odd state runs through 2^14 values. One
/// owner.
class NoiseGenerator {
  public:
    /// `state` 0..65535 (larger ones wrap).
    void start(std::uint32_t state) { state_ = static_cast<std::uint16_t>(state); }
    /// Once per control tick: leaves the fixed point 0 and breaks up the short period.
    void nudge() { ++state_; }
    /// Steps once; -0.5..0.5.
    float next() {
        state_ = static_cast<std::uint16_t>(state_ * 91u);
        return static_cast<float>(state_) * (1.0f / 65536) - 0.5f;
    }

  private:
    std::uint16_t state_ = 0;
};

}  // namespace stratovane
