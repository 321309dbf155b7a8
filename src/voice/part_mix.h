// Renders a part's voices a tick ahead and mixes them into the part's buffer.
#pragma once

#include <span>
#include <vector>

#include "base/stereo_frame.h"

namespace stratovane {

struct PartState;

/// Voices are rendered in windows of at most 32 frames: first the ticks that fall due, then the mix
/// in slot order. So every frame receives its voices in the same order for any cut of blocks.
/// Audio thread but for `prepare`.
class PartMix {
  public:
    void prepare(int maxFrames) { buffer_.resize(static_cast<std::size_t>(maxFrames)); }
    int capacity() const { return static_cast<int>(buffer_.size()); }
    /// Fills the buffer with the next `frames` (at most the capacity) of all voices, the part's
    /// clock being in that piece. Whether any voice sounded.
    bool render(PartState& part, int frames);
    std::span<const StereoFrame> buffer(int frames) const {
        return {buffer_.data(), static_cast<std::size_t>(frames)};
    }

  private:
    std::vector<StereoFrame> buffer_;
};

}  // namespace stratovane
