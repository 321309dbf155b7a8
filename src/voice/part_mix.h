// Renders a part's voices a tick ahead and mixes them into the part's buffer.
#pragma once

#include <span>
#include <vector>

#include "base/stereo_frame.h"

namespace stratovane {

class PartSends;
struct BlockPlace;
struct OutputSettings;
struct PartState;
struct RenderTarget;

/// Where effects of the chain may go beside the part's buffer.
struct EffectWays {
    const OutputSettings& output;
    const RenderTarget& target;
    PartSends& sends;
};

/// Voices are rendered in windows of at most 32 frames: first the ticks that fall due, then the mix
/// in slot order. "Effect" elements divide the slots into segments: each segment is rendered over
/// the whole piece, then the effect runs over the sum so far. So every frame receives its voices in
/// the same order for any cut of blocks. Audio thread but for `prepare`.
class PartMix {
  public:
    void prepare(int maxFrames) { buffer_.resize(static_cast<std::size_t>(maxFrames)); }
    int capacity() const { return static_cast<int>(buffer_.size()); }
    /// Fills the buffer with the next frames (at most the capacity) of all voices and effects, the
    /// part's clock being in that piece. Effects with a way of their own add to the target. Whether
    /// a voice sounded or an effect ran.
    bool render(PartState& part, const EffectWays& ways, const BlockPlace& place);
    std::span<const StereoFrame> buffer(int frames) const {
        return {buffer_.data(), static_cast<std::size_t>(frames)};
    }

  private:
    bool renderSegment(PartState& part, int afterElement, int beforeElement, int frames);
    bool runEffect(PartState& part, int element, const EffectWays& ways, const BlockPlace& place,
                   bool& silent);

    std::vector<StereoFrame> buffer_;
};

}  // namespace stratovane
