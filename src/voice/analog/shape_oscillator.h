// Oscillators 1 and 2 of an "Analog" element: edges as band-limited impulses, to be integrated.
#pragma once

#include "voice/analog/impulse_ring.h"

namespace stratovane {

struct PhaseRun;

/// Stored in patches; do not renumber.
enum class ShapeWave {
    sawSync,
    squareSync,
    squarePwm,
    sawPitch,
    squarePitch,
    sawUnison,
    wavetable,  // above: as wavetable
};

/// One owner, audio thread.
class ShapeOscillator {
  public:
    /// `phase` 0..1 in periods; the first period ends at 1. `spacing` sets the unison saws apart.
    void start(ShapeWave wave, double phase, double spacing);
    void setMinimumPulseWidth(float width) { minimumPulseWidth_ = width; }
    /// The control tick: periods per sample (before the wave's own factor), shape input and the
    /// increment below which a new pitch does not wait for the next period.
    void tick(float periodsPerSample, float shape, float threshold);
    /// Runs 32 samples and adds them to x, times gain: edges and slopes, not yet integrated.
    void addTo(float* x, float gain);
    ShapeWave wave() const { return wave_; }
    /// Periods per sample that the next period will have; what a table reader follows.
    float targetIncrement() const { return target_; }

  private:
    template <class Handler>
    void run(Handler handle);
    void runSawSync();
    void runSquareSync();
    template <bool pulseWidth>
    void runSquare();
    void runSawPitch();
    void runSawUnison();
    void chooseUnisonEvent();
    void startPeriod(PhaseRun& run);
    void setSlope(int from, float slope);

    ShapeWave wave_ = ShapeWave::sawSync;
    double phase_ = 1, nextEvent_ = 1;
    float increment_ = 0, target_ = 0;  // periods per sample, at most 0.5
    float slope_ = 0;                   // per sample
    int slopeFrom_ = 0;                 // sample of the tick since which it is due
    float edge_ = 0;     // saw sync: what the slave has still to rise; squares: the level, +-0.5
    float control_ = 1;  // of the tick: sync ratio, pulse width or unison spread
    double slavePeriod_ = 1;  // sync: of the master period under way
    float unisonSlope_ = 0;   // of the tick, per increment
    float minimumPulseWidth_ = 0;
    double points_[6] = {0.1, 0.2, 0.3, 0.4, 0.5, 0.6};  // next wraps of the unison saws
    int unisonSaw_ = -1;                                 // whose wrap comes next; -1 the main saw
    ImpulseRing ring_;
};

}  // namespace stratovane
