// One frame of a stereo buffer, and a gain for it.
#pragma once

namespace stratovane {

struct StereoFrame {
    float left = 0, right = 0;
};

static_assert(sizeof(StereoFrame) == 2 * sizeof(float));

/// Left and right factors.
struct StereoGain {
    float left = 0, right = 0;
};

}  // namespace stratovane
