// What the channels of a song play, and which of its program changes found nothing.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "midi_song.h"
#include "offered_programs.h"
#include "summary.h"

namespace stratovane::render {

/// Follows the messages that choose programs as the plug-in does. Tell it a block's events before
/// they are rendered, and when the plug-in has loaded what the last of them asked for.
class ProgramWatch {
  public:
    explicit ProgramWatch(PluginHost& plugIn) : plugIn_{plugIn} {}

    /// Sets whether General MIDI mode is on, where no message tells.
    void setGeneralMidi(bool on) { generalMidi_ = on; }
    void send(std::span<const SongEvent> events, int rate);
    void loaded();
    /// Parts that played, channels without a patch, program changes without one.
    void report(Summary& summary) const;

  private:
    struct Change {
        int channel = 0, bank = 0, program = 0;
        double seconds = 0;
        std::string setupName;  // the plug-in's program name before it: a combi changes it
    };

    void exclusive(std::span<const std::uint8_t> message);
    void noteOn(int part);
    /// Where the plug-in looks for a program: bank and number.
    std::array<int, 2> lookedUp(const Change& change) const;
    bool found(const Change& change);

    PluginHost& plugIn_;
    bool generalMidi_ = false;
    std::array<int, 16> bankSelect_{};         // MSB * 128 + LSB
    std::array<bool, 16> known_{}, silent_{};  // since the last loading; without a patch
    std::array<std::vector<Program>, 16> plays_;
    std::optional<Change> waiting_;
    std::vector<ProgramNotFound> notFound_;
};

}  // namespace stratovane::render
