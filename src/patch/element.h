// One layer of a patch: 256 stored values and what they mean.
#pragma once

#include <array>
#include <cstdint>

#include "base/shared.h"
#include "base/text_out.h"
#include "patch/element_controls.h"

namespace stratovane {

class Patch;

/// Threads as for Patch, which owns it.
class Element {
  public:
    ElementType type() const { return static_cast<ElementType>(type_.get()); }
    const ElementControls& controls() const { return controls_; }
    float stored(int index) const { return values_[static_cast<std::size_t>(index)]; }
    /// Bumped when voices must notice (pitch, filter, wave, modulation). Owner of the controls.
    std::uint32_t changes() const { return changes_; }

    // Playing state that outlives voices; audio thread.
    std::uint32_t noteCounter = 0;  // notes that reached the element
    float lastPitch = 0;            // where the next glide starts

  private:
    friend class Patch;
    // The helper that builds patch/ completes this class.
    std::array<Shared<float>, 256> values_;
    Shared<std::int32_t> type_{0};
    ElementControls controls_;
    std::uint32_t changes_ = 0;
};

}  // namespace stratovane
