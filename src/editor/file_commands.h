// Preset and bank files, and saving to the library.
#pragma once

#include <cstdint>
#include <string>

namespace stratovane {

class Instrument;

/// Parts other than 0..15 do nothing. What goes wrong is told to the user. Threads: UI thread.
class FileCommands {
  public:
    explicit FileCommands(Instrument& instrument) : instrument_{instrument} {}

    /// A preset goes into the part, a bank replaces the whole setup. False when nothing was loaded.
    bool read(int part, const std::string& path);
    /// False, too, when the part has no patch.
    bool writePreset(int part, const std::string& path);
    bool writeBank(const std::string& path);
    /// A part's patch into a bank 100..119, or for any other number the whole setup into a bank
    /// 120..127, both after a question where it would overwrite. Answers the location, -1 when
    /// nothing was stored.
    std::int32_t saveToLibrary(int part, int bank);

  private:
    Instrument& instrument_;
};

}  // namespace stratovane
