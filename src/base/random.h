// Small pseudo-random generator of an instance, part, voice or unit.
#pragma once

#include <cstdint>

namespace stratovane {

/// A 32-bit linear congruential generator (constants of Numerical Recipes), of which the upper 15
/// bits are drawn: 0..32767. Seeded the same, it draws the same; nobody shares one. One owner.
class Random {
  public:
    constexpr explicit Random(std::uint32_t seed = 1) noexcept : state_{seed} {}
    constexpr int draw() noexcept {
        state_ = state_ * 1664525u + 1013904223u;
        return static_cast<int>(state_ >> 17);
    }
    constexpr float unipolar() noexcept { return static_cast<float>(draw()) * (1.0f / 32768); }
    constexpr float bipolar() noexcept { return static_cast<float>(draw()) * (1.0f / 16384) - 1; }
    /// A seed for a generator that hangs off this one: two draws, scrambled.
    constexpr std::uint32_t seed() noexcept {
        const auto high = static_cast<std::uint32_t>(draw());
        return (high << 17) ^ (static_cast<std::uint32_t>(draw()) << 2) ^ 0x9E3779B9u;
    }

  private:
    std::uint32_t state_;
};

}  // namespace stratovane
