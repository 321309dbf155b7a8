// First-order all-pass stages in a row: what a phaser turns phases with.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace stratovane {

/// At ±1 a stage would stop losing what it holds; targets are kept off by this much.
inline float allPassCoefficient(float c) { return std::clamp(c, -0.999f, 0.999f); }

/// One stage: y = c x + s, then s = x - c y. Unity gain at all frequencies, -90 degrees where
/// tan(pi f / rate) = (1 + c) / (1 - c).
inline float allPassStage(float& state, float x, float c) {
    const float y = x * c + state;
    state = x - y * c;
    return y;
}

template <std::size_t stages>
struct AllPassChain {
    std::array<float, stages> states{};

    float step(float x, float c) {
        for (float& state : states) x = allPassStage(state, x, c);
        return x;
    }
};

}  // namespace stratovane
