// Stores patches and whole setups in the user's banks of the library.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "persistence/setup_access.h"

namespace stratovane {

class Engine;
class ProgramFileCommands;

/// UI thread.
class LibrarySaver {
  public:
    LibrarySaver(const SetupAccess& setup, ProgramFileCommands& files)
        : setup_{setup}, files_{files} {}

    /// A part's patch into a bank 100..119, or (for a part outside 0..15) the whole setup into a
    /// bank 120..127; for another bank the one it came from or the first of its range is taken.
    /// Asks before it overwrites. Answers the location, -1 when nothing was stored.
    std::int32_t save(Engine& engine, int part, int bank);

  private:
    std::int32_t savePatch(Engine& engine, int part, int bank);
    std::int32_t saveCombi(Engine& engine, int bank);
    bool mayOverwrite(std::string_view name, int bank) const;
    std::string folderOf(int newBank) const;
    /// Makes the bank's folder when there is none.
    void prepareBank(int bank);
    std::optional<std::int32_t> choosePlace(int bank, std::string_view name, int declinedBank);
    /// The file to be written there, the one that is there already if it is of the right kind.
    std::string filePath(std::int32_t location, std::string_view name) const;
    void readBankAgain(std::int32_t location, const std::string& written,
                       const std::string& before);

    SetupAccess setup_;
    ProgramFileCommands& files_;
};

}  // namespace stratovane
