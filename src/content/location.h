// Where a patch or combi is in the library.
#pragma once

#include <cstdint>

#include "content/content_kind.h"

namespace stratovane {

/// Library location: bank << 8 | program, banks and programs 0..127; 0 is none.
using Location = std::int32_t;
constexpr int bankOf(Location location) { return location >> 8; }
constexpr int programOf(Location location) { return location & 255; }
inline constexpr Location firstCombi = firstCombiBank << 8;

}  // namespace stratovane
