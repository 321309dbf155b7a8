// Schroeder all-passes in series on one line.
#pragma once

#include <array>
#include <cstddef>

#include "effects/blocks/line.h"

namespace stratovane {

/// Stage k writes where the stage before it reads, so the taps are running sums of the delays.
template <std::size_t Stages>
struct AllPassChain {
    std::array<float, Stages> gains{};
    std::array<int, Stages + 1> taps{};  // stage k writes at taps[k] and reads at taps[k + 1]

    /// Delays in samples, each truncated.
    void setDelays(const std::array<float, Stages>& samples) {
        for (std::size_t k = 0; k < Stages; ++k)
            taps[k + 1] = taps[k] + static_cast<int>(samples[k]);
    }
    float stage(Line& line, std::size_t k, float x) const {
        return allPass(line, taps[k], taps[k + 1], gains[k], x);
    }
    /// Stages `from` up to `end`; the caller steps the line.
    float run(Line& line, float x, std::size_t from = 0, std::size_t end = Stages) const {
        for (std::size_t k = from; k < end; ++k) x = stage(line, k, x);
        return x;
    }
};

}  // namespace stratovane
