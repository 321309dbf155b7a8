// Peaks and followers of units that steer a gain.
#pragma once

#include <algorithm>
#include <cmath>

#include "base/stereo_frame.h"

namespace stratovane::dynamics {

/// Both channels share one gain, so the louder one decides.
inline float peakOf(StereoFrame f) { return std::max(std::fabs(f.left), std::fabs(f.right)); }

/// One-pole follower with a coefficient each for rising and falling.
inline float follow(float& envelope, float level, float attack, float release) {
    return envelope += (level - envelope) * (level > envelope ? attack : release);
}

}  // namespace stratovane::dynamics
