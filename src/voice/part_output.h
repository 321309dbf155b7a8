// From a part's buffer to its output pair and meter.
#pragma once

#include <span>

#include "base/shared.h"
#include "base/stereo_frame.h"
#include "voice/render_target.h"

namespace stratovane {

/// Where a part's sound goes and how loud.
struct OutputSettings {
    float level = 0;
    float pan = 0.5f;  // 0 left, 1 right
    int pair = 0;      // 1-based, 0 off; those beyond the last count as the last
};

/// Gains glide from piece to piece, so they alone depend on how blocks are cut. Audio thread but
/// for takePeak.
class PartOutput {
  public:
    /// The next piece starts at its gains.
    void reset() { settled_ = false; }
    /// The gains that the part's level and pan ask for.
    static StereoGain wantedGains(const OutputSettings& settings);
    /// Adds the buffer into the target from `offset` on.
    void add(std::span<const StereoFrame> buffer, const OutputSettings& settings,
             const RenderTarget& target, int offset);
    /// The loudest of |left| and |right| since last asked. Any thread.
    float takePeak();

  private:
    void measure(std::span<const StereoFrame> buffer, const StereoGain& gains);

    StereoGain gains_;
    bool settled_ = false;
    SharedBits peak_;  // the bits of a float that is not negative; these sort like the floats
};

}  // namespace stratovane
