#include "voice/analog/shape_oscillator.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"
#include "voice/analog/event_run.h"

namespace stratovane {
namespace {

constexpr float highestIncrement = 0.5f;  // periods per sample, factors included
constexpr float lowestIncrement = 1e-9f;  // keeps its reciprocal finite
constexpr float syncRange = 15;           // the slave runs at up to 16 times the master
constexpr float unisonHeight = 2.0f / 7;  // seven saws make twice one
constexpr float unisonDetune = 0.0925f;   // at full spread, of the coefficients below
constexpr float unisonCoefficients[] = {-3.0f, 0.9f, 2.07f, -1.1f, 3.0f, -1.93f};
constexpr float edgeLevel = 0.5f;  // of the squares

float unisonStretch(int saw, float spread) {
    return unisonDetune * unisonCoefficients[saw] * spread;
}

/// What all seven saws fall per increment: each as fast as its own wraps lift it, so that no spread
/// leaves a constant.
float unisonSlope(float spread) {
    float rate = 1;
    for (int i = 0; i < 6; ++i) rate += 1 / (1 + unisonStretch(i, spread));
    return -unisonHeight * rate;
}

}  // namespace

void ShapeOscillator::start(ShapeWave wave, double phase, double spacing) {
    *this = ShapeOscillator{};
    wave_ = wave;
    phase_ = phase;
    edge_ = wave == ShapeWave::sawSync ? 1.0f : -edgeLevel;
    if (wave != ShapeWave::sawUnison) return;
    phase_ = 1;
    for (int i = 0; i < 6; ++i) points_[i] = spacing * (i + 1);
}

void ShapeOscillator::tick(float periodsPerSample, float shape, float threshold) {
    float increment = periodsPerSample;
    if (wave_ == ShapeWave::sawPitch || wave_ == ShapeWave::squarePitch)
        increment *= std::exp((shape - 0.5f) * semitonePitch);
    target_ = std::clamp(increment, lowestIncrement, highestIncrement);
    if (increment_ < threshold && increment_ != target_) {
        // The slope comes along, or a slow saw's fall would no longer match its edges: with a
        // sixteenfold sync a glide would leave a constant larger than the wave.
        if (increment_ > 0) slope_ *= target_ / increment_;
        increment_ = target_;
    }
    switch (wave_) {
        case ShapeWave::sawSync:
        case ShapeWave::squareSync: {
            const float ratio = shape < 0 ? 1.0f : 1 + syncRange * shape * shape;
            control_ = std::max(std::min(ratio, highestIncrement / target_), 1.0f);
            break;
        }
        case ShapeWave::squarePwm:
            control_ = std::clamp(shape, minimumPulseWidth_, 1 - minimumPulseWidth_);
            break;
        case ShapeWave::sawUnison: {
            const float clamped = std::clamp(shape, 0.0f, 1.0f);
            control_ = clamped * clamped;
            unisonSlope_ = unisonSlope(control_);
            break;
        }
        default:
            break;
    }
}

void ShapeOscillator::addTo(float* x, float gain) {
    switch (wave_) {
        case ShapeWave::sawSync:
            runSawSync();
            break;
        case ShapeWave::squareSync:
            runSquareSync();
            break;
        case ShapeWave::squarePwm:
            runSquare<true>();
            break;
        case ShapeWave::sawPitch:
            runSawPitch();
            break;
        case ShapeWave::squarePitch:
            runSquare<false>();
            break;
        case ShapeWave::sawUnison:
            runSawUnison();
            break;
        case ShapeWave::wavetable:
            return;
    }
    const float* samples = ring_.samples();
    for (int i = 0; i < tickFrames; ++i) x[i] += gain * samples[i];
    ring_.advance();
}

template <class Handler>
void ShapeOscillator::run(Handler handle) {
    PhaseRun run;
    run.phase = phase_;
    run.setIncrement(increment_);
    slopeFrom_ = 0;
    while (run.reach(nextEvent_)) handle(run);
    run.finish();
    phase_ = run.phase;
    setSlope(tickFrames, slope_);
}

/// The slope under way is added up to `from`; then the new one holds.
void ShapeOscillator::setSlope(int from, float slope) {
    if (slope_ != 0) ring_.addSlope(slopeFrom_, from, slope_);
    slopeFrom_ = from;
    slope_ = slope;
}

void ShapeOscillator::startPeriod(PhaseRun& run) {
    run.phase -= 1;
    if (increment_ == target_) return;
    increment_ = target_;
    run.setIncrement(increment_);
}

void ShapeOscillator::runSawSync() {
    const ImpulseTable& table = impulseTable();
    run([&](PhaseRun& r) {
        const double age = r.age(nextEvent_);
        if (nextEvent_ < 1) {  // the slave alone
            ring_.add(table, r.at, age, 1);
            edge_ -= 1;
            nextEvent_ = std::min(nextEvent_ + slavePeriod_, 1.0);
            return;
        }
        ring_.add(table, r.at, age, edge_);
        startPeriod(r);
        edge_ = control_;
        slavePeriod_ = 1 / double(control_);
        nextEvent_ = std::min(slavePeriod_, 1.0);
        setSlope(r.at, -control_ * increment_);
    });
}

void ShapeOscillator::runSquareSync() {
    const ImpulseTable& table = impulseTable();
    run([&](PhaseRun& r) {
        const double age = r.age(nextEvent_);
        if (nextEvent_ < 1) {
            edge_ = -edge_;
            ring_.add(table, r.at, age, edge_);
        } else {
            if (edge_ < 0) {
                edge_ = edgeLevel;
                ring_.add(table, r.at, age, edge_);
            }
            startPeriod(r);
            slavePeriod_ = 0.5 / double(control_);
            nextEvent_ = 0;
        }
        nextEvent_ = std::min(nextEvent_ + slavePeriod_, 1.0);
    });
}

template <bool pulseWidth>
void ShapeOscillator::runSquare() {
    const ImpulseTable& table = impulseTable();
    run([&](PhaseRun& r) {
        const double age = r.age(nextEvent_);
        if (nextEvent_ < 1) {
            edge_ = -edgeLevel;
            nextEvent_ = 1;
        } else {
            edge_ = edgeLevel;
            startPeriod(r);
            nextEvent_ = pulseWidth ? double(control_) : 0.5;
        }
        ring_.add(table, r.at, age, edge_);
    });
}

void ShapeOscillator::runSawPitch() {
    const ImpulseTable& table = impulseTable();
    run([&](PhaseRun& r) {
        ring_.add(table, r.at, r.age(1), 1);
        startPeriod(r);
        setSlope(r.at, -increment_);
    });
}

/// The lowest point below the main wrap comes next and moves on at once by its own period.
void ShapeOscillator::chooseUnisonEvent() {
    unisonSaw_ = -1;
    nextEvent_ = 1;
    for (int i = 0; i < 6; ++i) {
        if (points_[i] >= nextEvent_) continue;
        nextEvent_ = points_[i];
        unisonSaw_ = i;
    }
    if (unisonSaw_ >= 0) points_[unisonSaw_] += 1 + double(unisonStretch(unisonSaw_, control_));
}

void ShapeOscillator::runSawUnison() {
    const ImpulseTable& table = impulseTable();
    run([&](PhaseRun& r) {
        ring_.add(table, r.at, r.age(nextEvent_), unisonHeight);
        if (unisonSaw_ < 0) {
            startPeriod(r);
            for (double& point : points_)
                if (point >= 1) point -= 1;
            setSlope(r.at, unisonSlope_ * increment_);
        }
        chooseUnisonEvent();
    });
}

}  // namespace stratovane
