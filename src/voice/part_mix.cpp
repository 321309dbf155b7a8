#include "voice/part_mix.h"

#include <algorithm>
#include <array>

#include "voice/control_tick.h"
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

bool mixWindow(PartState& part, Window& window) {
    std::array<WindowVoice, voicesPerPart> voices;
    const int active = part.slots.active();
    for (int slot = 0; slot < active; ++slot)
        voices[static_cast<std::size_t>(slot)] = advance(part, part.voiceAt(slot), window);

    bool sounded = false;
    for (int slot = 0; slot < active; ++slot) {
        const WindowVoice& voice = voices[static_cast<std::size_t>(slot)];
        if (part.voiceAt(slot).controls().silent) continue;
        if (voice.before && voice.turn > 0) mix(window, *voice.before, 0, voice.turn);
        if (voice.after) mix(window, *voice.after, voice.turn, window.frames);
        sounded |= (voice.before && voice.turn > 0) || voice.after;
    }
    for (int slot = active - 1; slot >= 0; --slot)
        if (voices[static_cast<std::size_t>(slot)].ended) part.slots.free(slot);
    return sounded;
}

}  // namespace

bool PartMix::render(PartState& part, int frames) {
    // Elements that are effects divide the slots into segments: each segment is rendered over the
    // whole piece, then the effect runs over the buffer.
    bool sounded = false;
    for (int at = 0; at < frames; at += tickFrames) {
        Window window;
        window.firstFrame = part.clock.frame() + at;
        window.frames = std::min(tickFrames, frames - at);
        sounded |= mixWindow(part, window);
        for (std::size_t i = 0; i < static_cast<std::size_t>(window.frames); ++i)
            buffer_[static_cast<std::size_t>(at) + i] = {window.left[i], window.right[i]};
    }
    return sounded;
}

}  // namespace stratovane
