// The one reader of Standard MIDI Files: tracks, division and the first fault.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace stratovane {

struct MidiFileEvent {
    static constexpr std::uint8_t exclusive = 0xF0, escape = 0xF7, meta = 0xFF;
    static constexpr std::uint8_t trackName = 3, endOfTrack = 0x2F, tempo = 0x51, signature = 0x58;

    std::int64_t tick = 0;    // from the track's start
    std::uint8_t status = 0;  // 0x80..0xEF with channel, or one of the three above
    std::uint8_t data1 = 0;   // of a channel message; a meta event's type
    std::uint8_t data2 = 0;
    // A meta event's data, an escape's bytes, or a whole exclusive message from 0xF0 on: one that
    // the file holds in pieces stands here in one, at the time of its last piece.
    std::vector<std::uint8_t> bytes;

    bool isChannelMessage() const { return status < 0xF0; }
    bool isMeta(std::uint8_t type) const { return status == meta && data1 == type; }
    /// Microseconds per quarter note; nothing for other events and for a tempo that is not one.
    std::optional<std::uint32_t> microsecondsPerQuarter() const;
    struct Signature {
        int numerator = 4, denominator = 4;
        double quartersPerBar() const { return numerator * 4.0 / denominator; }
    };
    std::optional<Signature> timeSignature() const;
    /// A meta event's data as text.
    std::string_view text() const {
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
};

struct MidiFileFault {
    enum class Kind {
        tooShort,          // no events at all
        noHeader,          // no events at all
        unknownFormat,     // read on as format 1
        unknownFrameRate,  // read on
        noDivision,        // no events at all
        noTrackHeader,     // tracks before it are kept
        trackBeyondEnd,    // tracks before it are kept
        longNumber,        // this and the following: the track keeps what came before,
        noStatus,          //   the other tracks are read
        unknownStatus,     //
        badData,           //
        eventBeyondTrack,  //
    };
    Kind kind = Kind::tooShort;
    std::size_t offset = 0;  // of the byte that is wrong
    std::string sentence;    // what is wrong there, without the offset
};

using MidiFileTrack = std::vector<MidiFileEvent>;

struct MidiFile {
    int format = 1;
    int declaredTracks = 0;
    int pulsesPerQuarter = 0;  // with SMPTE timing 15 times the ticks per frame
    struct Smpte {
        double framesPerSecond = 25;
        int ticksPerFrame = 40;
    };
    std::optional<Smpte> smpte;
    std::vector<MidiFileTrack> tracks;                  // each in order of time
    std::optional<MidiFileFault> fault;                 // the first one
    std::size_t leftoverOffset = 0, leftoverBytes = 0;  // behind the last track; no fault

    /// The last tick of any track, its end mark included.
    std::int64_t endTick() const;
};

/// Reads a whole file, which stays as it is; what a fault leaves readable is there. Of the tracks
/// the header declares, at most `maxTracks` are read. Any thread.
MidiFile readMidiFile(std::span<const std::uint8_t> bytes, int maxTracks = 65535);

/// The events of all tracks by time, at one time by track, in one track by place; end marks left
/// out. The pointers are into `file`.
std::vector<const MidiFileEvent*> mergeTracks(const MidiFile& file);

}  // namespace stratovane
