// What the arpeggiators played, as text.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "midi_song.h"
#include "plugin_host.h"
#include "shared/new_file.h"
#include "voice/arpeggiator_log.h"

namespace stratovane::render {

/// One event in words: "note-on 60 100", "note-off 60 0", "controller 1 64", "pressure 90", "bend
/// -8192".
std::string eventWords(const MidiBytes& bytes);

class EventList {
  public:
    /// Begins the file; the plug-in is started.
    std::optional<Failure> open(const std::string& path, PluginHost& plugIn);
    /// Takes what waits; after every block.
    void collect(PluginHost& plugIn);
    /// A line for each event in order of time.
    std::optional<Failure> write(const Song& song);
    std::optional<Failure> commit();
    std::int64_t lost() const { return lost_; }

  private:
    NewFile file_;
    std::vector<ArpeggiatorEvent> events_;
    std::int64_t lost_ = 0;
};

}  // namespace stratovane::render
