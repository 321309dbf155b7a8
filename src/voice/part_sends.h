// A part's sends: to the buses that all parts share or to those of its patch.
#pragma once

#include <span>

#include "base/stereo_frame.h"
#include "voice/send_bus.h"
#include "voice/send_effects.h"

namespace stratovane {

class Patch;

/// Audio thread but for `prepare`.
class PartSends {
  public:
    void prepare(int maxFrames) {
        for (SendBus& bus : own_) bus.prepare(maxFrames);
    }
    /// Adds a piece to the bus that send k (0..3) of the patch leads to. Too low a level counts as
    /// none.
    void add(const Patch& patch, int k, float level, StereoGain gain,
             std::span<const StereoFrame> x, const RenderTarget& target, const BlockPlace& place);
    /// Runs the patch's own send effects; whether one produced sound.
    bool run(Patch& patch, const RenderTarget& target, const BlockPlace& place);

  private:
    SendBuses own_;  // of one piece
};

}  // namespace stratovane
