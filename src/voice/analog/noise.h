// The noise source of a voice: a 16-bit multiplicative generator.
#pragma once

#include <array>
#include <cstdint>

#include "base/units.h"

namespace stratovane {

/// State times 91 modulo 2^16, read as a fraction. An odd state runs through 2^14 values. One
/// owner.
class NoiseGenerator {
  public:
    /// Larger states wrap.
    void start(std::uint32_t state) { state_ = static_cast<std::uint16_t>(state); }
    /// Once per control tick: leaves the fixed point 0 and breaks up the short period.
    void nudge() { ++state_; }
    /// Steps once; -0.5..0.5.
    float next() { return value(state_ = step(state_, 91)); }
    /// The present value, -0.5..0.5; then steps.
    float take() {
        const float present = value(state_);
        state_ = step(state_, 91);
        return present;
    }
    /// Writes the next 32 values times `level`; with lanes of powers the steps do not wait for one
    /// another.
    void render(float* y, float level) {
        for (std::size_t i = 0; i < powers.size(); ++i)
            y[i] = value(step(state_, powers[i])) * level;
        skip();
    }
    /// As if 32 values had been drawn.
    void skip() { state_ = step(state_, powers.back()); }

  private:
    static constexpr std::uint16_t step(std::uint16_t state, std::uint16_t power) {
        return static_cast<std::uint16_t>(std::uint32_t{state} * power);
    }
    static constexpr float value(std::uint16_t state) {
        return static_cast<float>(int{state}) * (1.0f / 65536) - 0.5f;
    }
    static constexpr std::array<std::uint16_t, tickFrames> powers = [] {
        std::array<std::uint16_t, tickFrames> of91{};
        std::uint32_t power = 1;
        for (auto& p : of91) p = static_cast<std::uint16_t>(power = power * 91 & 0xFFFF);
        return of91;
    }();

    std::uint16_t state_ = 0;
};

}  // namespace stratovane
