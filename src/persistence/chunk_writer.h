// The state as the host keeps it in its songs: a patch, or the whole setup.
#pragma once

#include <cstdint>

#include "content/bytes.h"
#include "persistence/setup_access.h"

namespace stratovane {

class Engine;

/// UI thread; the audio thread may render meanwhile.
class ChunkWriter {
  public:
    explicit ChunkWriter(const SetupAccess& setup) : setup_{setup} {}

    /// One part's patch; empty when the part has no name or its record is larger than 100000 bytes.
    Bytes preset(Engine& engine, int part);
    /// All parts, the master effects and the settings of the song; empty when it is larger than
    /// 2000000 bytes.
    Bytes bank(Engine& engine);

  private:
    Bytes record(Engine& engine, int part) const;
    Bytes refuse(std::string_view what, std::size_t bytes, std::size_t most);

    SetupAccess setup_;
    bool refused_ = false;  // hosts save again and again; the user is told once
};

}  // namespace stratovane
