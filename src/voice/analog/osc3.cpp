#include "voice/analog/osc3.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"
#include "voice/analog/event_run.h"

namespace stratovane {
namespace {

constexpr float highestIncrement = 1;     // half periods per sample
constexpr float lowestIncrement = 1e-9f;  // keeps its reciprocal finite
constexpr float integratorFloor = 1e-6f;  // keeps the integrator out of denormal numbers
constexpr float triangleGain = 1.5f;      // of the square that becomes the triangle

}  // namespace

void Osc3::start(Osc3Wave wave, double phase, float level, float sub) {
    *this = Osc3{};
    wave_ = wave;
    phase_ = phase;
    setLevels(level, sub);
    const float share = wave == Osc3Wave::saw ? 0.5f : wave == Osc3Wave::square ? 0.25f : 0.75f;
    output_ = -share * (level + sub);
}

void Osc3::setLevels(float level, float sub) {
    level_ = level;
    sub_ = sub;
}

void Osc3::tick(float halfPeriodsPerSample, float leak, float threshold) {
    target_ = std::clamp(halfPeriodsPerSample, lowestIncrement, highestIncrement);
    if (increment_ < threshold && increment_ != target_) {
        if (increment_ > 0) slope_ *= target_ / increment_;  // the fall keeps matching the edges
        increment_ = target_;
    }
    leak_ = leak;
    if (std::fabs(output_) < integratorFloor) output_ = integratorFloor;
}

/// Height of the edge at the wrap that the counter stands for; 0 where the wave has none.
float Osc3::step() const {
    const bool saw = wave_ == Osc3Wave::saw;
    const float level = wave_ == Osc3Wave::square ? 0.5f * level_ : level_;
    float height = -level;
    if (counter_ == 0)
        height = level + sub_;
    else if (counter_ == 2)
        height = level - sub_;
    else if (saw)
        height = 0;
    return wave_ == Osc3Wave::triangle ? triangleGain * height : height;
}

void Osc3::run(float* drive, float* increments) {
    const bool unheard = !audible() && slope_ == 0 && wave_ != Osc3Wave::triangle;
    if (unheard && increment_ == target_)
        skipTick();
    else
        runEvents(increments);
    std::copy(ring_.samples(), ring_.samples() + tickFrames, drive);
    ring_.advance();
}

/// Keeps time only, so that a level turned up finds the phase where it would be.
void Osc3::skipTick() {
    phase_ += tickFrames * double(increment_);
    const int wraps = static_cast<int>(phase_);
    phase_ -= wraps;
    counter_ = (counter_ + static_cast<unsigned>(wraps)) & 3;
}

void Osc3::runEvents(float* increments) {
    const ImpulseTable& table = impulseTable();
    const bool triangle = wave_ == Osc3Wave::triangle, heard = audible();
    PhaseRun run;
    run.phase = phase_;
    run.setIncrement(increment_);
    int slopeFrom = 0, incrementFrom = 0;
    while (run.reach(1)) {
        run.phase -= 1;
        if (increment_ != target_) {
            if (triangle) std::fill(increments + incrementFrom, increments + run.at, increment_);
            incrementFrom = run.at;
            increment_ = target_;
            run.setIncrement(increment_);
        }
        const float height = step();
        if (heard && height != 0) ring_.add(table, run.at, run.age(0), height);
        counter_ = (counter_ + 1) & 3;
        if (wave_ != Osc3Wave::saw) continue;
        if (slope_ != 0) ring_.addSlope(slopeFrom, run.at, slope_);
        slopeFrom = run.at;
        slope_ = heard ? -increment_ * level_ * 0.5f : 0.0f;
    }
    run.finish();
    phase_ = run.phase;
    if (slope_ != 0) ring_.addSlope(slopeFrom, tickFrames, slope_);
    if (triangle) std::fill(increments + incrementFrom, increments + tickFrames, increment_);
}

void Osc3::integrate(const float* drive, const float* increments, float* y) {
    const float leak = leak_;
    float output = output_;
    if (wave_ == Osc3Wave::triangle) {
        // The square's own leak follows the note, lest the second integration run away.
        for (int i = 0; i < tickFrames; ++i)
            y[i] = output = output * std::max(1 - increments[i], leak) + drive[i];
    } else {
        for (int i = 0; i < tickFrames; ++i) y[i] = output = output * leak + drive[i];
    }
    output_ = output;
}

}  // namespace stratovane
