// A tone-wheel set: twelve loops of eight octaves each.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "content/bytes.h"
#include "content/content_data.h"

namespace stratovane {

/// A loop is frames of eight values, the wheels of one pitch class in rising octaves.
struct ToneWheels final : ContentData {
    static constexpr ContentKind kind = ContentKind::drawbars;
    static constexpr int pitchClasses = 12, octaves = 8;

    float tuning = 0;  // pitch, natural logarithm; added to every voice
    std::array<std::int32_t, pitchClasses> start{};   // index into `values`
    std::array<std::int32_t, pitchClasses> length{};  // values, a multiple of 8
    // The whole item as 16-bit values, three frames of zeros behind it: reading an octave too high
    // or a frame too far at a loop's end stays inside.
    std::vector<std::int16_t> values;
};

/// Nothing when a loop leaves the item or is not made of whole frames. UI thread.
std::unique_ptr<ToneWheels> readToneWheels(ByteView item, ContentFault& fault);

/// Loops of whole frames, one for each pitch class from C on.
using ToneWheelLoops = std::array<std::span<const std::int16_t>, ToneWheels::pitchClasses>;
/// Any thread.
Bytes writeToneWheels(float tuning, const ToneWheelLoops& loops);

}  // namespace stratovane
