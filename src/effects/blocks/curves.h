// Curves from normalised values that several effects share.
#pragma once

#include <cmath>

namespace stratovane {

/// "Rate": 0.05..20 Hz, 1 Hz in the middle.
inline float rateHz(float v) { return std::exp(5.991464f * v - 2.995732f); }
/// The same for phases that run on for minutes: errors of a float add up audibly.
inline double lfoHz(float v) { return std::exp(5.991464 * static_cast<double>(v) - 2.995732); }

/// Dry and wet gains of a mix that keeps about the same loudness.
inline float dryGain(float mix) { return 1.0f - mix * mix; }
inline float wetGain(float mix) { return 2.0f * mix - mix * mix; }

/// A phase of 0..2 folded to a triangle 0..1.
inline double triangle(double phase) { return phase > 1 ? 2 - phase : phase; }

}  // namespace stratovane
