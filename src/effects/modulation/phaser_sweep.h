// The sweep of the phasers: a phase of -1..1 whose square moves the all-pass coefficient.
#pragma once

#include "effects/blocks/all_pass_chain.h"
#include "effects/blocks/curves.h"

namespace stratovane {

inline constexpr int phaserTickSamples = 32;

/// Coefficients and phase; targets are taken once a control tick of 32 samples.
class PhaserSweep {
  public:
    void setRate(float v, float rate) { phasePerTick_ = lfoHz(v) * 64.0 / rate; }
    void setDepth(float v, float rate) { range_ = 160.0 * v * (160.0 * v) / rate; }
    void setCentre(float v, float rate) {
        const double cubeRoot = 29.5 * v;
        base_ = (cubeRoot * cubeRoot * cubeRoot + 500.0) / rate - 1;
    }
    void reset() { phase_ = 0; }
    void advance() { phase_ = folded(phase_ + phasePerTick_); }
    /// Coefficient at the phase plus `offset` (0..2), not yet bounded.
    double target(double offset) const {
        const double phase = folded(phase_ + offset);
        return phase * phase * range_ + base_;
    }

  private:
    static double folded(double phase) { return phase > 1 ? phase - 2 : phase; }

    double phasePerTick_ = 0;
    double range_ = 0, base_ = 0;
    double phase_ = 0;
};

}  // namespace stratovane
