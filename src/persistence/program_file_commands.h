// The user's preset and bank files.
#pragma once

#include <string>

#include "persistence/setup_access.h"

namespace stratovane {

class ChunkReader;
class ChunkWriter;
class Engine;

/// What cannot be written or read is told to the user, except that a file to be read is not there.
/// Paths are bytes. UI thread.
class ProgramFileCommands {
  public:
    ProgramFileCommands(const SetupAccess& setup, ChunkWriter& writer, ChunkReader& reader)
        : setup_{setup}, writer_{writer}, reader_{reader} {}

    /// A part's patch; false, and no file touched, when the part has none.
    bool writePreset(Engine& engine, int part, const std::string& path);
    bool writeBank(Engine& engine, const std::string& path);
    /// A preset goes into the part, a bank replaces the whole setup. False when nothing was loaded.
    bool read(Engine& engine, int part, const std::string& path);

  private:
    SetupAccess setup_;
    ChunkWriter& writer_;
    ChunkReader& reader_;
};

}  // namespace stratovane
