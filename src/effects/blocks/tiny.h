// States that have faded to nothing.
#pragma once

#include <cmath>

namespace stratovane {

/// For states kept between blocks: below 1e-8 they are 0.
template <class T>
T zeroWhenTiny(T state) {
    return std::fabs(state) < T(1e-8) ? T(0) : state;
}

}  // namespace stratovane
