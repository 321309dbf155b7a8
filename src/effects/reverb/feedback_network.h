// Four lines that feed each other: the body of a diffuse reverb.
#pragma once

#include <array>
#include <cstddef>

#include "effects/blocks/line.h"

namespace stratovane {

//   read 0 -> g -> (+e) s0 --+----> line 1, line 2     Each line hears two sums, with signs that
//   read 1 -> g -> (+e) s1 --+----> line 0, line 3     make the mixture sqrt(2) times an orthogonal
//   read 2 -> g -> (+e) s2 --+----> line 0, -line 3    one: it is stable while g is below
//   read 3 -> g -> (+e) s3 --+----> line 1, -line 2    1 / sqrt(2).

using FourLines = CircularLine<std::array<float, 4>>;
using FourReads = std::array<float, 4>;

/// What each line held `delays` samples ago.
inline FourReads readFour(const FourLines& lines, const std::array<int, 4>& delays) {
    FourReads r{};
    for (std::size_t i = 0; i < r.size(); ++i) r[i] = lines.tap(delays[i])[i];
    return r;
}

/// One sample: sums `s` and lines take the reads `r` and the input `e`. Sums not yet reached are
/// those of the sample before. The caller steps the lines.
inline void feedFour(FourLines& lines, std::array<float, 4>& s, const FourReads& r, float gain,
                     float e) {
    std::array<float, 4> in{};
    s[0] = r[0] * gain + e;
    in[0] = s[1] + s[2];
    s[1] = r[1] * gain + e;
    in[1] = s[0] + s[3];
    s[2] = r[2] * gain + e;
    in[2] = s[0] - s[3];
    s[3] = r[3] * gain + e;
    in[3] = s[1] - s[2];
    lines.write(in);
}

}  // namespace stratovane
