// The four effects of a group of send buses, a patch's own or the master channel's.
#pragma once

#include "voice/render_target.h"
#include "voice/send_bus.h"

namespace stratovane {

class Element;
class Patch;

/// A place in a block, and the song position there.
struct BlockPlace {
    int offset = 0;  // first frame within the target
    int frames = 0;
    double beat = 0;
};

/// Runs the effects of a patch's send slots over the first frames of its buses, from the last slot
/// to the first, so that slots 2..4 can feed the first shared bus before its effect runs. Each adds
/// its output to the output pair it chose; all buses are silent afterwards. `first` is the first
/// shared bus, `firstOffset` the frame in it that this place begins at. Answers whether an effect
/// produced sound. Audio thread.
bool runSendEffects(Patch& patch, SendBuses& buses, SendBus* first, int firstOffset,
                    const RenderTarget& target, const BlockPlace& place);

/// Adds a buffer to an output pair (1-based, above the last: the last).
void addToPair(const RenderTarget& target, int pair, std::span<const StereoFrame> x,
               StereoGain gain, int offset);

}  // namespace stratovane
