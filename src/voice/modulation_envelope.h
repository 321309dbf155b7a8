// The modulation envelope of a voice: straight segments between five levels.
#pragma once

#include "patch/element_controls.h"

namespace stratovane {

/// Stages 0..2 lead through levels 1..3 to the sustain level, 3 holds it, 4 releases to the last
/// level, 5 holds that. Audio thread.
class ModulationEnvelope {
  public:
    float level = 0;  // -1..1; a fresh note sets it to the first level

    /// 0 restarts from the current level, 4 releases; others as above.
    void setStage(int stage, const ModulationEnvelopeControls& controls, float timeFactor);
    /// One control tick. `multiplier` is the rate, 0..10: 0 holds, 2 is twice as fast.
    void tick(float multiplier, const ModulationEnvelopeControls& controls, float timeFactor);
    /// Back to a new record.
    void reset() { *this = ModulationEnvelope{}; }

  private:
    float perTick_ = 0;
    float elapsedTicks_ = 0, durationTicks_ = 1e10f;
    int nextStage_ = 5;
};

}  // namespace stratovane
