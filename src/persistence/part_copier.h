// Copies a part's patch, mix and location to another part.
#pragma once

#include "persistence/setup_access.h"

namespace stratovane {

class Engine;
class PatchLoader;

/// UI thread.
class PartCopier {
  public:
    PartCopier(const SetupAccess& setup, PatchLoader& loader) : setup_{setup}, loader_{loader} {}

    enum class Source { keep, clear };  // copying, or moving

    /// False, and nothing done, when both are the same or one is no part 0..15.
    bool copy(Engine& engine, int from, int to, Source source);

  private:
    void copyHostValues(Engine& engine, int from, int to);

    SetupAccess setup_;
    PatchLoader& loader_;
};

}  // namespace stratovane
