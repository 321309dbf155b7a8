// The settings of a bank chunk that belong to the song, as plain values.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "base/units.h"
#include "content/bytes.h"

namespace stratovane {

struct SongCurves {
    float velocity = 0.5f, touch = 0.5f;  // sensitivities, 0..1
    float memoryUse = 0.5f;               // 0 ECO, 0.5 Default, 1 XXL
};
struct SongTuning {
    std::int32_t semitones = 0;  // -24..24
    float fraction = 0;          // likewise
    float lift = 0;              // 0..1
    bool generalMidi = false;
};
struct SongCombis {
    std::array<std::int32_t, 128> table{};  // library locations, -1 none
    std::int32_t current = -1;              // written, never read back
    std::int32_t preload = 0;               // 0 off, 1 next, 2 full
    bool stepsKnown = false;                // the block goes on behind the preload mode
    std::optional<std::int32_t> previousController, nextController;  // -1 none
};

/// What a block holds; what an old one leaves out is missing. Every value is within its range.
struct GlobalBlock {
    std::optional<float> masterVolume;
    std::array<std::optional<bool>, parts> links;  // of parts 2..16
    std::optional<std::string> programName;
    std::optional<SongCurves> curves;
    std::optional<SongTuning> tuning;
    std::optional<SongCombis> combis;
};

/// Reads as far as the block's own size and the bytes go. Any thread.
GlobalBlock readGlobalBlock(ByteView block);
/// A block of 620 bytes; what is missing becomes 0. Any thread.
Bytes writeGlobalBlock(const GlobalBlock& block);

}  // namespace stratovane
