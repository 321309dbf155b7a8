// A patch that nobody plays, with what it needs around it.
#pragma once

#include "base/engine_shared.h"
#include "patch/patch.h"

namespace stratovane::content_tool {

class LoosePatch {
  public:
    Patch& operator*() { return patch_; }
    Patch* operator->() { return &patch_; }

  private:
    EngineShared shared_;
    Patch patch_{shared_};
};

}  // namespace stratovane::content_tool
