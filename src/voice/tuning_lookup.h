// Micro-tuning: how far a table moves a note.
#pragma once

#include <algorithm>
#include <span>

namespace stratovane {

/// Cents by which `table` (semitones) moves the note that lies `steps` semitones above the table's
/// root. A table of up to 100 entries repeats upwards and downwards; a longer one covers the
/// keyboard and its ends go on. An empty one moves nothing.
inline float tuningCents(std::span<const float> table, int steps) {
    constexpr int longestScale = 100;
    const int count = static_cast<int>(table.size());
    if (count == 0) return 0;
    const int index =
        count <= longestScale ? (steps % count + count) % count : std::clamp(steps, 0, count - 1);
    return 100 * table[static_cast<std::size_t>(index)];
}

}  // namespace stratovane
