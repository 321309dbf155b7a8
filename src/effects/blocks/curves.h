// Curves from normalised values that several effects share.
#pragma once

#include <cmath>

namespace stratovane {

/// "Rate": 0.05..20 Hz, 1 Hz in the middle.
inline float rateHz(float v) { return std::exp(5.991464f * v - 2.995732f); }

/// Dry and wet gains of a mix that keeps about the same loudness.
inline float dryGain(float mix) { return 1.0f - mix * mix; }
inline float wetGain(float mix) { return 2.0f * mix - mix * mix; }

/// A phase of 0..2 folded to a triangle 0..1.
inline float triangle(float phase) { return phase > 1.0f ? 2.0f - phase : phase; }

}  // namespace stratovane
