// A wavetable: 64 single-cycle waves at eight sizes, each with half the harmonics of the one
// before.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "content/bytes.h"
#include "content/content_data.h"

namespace stratovane {

struct Wavetable final : ContentData {
    static constexpr ContentKind kind = ContentKind::wavetables;
    static constexpr int waves = 64, levels = 8;

    /// Values of a wave: one cycle and its first value once more.
    static constexpr int size(int level) { return (256 >> level) + 1; }
    static constexpr std::size_t valuesBelow(int level) {
        std::size_t below = 0;
        for (int l = 0; l < level; ++l) below += waves * static_cast<std::size_t>(size(l));
        return below;
    }
    static constexpr std::size_t values = 64 * (257 + 129 + 65 + 33 + 17 + 9 + 5 + 3);

    /// Level 0..7, wave 0..63; `size(level)` values. Any thread.
    const std::int16_t* wave(int level, int wave) const {
        return data.data() + valuesBelow(level) +
               static_cast<std::size_t>(wave) * static_cast<std::size_t>(size(level));
    }

    std::array<std::int16_t, values> data{};
};
static_assert(Wavetable::valuesBelow(Wavetable::levels) == Wavetable::values);

/// Nothing when bytes are missing. UI thread.
std::unique_ptr<Wavetable> readWavetable(ByteView item, ContentFault& fault);
/// The item of given data, byte for byte what `readWavetable` reads. Any thread.
Bytes writeWavetable(const Wavetable& table);

/// One cycle of 256 values, -1..1.
using SingleCycle = std::array<float, 256>;
/// Builds the levels: a level of n values keeps the harmonics 0..n / 4 of each wave. When a value
/// would leave -1..1, the whole table is turned down. Any thread; slow.
std::unique_ptr<Wavetable> makeWavetable(std::span<const SingleCycle, Wavetable::waves> waves);

}  // namespace stratovane
