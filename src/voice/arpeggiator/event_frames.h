// From beats to frames.
#pragma once

#include <cmath>

namespace stratovane {

inline constexpr double frameTolerance = 0.001;  // frames

/// Offset of the frame on which an event at `beat` falls, seen from a frame at `position`: the
/// first not before it, but for the rounding of sums of beats. Whole, may be negative.
inline double frameOf(double beat, double position, double beatsPerFrame) {
    return std::ceil((beat - position) / beatsPerFrame - frameTolerance);
}

/// The earliest beat that falls on the frame at `position`.
inline double earliestOn(double position, double beatsPerFrame) {
    return position - (1 - frameTolerance) * beatsPerFrame;
}

/// How far a position may lie behind a grid point and still count as on it.
inline constexpr double beatTolerance = 1e-6;

/// The first multiple of `unit` at or after a position, in units.
inline double firstMultiple(double position, double unit) {
    return std::ceil((position - beatTolerance) / unit);
}

}  // namespace stratovane
