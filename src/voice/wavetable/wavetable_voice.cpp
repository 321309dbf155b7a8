#include "voice/wavetable/wavetable_voice.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "base/units.h"

namespace stratovane {
namespace {

constexpr float lowestIncrement = 1e-9f;       // keeps its reciprocal finite
constexpr float oscillatingResonance = 0.98f;  // from here on the filter rings by itself

/// Height of the second oscillator's half periods.
float shapeLevel(TableShape shape) {
    switch (shape) {
        case TableShape::square:
            return 0.3f;
        case TableShape::triangle:
            return 1.5f;
        case TableShape::tableTriangle:
            return 2;
        default:
            return 0.5f;
    }
}

/// The noise generator's state is what a float of this size keeps in its lower 16 bits: it starts
/// somewhere in the lower fifth of its range.
std::uint32_t noiseState(TableShape shape, float draw) {
    const float seeded = shape == TableShape::noise ? draw * 0.1f + 64 : draw * 0.2f + 128;
    return std::bit_cast<std::uint32_t>(seeded);
}

}  // namespace

void WavetableVoice::start(const ElementControls& controls, const Wavetable* table, float velocity,
                           Random& random) {
    *this = WavetableVoice{};
    shape_ = static_cast<TableShape>(std::clamp<std::int32_t>(controls.wavetable.wave2, 0, 6));
    const float phaseDraw = random.bipolar(), noiseDraw = random.unipolar();
    const float start = phaseDraw * 0.5f * controls.randomStart + controls.start -
                        controls.velocityToStart * velocity;
    phase_ = double(std::fmod(start, 1.0f)) - 0.5;
    sign_ = shapeLevel(shape_);
    noise_.start(noiseState(shape_, noiseDraw));
    table_.start(table);
    const float resonance = controls.resonance + velocity * controls.velocityToResonance;
    filter_.start(FilterCore::digital, controls.filterMode, resonance >= oscillatingResonance);
    refresh(controls);
}

void WavetableVoice::refresh(const ElementControls& controls) {
    const WavetableControls& w = controls.wavetable;
    mix_ = w.mix2;
    sync_ = w.sync;
    ratio_ = double(w.ratio2);
    table_.setAliasing(w.aliasing);
    filter_.setMode(controls.filterMode);
}

void WavetableVoice::tick(float phasePerSample, float wave, float tablePitch,
                          const FilterInputs& filter) {
    increment_ = double(std::clamp(phasePerSample, lowestIncrement, 1.0f));
    const double share = runsTwice() ? 0.5 : 1;
    table_.tick(double(std::exp(tablePitch)) * share * ratio_ * increment_, wave);
    noise_.nudge();
    filter_.update(filter);
}

/// Writes the mix of table and second oscillator. The correction of an edge is the share of its
/// sample that lies behind it.
template <TableShape shape>
void WavetableVoice::mixSources(float* x) {
    constexpr bool twice = shape == TableShape::square || shape == TableShape::triangle;
    WavetableReader table = table_;
    NoiseGenerator noise = noise_;
    double phase = phase_;
    float sign = sign_;
    const double increment = increment_;
    const float mix = mix_;
    for (int i = 0; i < tickFrames; ++i) {
        const float t = table.next();
        float correction = 0;
        phase += increment;
        if (phase >= 0.5) {
            const double age = (phase - 0.5) / increment;  // in samples
            // Where two turns make a period, every second one begins it.
            if (sync_ && (!twice || sign < 0)) table.restart(std::min(age, 1.0));
            correction = static_cast<float>(1 - age);
            if constexpr (shape == TableShape::square) correction *= 2 * sign;
            sign = -sign;
            phase -= 1;
        }
        const auto p = static_cast<float>(phase);
        float s = 0;
        if constexpr (shape == TableShape::saw) s = -correction - p;
        if constexpr (shape == TableShape::square) s = correction + sign;
        if constexpr (shape == TableShape::triangle) s = p * sign;
        if constexpr (shape == TableShape::sawTriangle) s = p * (sign + 1) + correction;
        if constexpr (shape == TableShape::noise) s = 0.5f * noise.take();
        if constexpr (shape == TableShape::tableNoise) s = noise.take() * t;
        if constexpr (shape == TableShape::tableTriangle) s = p * sign * t;
        x[i] = t + (s - t) * mix;
    }
    table_ = table;
    noise_ = noise;
    phase_ = phase;
    sign_ = sign;
}

void WavetableVoice::render(float* y) {
    float x[tickFrames];
    switch (shape_) {
        case TableShape::saw:
            mixSources<TableShape::saw>(x);
            break;
        case TableShape::square:
            mixSources<TableShape::square>(x);
            break;
        case TableShape::triangle:
            mixSources<TableShape::triangle>(x);
            break;
        case TableShape::sawTriangle:
            mixSources<TableShape::sawTriangle>(x);
            break;
        case TableShape::noise:
            mixSources<TableShape::noise>(x);
            break;
        case TableShape::tableNoise:
            mixSources<TableShape::tableNoise>(x);
            break;
        case TableShape::tableTriangle:
            mixSources<TableShape::tableTriangle>(x);
            break;
    }
    filterInput_ = x[tickFrames - 1];
    filter_.render(x, y);
}

}  // namespace stratovane
