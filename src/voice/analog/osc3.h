// Oscillator 3 of an "Analog" element: a plain wave and a square an octave below.
#pragma once

#include "voice/analog/impulse_ring.h"

namespace stratovane {

/// Stored in patches; do not renumber.
enum class Osc3Wave { saw, square, triangle };  // above: as triangle

/// Its phase counts half periods of the note, so that a counter of four spans a period of the sub.
/// One owner, audio thread.
class Osc3 {
  public:
    /// `phase` 0..1 of a half period; the integrator starts where the wave does.
    void start(Osc3Wave wave, double phase, float level, float sub);
    void setLevels(float level, float sub);
    /// Half periods per sample, at most 1, the element's leak and the increment below which a new
    /// pitch does not wait for the next half period.
    void tick(float halfPeriodsPerSample, float leak, float threshold);
    /// Runs 32 samples and writes edges and slopes, not yet integrated; of a triangle also the
    /// increment at each sample.
    void run(float* drive, float* increments);
    /// What was written, integrated. A triangle is a square up to here: its samples times
    /// `increments` go into a second integrator.
    void integrate(const float* drive, const float* increments, float* y);
    /// The integrator, for loops that run it along with others (not for the triangle).
    float output() const { return output_; }
    void setOutput(float output) { output_ = output; }
    Osc3Wave wave() const { return wave_; }
    /// Whether it could be heard at all; below -140 dB its edges are left out.
    bool audible() const { return level_ + sub_ > 1e-7f; }

  private:
    float step() const;
    void skipTick();
    void runEvents(float* increments);

    Osc3Wave wave_ = Osc3Wave::saw;
    double phase_ = 1;
    float increment_ = 0, target_ = 0;
    float slope_ = 0;   // per sample
    float output_ = 0;  // the integrator
    float leak_ = 1;
    float level_ = 0, sub_ = 0;
    unsigned counter_ = 0;  // 0..3
    ImpulseRing ring_;
};

}  // namespace stratovane
