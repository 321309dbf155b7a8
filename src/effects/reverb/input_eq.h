// The low and high cut in front of a reverb.
#pragma once

#include "effects/blocks/one_pole.h"

namespace stratovane {

/// Coefficient of "High EQ" and "HF Damp": 10000..100000 per second, about 1.6..16 kHz.
inline float highEqCoefficient(float v, float rate) {
    return onePoleCoefficient(10000.0f + 90000.0f * v * v * v, rate);
}

/// Coefficient of "Low EQ": 0..2000 per second, about 0..320 Hz. At most 1 from 2 kHz on.
inline float lowEqCoefficient(float v, float rate) { return v * 2000.0f / rate; }

/// A lowpass, then a highpass. Copied into a local for the loop and back after it.
struct InputEq {
    float highCut = 1;  // lowpass coefficient
    float lowCut = 0;   // highpass coefficient
    float lowpassed = 0, belowHighpass = 0;

    void clear() { lowpassed = belowHighpass = 0; }
    float operator()(float x) {
        return highpass(belowHighpass, lowpass(lowpassed, x, highCut), lowCut);
    }
};

}  // namespace stratovane
