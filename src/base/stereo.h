// One frame of interleaved stereo.
#pragma once

namespace stratovane {

struct StereoFrame {
    float left = 0, right = 0;
};
static_assert(sizeof(StereoFrame) == 2 * sizeof(float));

}  // namespace stratovane
