// First-order all-pass stages in a row: what a phaser turns phases with.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace stratovane {

/// At ±1 a stage would stop losing what it holds; targets are kept off by this much.
inline double allPassCoefficient(double c) { return std::clamp(c, -0.999, 0.999); }

/// One stage: y = c x + s, then s = x - c y. Unity gain at all frequencies, -90 degrees where
/// tan(pi f / rate) = (1 + c) / (1 - c). In double: near -1 a stage gathers the rounding of
/// hundreds of samples, and a phaser feeds it back.
inline double allPassStage(double& state, double x, double c) {
    const double y = x * c + state;
    state = x - y * c;
    return y;
}

template <std::size_t stages>
struct AllPassChain {
    std::array<double, stages> states{};

    double step(double x, double c) {
        for (double& state : states) x = allPassStage(state, x, c);
        return x;
    }
};

}  // namespace stratovane
