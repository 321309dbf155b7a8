// Where band-limited impulses gather before they are integrated.
#pragma once

#include <algorithm>

#include "voice/analog/impulse_table.h"

namespace stratovane {

/// The 32 samples of a tick and the 32 that impulses placed in it reach beyond. One owner.
class ImpulseRing {
  public:
    /// Adds an impulse of `height` at sample `position` (0..31 of the tick). `fraction` (0..1) is
    /// its age in samples: a larger one lies further before the sample.
    void add(const ImpulseTable& table, int position, double fraction, float height) {
        const float column =
            static_cast<float>(std::clamp(fraction, 0.0, 1.0)) * ImpulseTable::phases;
        const int phase = std::min(static_cast<int>(column), ImpulseTable::phases - 1);
        const float slope = height * (column - static_cast<float>(phase));
        const float* impulse = table.impulse[phase];
        const float* difference = table.difference[phase];
        float* to = samples_ + position;
        for (int t = 0; t < ImpulseTable::taps; ++t)
            to[t] += height * impulse[t] + slope * difference[t];
    }
    /// Adds a constant to the samples from `first` up to, not including, `last`.
    void addSlope(int first, int last, float slope) {
        for (int i = first; i < last; ++i) samples_[i] += slope;
    }
    const float* samples() const { return samples_; }
    /// To the next tick: what reached beyond comes first.
    void advance() {
        std::copy(samples_ + 32, samples_ + 64, samples_);
        std::fill(samples_ + 32, samples_ + 64, 0.0f);
    }
    void clear() { std::fill(samples_, samples_ + 64, 0.0f); }

  private:
    alignas(16) float samples_[64] = {};
};

}  // namespace stratovane
