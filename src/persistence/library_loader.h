// Programs of the content library into parts.
#pragma once

#include <cstdint>

#include "base/trace.h"
#include "persistence/patch_loader.h"

namespace stratovane {

class ContentLibrary;
class Engine;
struct MultiSetup;

/// UI thread.
class LibraryLoader {
  public:
    static constexpr std::int32_t next = -1, again = -2, previous = -3;

    enum class AskedBy {
        message,
        editor
    };  // what a message asked for leaves the bank selection alone

    LibraryLoader(const ContentLibrary& library, PatchLoader& loader, MultiSetup& multi,
                  Trace& trace)
        : library_{library}, loader_{loader}, multi_{multi}, trace_{trace} {}

    /// Loads a location, or steps from the part's own to the next or previous program that has a
    /// name. Answers the location, 0 when nothing was loaded.
    std::int32_t load(Engine& engine, int part, std::int32_t location, AskedBy by,
                      PatchLoader::Mix mix = PatchLoader::Mix::ofPatch);

  private:
    const ContentLibrary& library_;
    PatchLoader& loader_;
    MultiSetup& multi_;
    Trace& trace_;
};

}  // namespace stratovane
