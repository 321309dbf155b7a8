// A low-frequency oscillator, of a part or of a voice.
#pragma once

#include <cstdint>

#include "base/random.h"
#include "patch/element_controls.h"

namespace stratovane {

/// Stored in patches; above slowDrift there is no wave and the value stays.
enum class LfoWave : std::int32_t {
    off,
    constant,
    sine,
    triangle,
    sawtooth,
    square,
    sampleRandom,
    sampleAlternate,
    randomDrift,
    slowDrift
};

/// Runs in half cycles, each a straight segment of its wave (the sine is computed). Audio thread.
class Lfo {
  public:
    float value = 0;  // -1..1

    /// Starts at 0..1 of a cycle. Random waves go on from the value they have.
    void reset(float startPhase, LfoWave wave);
    /// Another wave at the present phase.
    void setWave(LfoWave wave);
    /// One control tick of `halfCycles` (0..1).
    void advance(float halfCycles, Random& random);

  private:
    void beginSegment();
    void draw(Random& random);

    float phase_ = 0;  // 0..1 of the half cycle
    float slope_ = 0;  // of the value per half cycle
    bool second_ = false;
    LfoWave wave_ = LfoWave::off;
};

inline LfoWave lfoWave(const LfoControls& controls) { return static_cast<LfoWave>(controls.wave); }

/// Half cycles per tick, 0..1, free or by tempo; `beatsPerTick` are quarter notes.
float lfoIncrement(const LfoControls& controls, float beatsPerTick, float rateFactor = 1);

/// Where a cycle starts, 0..1; `random` (0..1) where the "Phase" is at random.
float lfoStartPhase(const LfoControls& controls, float random);

}  // namespace stratovane
