// The chain of combis: 128 slots, as a table and as a text file.
#pragma once

#include <string>

#include "persistence/setup_access.h"

namespace stratovane {

class Engine;
class LibraryLoader;

/// Slots are 0..127; operations on others do nothing. UI thread; the audio thread steps through the
/// table meanwhile.
class CombiChain {
  public:
    CombiChain(const SetupAccess& setup, LibraryLoader& loader) : setup_{setup}, loader_{loader} {}

    void clear(int slot);
    void copy(int from, int to);
    /// Copies, then clears where it came from.
    void move(int from, int to);
    /// Puts a combi of the library into a slot; -1 empties it.
    void set(int slot, std::int32_t location);
    /// "007 " and the combi's name in the library, numbered as the user counts.
    std::string label(int slot) const;
    /// Makes a slot the current one and loads its combi, if it has one.
    void select(Engine& engine, int slot);
    /// 0 off, 1 next, 2 full.
    void setPreloadMode(int mode);

    /// Where a chain is saved unless the user chooses another place.
    std::string defaultPath() const;
    /// Both tell the user what went wrong and answer false then. What was read up to there stays.
    bool write(const std::string& path) const;
    bool read(const std::string& path);

  private:
    void changed();

    SetupAccess setup_;
    LibraryLoader& loader_;
};

}  // namespace stratovane
