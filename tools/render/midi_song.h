// A song as the plug-in gets it: events at frames, and blocks that end where they must.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "content/midi_tempo_map.h"
#include "failure.h"

namespace stratovane::render {

struct SongEvent {
    std::int64_t frame = 0;
    std::array<std::uint8_t, 3> bytes{};
    std::vector<std::uint8_t> exclusive;  // the message, when it is one
    /// Ends the block, so that the plug-in can load before what follows.
    bool loads() const { return !exclusive.empty() || (bytes[0] & 0xF0) == 0xC0; }
    bool isNoteOn() const { return (bytes[0] & 0xF0) == 0x90 && bytes[2] > 0; }
    int channel() const { return bytes[0] & 15; }
};

/// Tempo and bars from a frame on.
struct Transport {
    std::int64_t frame = 0;
    MidiTempoMap::Stretch stretch;
};

struct Song {
    std::vector<SongEvent> events;
    std::vector<Transport> transport;  // the first at frame 0
    std::int64_t frames = 0;           // up to the last end mark
    int rate = 44100;
};

/// Reads and checks the file. With a `channel` (0..15) the notes of all channels but the drum one
/// play there and only that channel's controllers; program and bank changes and system-exclusive
/// messages, which could load another patch, are left out.
std::variant<Song, Failure> readSong(const std::string& path, int rate, std::optional<int> channel);

}  // namespace stratovane::render
