#include "voice/send_effects.h"

#include <algorithm>

#include "effects/effect_unit.h"
#include "patch/element.h"
#include "patch/patch.h"

namespace stratovane {

namespace {

EffectUnit* activeUnit(const Patch& patch, int slot) {
    const Element& element = patch.element(firstSendSlot + slot - 1);
    return element.controls().muted ? nullptr : element.unit();
}

}  // namespace

void addToPair(const RenderTarget& target, int pair, std::span<const StereoFrame> x,
               StereoGain gain, int offset) {
    pair = std::min(pair, target.pairs);
    if (pair < 1) return;
    const auto first = static_cast<std::size_t>(2 * (pair - 1));
    float* left = target.outputs[first] + offset;
    float* right = target.outputs[first + 1] + offset;
    target.touched[first] = target.touched[first + 1] = 1;
    for (std::size_t i = 0; i < x.size(); ++i) {
        left[i] += x[i].left * gain.left;
        right[i] += x[i].right * gain.right;
    }
}

bool runSendEffects(Patch& patch, SendBuses& buses, SendBus* first, int firstOffset,
                    const RenderTarget& target, const BlockPlace& place) {
    constexpr float leastFeed = 1e-8f;
    constexpr float fullGain = 4.0f;  // what makes up for halving by pan and by level
    bool produced = false;
    for (int slot = sendBusCount; slot >= 1; --slot) {
        SendBus& bus = buses[static_cast<std::size_t>(slot - 1)];
        EffectUnit* unit = activeUnit(patch, slot);
        bool silent = !bus.written();
        const std::span<StereoFrame> io = bus.frames(0, place.frames);
        const bool ran = unit != nullptr && unit->process(io, place.beat, silent);
        if (unit != nullptr && !silent) {
            produced = true;
            const ElementControls& element = patch.element(firstSendSlot + slot - 1).controls();
            const float feed = element.effect.sends[0];
            if (slot != 1 && feed >= leastFeed && first != nullptr)
                first->add(io, {feed, feed}, firstOffset);
            if (const float gain = fullGain * element.level; gain > 0 && element.effect.pair > 0) {
                const float right = gain * element.pan;
                addToPair(target, element.effect.pair, io, {gain - right, right}, place.offset);
            }
        }
        if (ran || bus.written()) bus.clear(0, place.frames);
    }
    return produced;
}

}  // namespace stratovane
