// Units and conversions that patch, voices and effects share.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace stratovane {

inline constexpr int parts = 16;
inline constexpr int maxOutputPairs = 16;
inline constexpr int tickFrames = 32;  // a control tick, and the step of the part LFOs

// Pitches are natural logarithms of a frequency ratio.
inline constexpr float semitonePitch = 0.057762265f;  // ln 2 / 12
inline constexpr float centPitch = 0.0005776227f;     // ln 2 / 1200
inline constexpr float octavePitch = 0.6931471f;      // ln 2
inline constexpr float tenOctavesPitch = 6.931472f;   // span of a cutoff control
inline constexpr double middleCHz = 261.62558;        // note 60

/// ln(261.62558 / rate): the pitch of middle C in cycles per sample.
inline float middleCPitch(double rate) { return static_cast<float>(std::log(middleCHz / rate)); }

/// Truncates toward zero. v times a factor like 3.9f decodes a choice of four from 0..1.
constexpr int choice(float v, float factor) { return static_cast<int>(v * factor); }
constexpr bool isOn(float v) { return v > 0.5f; }

/// 1 - e^-x, exact for small x; coefficients of one-pole steps.
inline float oneMinusExp(double x) { return static_cast<float>(-std::expm1(-x)); }

/// Step of a one-pole that covers 1 - e^-3.45 (96.8 %) of its way in `seconds`, advanced every
/// `stepSeconds`; 1 for times below a microsecond.
inline float approachCoefficient(float seconds, float stepSeconds) {
    return seconds >= 1e-6f ? oneMinusExp(3.45 * double(stepSeconds) / double(seconds)) : 1.0f;
}

/// Time controls: 4v² seconds up to 0.5 (1 s), 32v⁵ above (32 s at 1).
inline float timeSeconds(float v) { return v <= 0.5f ? 4.0f * v * v : 32.0f * v * v * v * v * v; }

/// |x| * x of x = v - 0.5, the curve of most detune controls (-0.25..0.25).
inline float signedSquare(float v) { return std::fabs(v - 0.5f) * (v - 0.5f); }

/// What is not a number becomes 0, what lies outside goes to the nearer end.
inline float toUnitRange(float v) {
    if (v != v) return 0.0f;
    if (v < 0.0f || v > 1.0f) return v > 0.5f ? 1.0f : 0.0f;
    return v;
}

}  // namespace stratovane
