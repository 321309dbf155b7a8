// Adaptive delta: one byte a frame, whose step width doubles after large steps and halves after
// small ones.
#pragma once

#include <algorithm>
#include <cstdint>

#include "content/bytes.h"

namespace stratovane {

/// Where a decoder stands before the byte of a frame. Values are multiples of 2^-21, exact in float
/// as long as they stay within -8..8. Any thread.
struct DeltaState {
    float value = 0;         // of the frame
    std::int32_t shift = 0;  // step width 2^shift × 2^-21

    static constexpr std::int32_t highestShift = 24;
    static constexpr float unit = 1.0f / (1 << 21);
    static constexpr std::int32_t recordBias = 0x200000;

    /// The slope from this frame to the next; moves the shift, not the value.
    float slope(std::uint8_t byte) {
        if (byte >= 128) {
            shift = std::min(shift + 1, highestShift);
            return static_cast<float>((byte - 192) * (1 << shift)) * unit;
        }
        const auto slope = static_cast<float>((byte - 64) * (1 << shift)) * unit;
        if (byte >= 32 && byte <= 95 && shift > 0) --shift;
        return slope;
    }
    /// Moves on to the next frame.
    void advance(std::uint8_t byte) { value += slope(byte); }

    /// From a stored record: shift in the top byte, the value with a bias below.
    static DeltaState fromRecord(std::uint32_t record) {
        return {
            static_cast<float>(static_cast<std::int32_t>(record & 0xFFFFFF) - recordBias) * unit,
            std::min(static_cast<std::int32_t>(record >> 24), highestShift)};
    }
    std::uint32_t record() const {
        const auto units = static_cast<std::int32_t>(value / unit);
        return static_cast<std::uint32_t>(shift) << 24 |
               (static_cast<std::uint32_t>(units + recordBias) & 0xFFFFFF);
    }
};

/// Encodes one channel so that the decoded values follow `values` (-1..1) with the least squared
/// error. `first` becomes the decoder's state at frame 0; one byte a frame, of which the last holds
/// the value. Any thread; slow.
Bytes encodeAdaptiveDelta(std::span<const float> values, DeltaState& first);

}  // namespace stratovane
