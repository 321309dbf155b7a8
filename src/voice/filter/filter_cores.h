// The loops of the voice filters: 32 samples of one channel, the mode as tap weights.
#pragma once

#include <algorithm>

#include "base/units.h"
#include "voice/filter/filter_kernel.h"

namespace stratovane {

/// Input of a core that is there already. Inputs are asked for sample 0..31 in turn.
struct SampleInput {
    const float* x;
    float next(int i) const { return x[i]; }
};

/// A state-variable filter (Chamberlin) whose input enters as the sum of two neighbours, with a
/// second one behind its low-pass:
///     high = damping * band + low - (x + last);  band -= f1 * high;  low += f2 * band
///     band2 -= f3 * (damping2 * band2 - low + low2);  low2 += f3 * band2
/// Written with the low-pass of one sample before, low' + f2 * band = low: then a sample waits for
/// the last one's band through one product and one sum. `factors`, if any, multiply f1 and f2
/// sample by sample, each limited to 0..limit. At each step alone the filter is stable, but steps
/// near the limit that alternate with small ones are not at dampings below 0.65 (an oscillator 3
/// near half the rate does that: the two steps' product has an eigenvalue above 1). There the
/// band's limit holds it, 36 dB above full scale and out of the way of everything else.
template <bool modulated, class Input>
inline void renderDigital(FilterKernel& k, Input& input, const float* factors, float* y) {
    constexpr float highestSwing = 64;
    float lows[tickFrames + 1], bands[tickFrames + 1], low2s[tickFrames], band2s[tickFrames];
    float xs[tickFrames + 1], steps1[tickFrames], steps2[tickFrames + 1];

    const float f1 = k.f1, f2 = k.f2, f3 = k.f3, damping = k.damping;
    if constexpr (modulated) {
        const float limit = k.limit;
        for (int i = 0; i < tickFrames; ++i) {
            steps1[i] = std::min(std::max(f1 * factors[i], 0.0f), limit);
            steps2[i] = std::min(std::max(f2 * factors[i], 0.0f), limit);
        }
    }

    float low = k.low, band = k.band, low2 = k.low2, band2 = k.band2;
    lows[0] = low;
    bands[0] = band;
    xs[0] = k.lastInput;
    // At the first sample the low-pass itself stands for the one before.
    float before = low, keep = 1 - f1 * damping;
    float before2 = low2, keep2 = 1 - f3 * k.damping2;
    const float keepOn = 1 - f1 * (damping + f2);
    const float keepOn2 = 1 - f3 * (k.damping2 + f3);
    float reach = damping;
    for (int i = 0; i < tickFrames; ++i) {
        float step1 = f1, step2 = f2;
        if constexpr (modulated) {
            step1 = steps1[i];
            step2 = steps2[i];
            keep = 1 - step1 * reach;
            reach = damping + step2;
        }
        const float x = input.next(i);
        band = keep * band + step1 * (x + xs[i] - before);
        if constexpr (modulated) band = std::min(std::max(band, -highestSwing), highestSwing);
        before = low;
        low += step2 * band;
        band2 = keep2 * band2 + f3 * (low - before2);
        before2 = low2;
        low2 += f3 * band2;
        keep = keepOn;
        keep2 = keepOn2;
        xs[i + 1] = x;
        lows[i + 1] = low;
        bands[i + 1] = band;
        low2s[i] = low2;
        band2s[i] = band2;
    }
    k.low = low;
    k.band = band;
    k.low2 = low2;
    k.band2 = band2;
    k.lastInput = xs[tickFrames];

    const float inputTap = k.inputTap, lowTap = k.lowTap, bandTap = k.bandTap;
    const float highTap = k.highTap, low2Tap = k.low2Tap, band2Tap = k.band2Tap;
    for (int i = 0; i < tickFrames; ++i) {
        const float high = damping * bands[i] + lows[i] - (xs[i + 1] + xs[i]);
        y[i] = inputTap * xs[i + 1] + lowTap * lows[i + 1] + bandTap * bands[i + 1] +
               highTap * high + low2Tap * low2s[i] + band2Tap * band2s[i];
    }
}

/// A ladder of four stages with a feedback that saturates:
///     u = feedback * (x - 1.0576 * (s4 - s4^3 / 12)) + 2x, s4 limited to +-2
///     each stage: s += a * (input + last input - 2s)
/// Every stage's new value is a^n * u plus what the old states give, so the way from u to s4, which
/// the next sample waits for, is one product and one sum. With `modulated`, `factors` multiply a
/// (limited to 0..1) and the difference of the last stages distorts.
template <bool modulated, class Input>
inline void renderLadder(FilterKernel& k, Input& input, const float* factors, float* y) {
    constexpr float loss = 1.0576f;  // of the feedback path
    constexpr float saturation = 2;  // where s4 - s4^3 / 12 is level
    float s1 = k.low, s2 = k.band, s3 = k.low2, s4 = k.band2, last = k.lastInput;
    const float linear = loss * k.feedback, cubic = linear / 12, gain = k.feedback + 2;
    const float tap1 = k.lowTap, tap2 = k.bandTap, tap4 = k.band2Tap;
    const float distortion = k.distortion, drive = 16 * distortion;
    float a = k.stage, aa = a * a, aaa = aa * a, aaaa = aa * aa;
    for (int i = 0; i < tickFrames; ++i) {
        if constexpr (modulated) {
            a = std::min(std::max(k.stage * factors[i], 0.0f), 1.0f);
            aa = a * a;
            aaa = aa * a;
            aaaa = aa * aa;
        }
        const float t1 = s1 + a * (last - 2 * s1);
        const float t2 = s2 + a * (s1 - 2 * s2) + a * t1;
        const float t3 = s3 + a * (s2 - 2 * s3) + a * t2;
        const float t4 = s4 + a * (s3 - 2 * s4) + a * t3;
        const float back = std::min(std::max(s4, -saturation), saturation);
        const float u = gain * input.next(i) - back * (linear - cubic * back * back);
        s1 = a * u + t1;
        s2 = aa * u + t2;
        s3 = aaa * u + t3;
        s4 = aaaa * u + t4;
        last = u;
        float out = tap1 * s1 + tap2 * s2 + tap4 * s4;
        if constexpr (modulated) {
            const float e = std::min(std::max(drive * (s4 - s3), -2.0f), 2.0f);
            out -= e * distortion;
        }
        y[i] = out;
    }
    k.low = s1;
    k.band = s2;
    k.low2 = s3;
    k.band2 = s4;
    k.lastInput = last;
}

/// The loop of a core, chosen once per tick.
template <class Input>
inline void renderFilter(FilterCore core, FilterKernel& k, Input& input, const float* factors,
                         float* y) {
    switch (core) {
        case FilterCore::digital:
        case FilterCore::alternativeBand:
            return renderDigital<false>(k, input, nullptr, y);
        case FilterCore::digitalModulated:
            return renderDigital<true>(k, input, factors, y);
        case FilterCore::ladder:
            return renderLadder<false>(k, input, nullptr, y);
        case FilterCore::ladderModulated:
            return renderLadder<true>(k, input, factors, y);
    }
}

}  // namespace stratovane
