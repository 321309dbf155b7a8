#include "voice/part_sends.h"

#include "patch/element.h"
#include "patch/patch.h"

namespace stratovane {

void PartSends::add(const Patch& patch, int k, float level, StereoGain gain,
                    std::span<const StereoFrame> x, const RenderTarget& target,
                    const BlockPlace& place) {
    constexpr float leastLevel = 0.0001f;
    if (!(level >= leastLevel)) return;
    const StereoGain scaled{level * gain.left, level * gain.right};
    if (patch.controls().patchSends && patch.element(firstSendSlot + k).unit() != nullptr)
        own_[static_cast<std::size_t>(k)].add(x, scaled, 0);
    else if (target.sends != nullptr)
        target.sends[k].add(x, scaled, place.offset);
}

bool PartSends::run(Patch& patch, const RenderTarget& target, const BlockPlace& place) {
    return runSendEffects(patch, own_, target.sends, place.offset, target, place);
}

}  // namespace stratovane
