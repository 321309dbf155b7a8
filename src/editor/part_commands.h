// What happens to parts as wholes.
#pragma once

#include <cstdint>

namespace stratovane {

class Instrument;

/// Parts other than 0..15 do nothing. Threads: UI thread.
class PartCommands {
  public:
    explicit PartCommands(Instrument& instrument) : instrument_{instrument} {}

    /// A patch or combi of the library, or one of LibraryLoader's steps from the part's own.
    /// Answers the location, 0 when nothing was loaded.
    std::int32_t load(int part, std::int32_t location);
    /// Patch, mix and location; false, and nothing done, onto itself.
    bool copy(int from, int to);
    /// The same, and the first part is empty afterwards.
    bool move(int from, int to);
    /// All parts and the master effects as the General MIDI mode starts, or empty with it off.
    void resetGeneralMidi();

  private:
    Instrument& instrument_;
};

}  // namespace stratovane
