#include "voice/part_mix.h"

#include <algorithm>
#include <array>

#include "effects/effect_unit.h"
#include "voice/control_tick.h"
#include "voice/part_output.h"
#include "voice/part_sends.h"
#include "voice/part_state.h"

namespace stratovane {
namespace {

using Ramp = std::array<float, tickFrames>;

constexpr Ramp countingRamp() {
    Ramp ramp{};
    for (int i = 0; i < tickFrames; ++i) ramp[static_cast<std::size_t>(i)] = static_cast<float>(i);
    return ramp;
}
constexpr Ramp indices = countingRamp();

/// The window's frames, channel by channel.
struct Window {
    alignas(64) Ramp left{}, right{};
    std::int64_t firstFrame = 0;
    int frames = 0;
};

/// Adds the part of a voice's tick that lies on frames `from` .. `to` - 1 of the window.
void mix(Window& window, const VoiceTick& tick, int from, int to) {
    const int count = to - from;
    const auto skipped = static_cast<int>(window.firstFrame + from - tick.firstFrame);
    const float* x = tick.samples + skipped;
    const float* index = indices.data() + skipped;
    float* left = window.left.data() + from;
    float* right = window.right.data() + from;
    const StereoGain start = tick.start, perSample = tick.perSample;
    if (tick.stereo) {
        const float* y = tick.right + skipped;
        for (int i = 0; i < count; ++i) {
            left[i] += x[i] * (start.left + index[i] * perSample.left);
            right[i] += y[i] * (start.right + index[i] * perSample.right);
        }
        return;
    }
    for (int i = 0; i < count; ++i) {
        left[i] += x[i] * (start.left + index[i] * perSample.left);
        right[i] += x[i] * (start.right + index[i] * perSample.right);
    }
}

/// What a slot's voice does in a window.
struct WindowVoice {
    const VoiceTick* before = nullptr;  // up to `turn`
    const VoiceTick* after = nullptr;   // from `turn` on
    int turn = 0;                       // frame of the window
    bool ended = false;
};

WindowVoice advance(PartState& part, Voice& voice, const Window& window) {
    WindowVoice result;
    result.turn = window.frames;
    if (voice.playing >= 0) result.before = &voice.ticks[voice.playing];
    if (voice.dueFrame >= window.firstFrame + window.frames) return result;
    result.turn = static_cast<int>(voice.dueFrame - window.firstFrame);
    if (hasEnded(voice)) {
        result.ended = true;
        return result;
    }
    renderTick(part, voice);
    result.after = &voice.ticks[voice.playing];
    return result;
}

/// The first slot of an element from `element` on.
int slotFrom(const PartState& part, int element) {
    int slot = 0;
    while (slot < part.slots.active() && part.slots[slot].element < element) ++slot;
    return slot;
}

void freeSlot(PartState& part, int slot) {
    part.voiceAt(slot).content = 0;
    part.slots.free(slot);
}

/// An element that became an effect while it sounded advances no voice any more: voices kept until
/// it sounds again would play ticks of a time long past.
void endVoicesOf(PartState& part, int element) {
    const int first = slotFrom(part, element);
    for (int slot = slotFrom(part, element + 1); slot-- > first;) freeSlot(part, slot);
}

/// The slots of the elements between two effects, in a window. Answers whether a voice sounded.
bool mixWindow(PartState& part, int afterElement, int beforeElement, Window& window) {
    const int first = slotFrom(part, afterElement + 1), end = slotFrom(part, beforeElement);
    std::array<WindowVoice, voicesPerPart> voices;
    for (int slot = first; slot < end; ++slot)
        voices[static_cast<std::size_t>(slot)] = advance(part, part.voiceAt(slot), window);

    bool sounded = false;
    for (int slot = first; slot < end; ++slot) {
        const WindowVoice& voice = voices[static_cast<std::size_t>(slot)];
        if (part.voiceAt(slot).controls().silent) continue;
        if (voice.before && voice.turn > 0) mix(window, *voice.before, 0, voice.turn);
        if (voice.after) mix(window, *voice.after, voice.turn, window.frames);
        sounded |= (voice.before && voice.turn > 0) || voice.after;
    }
    for (int slot = end - 1; slot >= first; --slot)
        if (voices[static_cast<std::size_t>(slot)].ended) freeSlot(part, slot);
    return sounded;
}

}  // namespace

bool PartMix::renderSegment(PartState& part, int afterElement, int beforeElement, int frames) {
    bool sounded = false;
    for (int at = 0; at < frames; at += tickFrames) {
        Window window;
        window.firstFrame = part.clock.frame() + at;
        window.frames = std::min(tickFrames, frames - at);
        StereoFrame* to = buffer_.data() + at;
        const auto count = static_cast<std::size_t>(window.frames);
        for (std::size_t i = 0; i < count; ++i) {
            window.left[i] = to[i].left;
            window.right[i] = to[i].right;
        }
        if (!mixWindow(part, afterElement, beforeElement, window)) continue;
        sounded = true;
        for (std::size_t i = 0; i < count; ++i) to[i] = {window.left[i], window.right[i]};
    }
    return sounded;
}

bool PartMix::runEffect(PartState& part, int number, const EffectWays& ways,
                        const BlockPlace& place, bool& silent) {
    enum : int { inPlace, split, firstPair };  // of "Aux Out"
    Element& element = part.patch.element(number);
    const ElementControls& controls = element.controls();
    if (controls.muted) return false;
    const std::span<StereoFrame> io{buffer_.data(), static_cast<std::size_t>(place.frames)};
    const bool ran = element.unit() != nullptr && element.unit()->process(io, place.beat, silent);
    if (silent) return ran;

    const float level = 2 * controls.level;
    const StereoGain gain{level * (1 - controls.pan), level * controls.pan};
    for (int k = 0; k < sendBusCount; ++k)
        ways.sends.add(part.patch, k, controls.effect.sends[static_cast<std::size_t>(k)], gain, io,
                       ways.target, place);
    const int way = controls.effect.auxOut;
    if (way == split) addToPair(ways.target, ways.output.pair, io, gain, place.offset);
    if (way < firstPair) return ran;
    addToPair(ways.target, ways.output.pair + way - firstPair, io, gain, place.offset);
    std::fill(io.begin(), io.end(), StereoFrame{});
    silent = true;
    return ran;
}

bool PartMix::render(PartState& part, const EffectWays& ways, const BlockPlace& place) {
    constexpr int behindAll = maxElements + 1;
    std::fill_n(buffer_.begin(), place.frames, StereoFrame{});
    bool sounded = false, silent = true;
    int last = 0;
    for (const int effect : part.patch.effectElements()) {
        endVoicesOf(part, effect);
        const bool played = renderSegment(part, last, effect, place.frames);
        silent = silent && !played;
        sounded |= played;
        sounded |= runEffect(part, effect, ways, place, silent);
        last = effect;
    }
    return renderSegment(part, last, behindAll, place.frames) || sounded;
}

}  // namespace stratovane
