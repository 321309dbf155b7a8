// Conversions and displays that the oscillator blocks share.
#pragma once

#include <cmath>

#include "patch/element_rows.h"

namespace stratovane {

/// Frequency factor of a "Semi" (-24..24) and a "Cent" control (-50..50 cents).
inline float tuningRatio(float semi, float cent) {
    const float semitones = static_cast<float>(centred(semi, 24)) + 2.0f * signedSquare(cent);
    return std::exp(semitones * semitonePitch);
}
inline void showCent(TextOut& out, float v, const ParameterView&) {
    out.print("%+.1f", 200.0f * signedSquare(v));
}

/// Bits flipped in a wave's samples, 0..16383.
inline std::int32_t aliasingBits(float v) { return static_cast<std::int32_t>(16383.0f * (v * v)); }

/// Waves of a list whose control has more steps than the list: the last one stands for the rest.
constexpr std::int32_t listedWave(float v, int count) {
    const int wave = choice(v, 7.9f);
    return wave < count ? wave : count - 1;
}

/// Mixed sources keep a trace of signal, so that what follows never runs on exact zeros.
inline constexpr float mixFloor = 1e-8f;

}  // namespace stratovane
