// An LFO that all voices of a part share.
#pragma once

#include <cstdint>

#include "voice/lfo.h"

namespace stratovane {

/// Audio thread (builder before hand-over).
class PartLfo {
  public:
    explicit PartLfo(std::uint32_t seed) : random_{seed} {}

    float value() const { return lfo_.value; }
    /// Rate and wave as the patch has them; `beatsPerTick` quarter notes per 32 frames.
    void follow(const LfoControls& controls, float beatsPerTick) {
        lfo_.setWave(lfoWave(controls));
        perTick_ = lfoIncrement(controls, beatsPerTick);
    }
    /// A note was struck; `firstKey`: no other key is down.
    void noteOn(const LfoControls& controls, bool firstKey) {
        const bool restarts = controls.sync == LfoSync::eachNote ||
                              controls.sync == LfoSync::tempoAndNote ||
                              (controls.sync == LfoSync::firstNote && firstKey);
        if (!restarts) return;
        lfo_.reset(lfoStartPhase(controls, random_.unipolar()), lfoWave(controls));
    }
    void advance() { lfo_.advance(perTick_, random_); }

  private:
    Lfo lfo_;
    Random random_;
    float perTick_ = 0;
};

}  // namespace stratovane
