// States that have faded to nothing.
#pragma once

#include <cmath>

namespace stratovane {

/// For states kept between blocks: below 1e-8 they are 0.
inline float zeroWhenTiny(float state) { return std::fabs(state) < 1e-8f ? 0.0f : state; }

}  // namespace stratovane
