// How reverbs take their input and mix their output.
#pragma once

#include "base/stereo_frame.h"

namespace stratovane {

/// Sum of both sides, kept away from zero so that recursions do not decay into denormal numbers.
inline float monoInput(const StereoFrame& f) { return f.left + f.right + 1e-8f; }

/// From dry at mix 0 to wet at mix 1.
inline StereoFrame crossfade(const StereoFrame& dry, const StereoFrame& wet, float mix) {
    return {dry.left + mix * (wet.left - dry.left), dry.right + mix * (wet.right - dry.right)};
}

}  // namespace stratovane
