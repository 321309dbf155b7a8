// The sweep of the phasers: a phase of -1..1 whose square moves the all-pass coefficient.
#pragma once

#include "effects/blocks/all_pass_chain.h"
#include "effects/blocks/curves.h"

namespace stratovane {

inline constexpr int phaserTickSamples = 32;

/// Coefficients and phase; targets are taken once a control tick of 32 samples.
class PhaserSweep {
  public:
    void setRate(float v, float rate) { phasePerTick_ = rateHz(v) * 64.0f / rate; }
    void setDepth(float v, float rate) { range_ = 160.0f * v * (160.0f * v) / rate; }
    void setCentre(float v, float rate) {
        const float cubeRoot = 29.5f * v;
        base_ = (cubeRoot * cubeRoot * cubeRoot + 500.0f) / rate - 1.0f;
    }
    void reset() { phase_ = 0; }
    void advance() { phase_ = folded(phase_ + phasePerTick_); }
    /// Coefficient at the phase plus `offset` (0..2), not yet bounded.
    float target(float offset) const {
        const float phase = folded(phase_ + offset);
        return phase * phase * range_ + base_;
    }

  private:
    static float folded(float phase) { return phase > 1.0f ? phase - 2.0f : phase; }

    float phasePerTick_ = 0;
    float range_ = 0, base_ = 0;
    float phase_ = 0;
};

}  // namespace stratovane
