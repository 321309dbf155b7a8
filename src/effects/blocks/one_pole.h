// One-pole filters and their coefficients.
#pragma once

#include <algorithm>
#include <cmath>

#include "base/units.h"

namespace stratovane {

/// Lowpass with coefficient a in 0..1: returns the new state.
inline float lowpass(float& state, float x, float a) { return state += (x - state) * a; }

/// Highpass with coefficient b: what is left above the state, which then follows.
inline float highpass(float& state, float x, float b) {
    const float y = x - state;
    state += y * b;
    return y;
}

/// 1 - e^(-perSecond / rate), at most 1.
inline float onePoleCoefficient(double perSecond, float rate) {
    return oneMinusExp(perSecond / static_cast<double>(rate));
}

/// Coefficients above 1 would overshoot; at very low rates some would be.
inline float atMostOne(float coefficient) { return std::min(coefficient, 1.0f); }

}  // namespace stratovane
