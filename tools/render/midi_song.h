// A song as the plug-in gets it: events at frames, and blocks that end where they must.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
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

/// What a message to all devices asks of General MIDI mode.
enum class GeneralMidiMessage { none, on, off };
GeneralMidiMessage generalMidiMessage(std::span<const std::uint8_t> exclusive);

/// Tempo and bars from a frame on.
struct Transport {
    std::int64_t frame = 0;
    MidiTempoMap::Stretch stretch;
    /// Quarter notes at a time of the song.
    double beatsAt(double seconds) const {
        return stretch.beats + (seconds - stretch.seconds) * stretch.tempo / 60;
    }
};

struct Song {
    std::vector<SongEvent> events;
    std::vector<Transport> transport;  // the first at frame 0
    std::int64_t frames = 0;           // up to the last end mark
    int rate = 44100;

    /// Whether it switches General MIDI on or off itself.
    bool resets() const;
    double beatsAt(std::int64_t frame) const;
};

/// What of a file is played.
struct SongFilter {
    /// The notes of all channels but the drum one play on this one (0..15), with its own
    /// controllers alone.
    std::optional<int> channel;
    /// Without program changes, bank selects and General MIDI messages; with a channel without any
    /// system-exclusive message, which could load another patch.
    bool leaveOutPrograms = false;
};

/// Reads and checks the file. At its end every channel used gets its pedals lifted and its notes
/// ended, latched ones included.
std::variant<Song, Failure> readSong(const std::string& path, int rate, const SongFilter& filter);

}  // namespace stratovane::render
