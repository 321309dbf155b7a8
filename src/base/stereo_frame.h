// One frame of a stereo buffer.
#pragma once

namespace stratovane {

struct StereoFrame {
    float left = 0, right = 0;
};

}  // namespace stratovane
