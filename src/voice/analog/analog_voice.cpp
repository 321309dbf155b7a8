#include "voice/analog/analog_voice.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"
#include "voice/filter/filter_cores.h"

namespace stratovane {
namespace {

constexpr float integratorFloor = 1e-6f;       // keeps the integrator out of denormal numbers
constexpr float modulationFloor = 0.0001f;     // amounts below count as none
constexpr float mixFloor = 0.01f;              // of oscillator 2, likewise
constexpr float oscillatingResonance = 0.98f;  // from here on the filter rings by itself
constexpr float immediatePitchHz = 250;        // slower oscillators follow a new pitch at once

bool hasLadder(FilterMode mode) {
    return mode == FilterMode::low24 || mode == FilterMode::low12 || mode >= FilterMode::damper;
}

ShapeWave shapeWave(std::int32_t wave) {
    return static_cast<ShapeWave>(std::clamp<std::int32_t>(wave, 0, 6));
}

Osc3Wave osc3Wave(std::int32_t wave) {
    return static_cast<Osc3Wave>(std::clamp<std::int32_t>(wave, 0, 2));
}

/// Where the integrator stands at the start of a wave, per gain.
float startLevel(ShapeWave wave) {
    switch (wave) {
        case ShapeWave::sawSync:
        case ShapeWave::sawUnison:
            return -0.5f;
        case ShapeWave::wavetable:
            return 0;
        default:
            return -0.25f;
    }
}

/// The integrators of the oscillators, run along with the filter: their chains are shorter than its
/// own and cost nothing beside it.
struct MixInput {
    const float *drive, *direct, *drive3;
    float leak, shape, osc3;
    float next(int i) {
        shape = drive[i] + leak * shape;
        osc3 = osc3 * leak + drive3[i];
        return direct[i] + shape + osc3;
    }
};

}  // namespace

void AnalogVoice::start(const ElementControls& controls, float velocity, float sampleRate,
                        Random& random, const Wavetable* table) {
    const AnalogControls& a = controls.analog;
    const FilterMode mode = controls.filterMode;
    *this = AnalogVoice{};
    ladder_ = a.ladder && hasLadder(mode);
    dual_ = a.filterMod + a.filterDistortion >= modulationFloor || a.mix2 >= mixFloor ||
            shapeWave(a.wave) == ShapeWave::wavetable || a.mute3;
    const ShapeWave wave1 = shapeWave(a.wave);
    const ShapeWave wave2 = dual_ ? shapeWave(a.wave2) : ShapeWave::sawSync;

    // Every note draws four numbers, whatever its waves.
    const float phaseDraw = random.unipolar();
    const float spacingDraws[2] = {random.bipolar(), random.bipolar()};
    const float noiseDraw = random.unipolar();

    const float z = phaseDraw * 0.5f * controls.randomStart + controls.start + 2 -
                    controls.velocityToStart * velocity;
    const double phase = 1 - double(z - std::floor(z));
    const auto spacing = [&](int i) {
        return double(0.07f + 0.025f * spacingDraws[i] * controls.randomStart);
    };
    oscillators_[0].start(wave1, phase, spacing(0));
    oscillators_[1].start(wave2, (1 + phase) / 2, spacing(1));
    for (WavetableReader& reader : readers_) reader.start(table);
    osc3_.start(osc3Wave(a.wave3), phase, a.mix3, a.sub);
    noise_.start(static_cast<std::uint32_t>(noiseDraw * 0.2f * 65536));

    shape_ = startLevel(wave1) * a.mix1 + startLevel(wave2) * a.mix2;
    if (osc3_.wave() == Osc3Wave::triangle && !a.mute3) shape_ += 0.3f * osc3_.output();

    const float resonance = controls.resonance + velocity * controls.velocityToResonance;
    filter_.start(ladder_ ? FilterCore::ladder : FilterCore::digital, mode,
                  resonance >= oscillatingResonance);
    refresh(controls, sampleRate);
}

void AnalogVoice::refresh(const ElementControls& controls, float sampleRate) {
    const AnalogControls& a = controls.analog;
    leak_ = a.leak;
    threshold_ = immediatePitchHz / sampleRate;
    gains_[0] = a.mix1;
    gains_[1] = a.mix2;
    ratios_[0] = a.ratio1;
    ratios_[1] = a.ratio2;
    for (ShapeOscillator& o : oscillators_) o.setMinimumPulseWidth(a.minimumPulseWidth);
    for (WavetableReader& reader : readers_) reader.setAliasing(a.aliasing);
    osc3_.setLevels(a.mix3, a.sub);
    mute3_ = dual_ && a.mute3;
    noiseLevel_ = a.noise;
    filterMod_ = dual_ ? a.filterMod : 0;
    chooseCore(controls);
}

void AnalogVoice::chooseCore(const ElementControls& controls) {
    const AnalogControls& a = controls.analog;
    const FilterMode mode = controls.filterMode;
    // The oscillator pair's loop modulates by any amount, the single oscillator's has no such
    // input.
    const bool modulated = dual_ ? filterMod_ > 0 : filterMod_ >= modulationFloor;
    const float distortion = dual_ ? a.filterDistortion : 0;
    FilterCore core = modulated ? FilterCore::digitalModulated : FilterCore::digital;
    if (ladder_)
        core = modulated || distortion > 0 ? FilterCore::ladderModulated : FilterCore::ladder;
    else if (a.ladder && filterMod_ >= modulationFloor &&
             (mode == FilterMode::band18 || mode == FilterMode::peak))
        core = FilterCore::alternativeBand;
    filter_.setCore(core, filterMod_, distortion);
    if (!ladder_ || hasLadder(mode)) filter_.setMode(mode);  // else the old one until the next note
}

void AnalogVoice::tick(float phasePerSample, float shape1, float shape2,
                       const FilterInputs& filter) {
    const float half = std::min(phasePerSample, 1.0f);
    const float shapes[2] = {shape1, shape2};
    for (int i = 0; i < (dual_ ? 2 : 1); ++i) {
        oscillators_[i].tick(half * ratios_[i] * 0.5f, shapes[i], threshold_);
        if (oscillators_[i].wave() == ShapeWave::wavetable)
            readers_[i].tick(double(oscillators_[i].targetIncrement()), shapes[i]);
    }
    osc3_.tick(half, leak_, threshold_);
    if (std::fabs(shape_) < integratorFloor) shape_ = integratorFloor;
    noise_.nudge();
    filter_.update(filter);
}

void AnalogVoice::render(float* y) {
    float drive[tickFrames] = {}, drive3[tickFrames], increments[tickFrames], direct[tickFrames];
    osc3_.run(drive3, increments);
    for (int i = 0; i < (dual_ ? 2 : 1); ++i) oscillators_[i].addTo(drive, gains_[i]);
    noise_.render(direct, noiseLevel_);
    // Tables pass the integrator by.
    for (int i = 0; i < (dual_ ? 2 : 1); ++i)
        if (oscillators_[i].wave() == ShapeWave::wavetable)
            for (float& sample : direct) sample += gains_[i] * readers_[i].next();

    MixInput mix{drive, direct, drive3, leak_, shape_, osc3_.output()};
    float factors[tickFrames];
    const bool triangle = osc3_.wave() == Osc3Wave::triangle;
    // Whether oscillator 3 is more than a voice of the mix.
    const bool apart = triangle || mute3_ || isModulated(filter_.core());
    if (apart) {
        float osc3[tickFrames];
        osc3_.integrate(drive3, increments, osc3);
        for (int i = 0; i < tickFrames; ++i) factors[i] = 1 + filterMod_ * osc3[i];
        if (!mute3_ && triangle)
            for (int i = 0; i < tickFrames; ++i) drive[i] += osc3[i] * increments[i];
        if (!mute3_ && !triangle)
            for (int i = 0; i < tickFrames; ++i) direct[i] += osc3[i];
        mix.osc3 = 0;
        std::fill(drive3, drive3 + tickFrames, 0.0f);
    }
    renderFilter(filter_.core(), filter_.kernel(), mix, factors, y);
    shape_ = mix.shape;
    filterInput_ = direct[tickFrames - 1] + mix.shape + mix.osc3;
    if (!apart) osc3_.setOutput(mix.osc3);
}

}  // namespace stratovane
