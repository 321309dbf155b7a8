// Key and velocity crossfades as tables of gains.
#pragma once

#include <array>
#include <cstdint>

namespace stratovane {

/// One gain per key or velocity in units of 1/10000 (10000 is unity).
using ZoneTable = std::array<std::uint16_t, 128>;

/// Builds a table from normalised low and high ends and a fade width (squared for finer short
/// fades). `high` below `low` makes the zone everything outside the gap, fading into it from both
/// sides. Any thread.
ZoneTable makeZoneTable(float low, float high, float fade);

}  // namespace stratovane
