#include "voice/lfo.h"

#include <algorithm>
#include <cmath>

namespace stratovane {
namespace {
constexpr float pi = 3.14159265f;
}

void Lfo::reset(float startPhase, LfoWave wave) {
    wave_ = wave;
    phase_ = 2 * startPhase;
    // A triangle starts at its centre.
    if (wave == LfoWave::triangle) phase_ = std::fmod(phase_ + 0.5f, 2.0f);
    second_ = phase_ >= 1;
    if (second_) phase_ -= 1;
    slope_ = 0;
    beginSegment();
}

void Lfo::setWave(LfoWave wave) {
    if (wave == wave_) return;
    wave_ = wave;
    slope_ = 0;
    beginSegment();
}

/// Value and slope of a regular wave at the present phase.
void Lfo::beginSegment() {
    switch (wave_) {
        case LfoWave::off:
            value = 0;
            break;
        case LfoWave::constant:
            value = 1;
            break;
        case LfoWave::sine:
            value = std::sin(phase_ * pi);
            if (second_) value = -value;
            break;
        case LfoWave::triangle:
            value = second_ ? 1 - 2 * phase_ : 2 * phase_ - 1;
            slope_ = second_ ? -2.0f : 2.0f;
            break;
        case LfoWave::sawtooth:
            value = second_ ? -phase_ : 1 - phase_;
            slope_ = -1;
            break;
        case LfoWave::square:
            value = second_ ? -1.0f : 1.0f;
            break;
        default:
            break;
    }
}

/// The next half cycle of a random wave.
void Lfo::draw(Random& random) {
    switch (wave_) {
        case LfoWave::sampleRandom:
            value += 0.5f + random.unipolar();
            if (value > 1) value -= 2;
            break;
        case LfoWave::sampleAlternate:
            value = second_ ? -1.0f : random.unipolar();
            break;
        case LfoWave::randomDrift:
            slope_ = random.bipolar() - value;
            break;
        case LfoWave::slowDrift: {
            float target = value + 0.2f * random.bipolar();
            if (target > 1) target = 2 - target;
            if (target < -1) target = -2 - target;
            slope_ = target - value;
            break;
        }
        default:
            break;
    }
}

void Lfo::advance(float halfCycles, Random& random) {
    if (wave_ > LfoWave::slowDrift) return;
    phase_ += halfCycles;
    const bool turns = phase_ >= 1;
    if (turns) {
        phase_ -= 1;
        second_ = !second_;
    }
    if (wave_ == LfoWave::sine) return beginSegment();
    value += halfCycles * slope_;
    // A long tick carries a drift beyond its target.
    if (wave_ == LfoWave::slowDrift) value = std::clamp(value, -1.0f, 1.0f);
    if (!turns) return;
    slope_ = 0;
    beginSegment();
    draw(random);
}

float lfoIncrement(const LfoControls& controls, float beatsPerTick, float rateFactor) {
    constexpr float halfCycles = 2;
    const float perTick = controls.sync >= LfoSync::tempoAndNote
                              ? halfCycles * controls.tempoPerBeat * beatsPerTick
                              : controls.freePerTick;
    return std::min(perTick * rateFactor, 1.0f);
}

float lfoStartPhase(const LfoControls& controls, float random) {
    constexpr float lastPhase = 0.9f, toCycle = 1.1111f;
    return controls.phase <= lastPhase ? controls.phase * toCycle : random;
}

}  // namespace stratovane
