#include "voice/fm/fm_voice.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"

namespace stratovane {
namespace {

constexpr std::uint32_t phaseMask = 0x7FFFFF;  // 23 bits, a period
constexpr double halfPeriod = 4194304;         // 2^22
constexpr float oscillatingResonance = 0.98f;  // from here on the filter rings by itself
// Modulation is added to the phase at every sample, so its depth belongs to a rate.
constexpr float referenceRate = 44100;

float semitones(float n) { return std::exp2(n / 12); }

/// Frequency ratio of an operator to the note. Near the lowest ratios a small offset beats equally
/// fast on all keys.
double operatorRatio(const FmOperatorControls& o, int key) {
    constexpr float lowCoarse = 2.1f, smallFine = 0.02f;
    const bool beats = o.coarse < lowCoarse && o.fine < smallFine;
    const float fine = beats ? o.fine * semitones(static_cast<float>(60 - key)) : o.fine;
    return double(o.coarse) + double(fine);
}

/// Level of an operator by velocity and key.
float operatorLevel(const FmOperatorControls& o, const FmVoice::Note& note) {
    constexpr float mostSemitones = 24;  // that scaling adds
    const float x = (note.velocity + 1) / 2;
    const float level = (x * x - 0.5f) * o.velocity + 0.5f;
    const float keys = static_cast<float>(note.key) - o.breakpoint;
    const float slope = keys <= 0 ? o.lowScale : o.highScale;
    return level * semitones(std::min(keys * slope, mostSemitones));
}

/// Near enough to a sine that runs from 0 down and up again; a peak of 0.385.
float modulatorWave(std::uint32_t phase) {
    const float x = static_cast<float>(static_cast<std::int32_t>(phase)) * (1.0f / 4194304) - 1;
    return x - x * x * x;
}

/// The other way round and closer to the sine, for -1..1; a peak of 0.33.
float carrierWave(float c) {
    const float square = c * c;
    return ((0.5f * square - 1.5f) * square + 1) * c;
}

}  // namespace

void FmVoice::start(const ElementControls& controls, const Note& note, float sampleRate,
                    Random& random) {
    *this = FmVoice{};
    note_ = note;
    const float phaseDraw = random.bipolar(), carrierDraw = random.bipolar();
    const float start = phaseDraw * 0.5f * controls.randomStart + controls.start -
                        controls.velocityToStart * note.velocity;
    for (Operator& o : operators_)
        o.phase = static_cast<std::uint32_t>(static_cast<std::int64_t>(double(start) * phaseMask)) &
                  phaseMask;
    carrier_ = double(start) * 0.5;
    fixedSpread_ = 1 + carrierDraw * controls.randomStart;
    const float resonance = controls.resonance + note.velocity * controls.velocityToResonance;
    filter_.start(FilterCore::digital, controls.filterMode, resonance >= oscillatingResonance);
    refresh(controls, sampleRate);
    const float e = controls.fm.envelopeLevel;
    const float level =
        operatorLevel(controls.fm.operators[1], note) * controls.fm.operators[1].depth;
    level2_ = e > 1 ? (2 - e) * level : level;
}

void FmVoice::refresh(const ElementControls& controls, float sampleRate) {
    const FmControls& fm = controls.fm;
    const FmOperatorControls &first = fm.operators[0], &second = fm.operators[1];
    const float track = semitones(static_cast<float>(60 - note_.key) * fm.keytrack);
    operators_[0].scale = operatorRatio(first, note_.key) * halfPeriod;
    operators_[1].scale = operatorRatio(second, note_.key) * double(track) * halfPeriod;

    const float level1 = operatorLevel(first, note_);
    through_ = level1 * fm.through;
    level1_ = level1 * first.depth;
    const float level2 = operatorLevel(second, note_) * second.depth, e = fm.envelopeLevel;
    target2_ = e > 1 ? level2 : (e * e + 1e-8f) * level2;
    rate2_ = std::min(fm.envelopePerTick * std::exp(note_.decayBend), 1.0f);
    fixedIncrement_ = fm.carrierHz > 0 ? fixedSpread_ * fm.carrierHz / sampleRate : -1.0f;
    rateFactor_ = referenceRate / sampleRate;
    filter_.setMode(controls.filterMode);
}

void FmVoice::tick(float phasePerSample, float modulation, const FilterInputs& filter) {
    const float increment = std::min(phasePerSample, 1.0f);
    index_ = std::exp(3 * (std::min(modulation, 1.0f) - 1)) * rateFactor_;
    // Far above the rate a modulator folds over; only its remainder counts.
    for (Operator& o : operators_)
        o.increment = static_cast<std::uint32_t>(
                          static_cast<std::int64_t>(o.scale * double(increment) + 0.5)) &
                      phaseMask;
    level2_ += (target2_ - level2_) * rate2_;
    carrierIncrement_ = fixedIncrement_ > 0 ? fixedIncrement_ : increment;
    filter_.update(filter);
}

void FmVoice::render(float* y) {
    float x[tickFrames], through[tickFrames];
    Operator &first = operators_[0], &second = operators_[1];
    for (int i = 0; i < tickFrames; ++i) {
        const auto steps = static_cast<std::uint32_t>(i + 1);
        const float w1 = modulatorWave((first.phase + steps * first.increment) & phaseMask);
        const float w2 = modulatorWave((second.phase + steps * second.increment) & phaseMask);
        x[i] = (w2 * level2_ + w1 * level1_) * index_;
        through[i] = w1 * through_;
    }
    for (Operator* o : {&first, &second})
        o->phase = (o->phase + tickFrames * o->increment) & phaseMask;

    // Only the carrier's phase passes from sample to sample.
    double carrier = carrier_;
    const double increment = double(carrierIncrement_);
    for (float& sample : x) {
        carrier += double(sample) + increment;
        while (carrier > 1) carrier -= 2;
        while (carrier < -1) carrier += 2;
        sample = static_cast<float>(carrier);
    }
    carrier_ = carrier;
    for (int i = 0; i < tickFrames; ++i) x[i] = carrierWave(x[i]) + through[i];
    filterInput_ = x[tickFrames - 1];
    filter_.render(x, y);
}

}  // namespace stratovane
