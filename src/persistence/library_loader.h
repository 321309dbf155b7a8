// Programs and combis of the content library into parts.
#pragma once

#include <cstdint>

#include "persistence/patch_loader.h"
#include "persistence/setup_access.h"

namespace stratovane {

class ChunkReader;
class Engine;

/// UI thread.
class LibraryLoader {
  public:
    static constexpr std::int32_t next = -1, again = -2, previous = -3;

    enum class AskedBy {
        message,
        editor
    };  // what a message asked for leaves the bank selection alone

    LibraryLoader(const SetupAccess& setup, PatchLoader& loader, ChunkReader& chunks)
        : setup_{setup}, loader_{loader}, chunks_{chunks} {}

    /// Loads a location (a combi into all parts), or steps from the part's own to the next or
    /// previous program that has a name. Answers the location, 0 when nothing was loaded.
    std::int32_t load(Engine& engine, int part, std::int32_t location, AskedBy by,
                      PatchLoader::Mix mix = PatchLoader::Mix::ofPatch);

  private:
    /// The next named program from the part's own on; 0 when there is none.
    std::int32_t step(int part, std::int32_t step) const;
    bool loadEntry(Engine& engine, int part, std::int32_t location, bool forMessage,
                   PatchLoader::Mix mix);

    SetupAccess setup_;
    PatchLoader& loader_;
    ChunkReader& chunks_;
};

}  // namespace stratovane
