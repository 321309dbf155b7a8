#include "voice/part_output.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace stratovane {
namespace {

/// Gain after a piece: what the ramp reached, or the new gain when that is close.
float reached(float start, float perFrame, int frames, float wanted) {
    constexpr float close = 0.003f;
    const float value = start + perFrame * static_cast<float>(frames);
    return std::fabs(value - wanted) < close ? wanted : value;
}

}  // namespace

StereoGain PartOutput::wantedGains(const OutputSettings& settings) {
    const float pan = settings.pan;
    const float centre = 0.83f * (pan - pan * pan);  // about -3 dB a side in the middle
    return {(1 - pan + centre) * settings.level, (pan + centre) * settings.level};
}

void PartOutput::add(std::span<const StereoFrame> buffer, const OutputSettings& settings,
                     const RenderTarget& target, int offset) {
    constexpr int shortestRamp = 1000;  // frames
    const StereoGain wanted = wantedGains(settings);
    if (!settled_) gains_ = wanted;
    settled_ = true;
    measure(buffer, wanted);

    const int pair = std::min(settings.pair, target.pairs);
    if (pair < 1) return;
    const auto first = static_cast<std::size_t>(2 * (pair - 1));
    float* left = target.outputs[first] + offset;
    float* right = target.outputs[first + 1] + offset;
    target.touched[first] = target.touched[first + 1] = 1;
    const auto frames = static_cast<int>(buffer.size());
    const StereoGain start = gains_;
    if (start.left == wanted.left && start.right == wanted.right) {
        for (int i = 0; i < frames; ++i) {
            const StereoFrame& frame = buffer[static_cast<std::size_t>(i)];
            left[i] += frame.left * start.left;
            right[i] += frame.right * start.right;
        }
        return;
    }
    const auto ramp = static_cast<float>(std::max(frames, shortestRamp));
    const StereoGain perFrame{(wanted.left - start.left) / ramp,
                              (wanted.right - start.right) / ramp};
    for (int i = 0; i < frames; ++i) {
        const StereoFrame& frame = buffer[static_cast<std::size_t>(i)];
        left[i] += frame.left * (start.left + perFrame.left * static_cast<float>(i));
        right[i] += frame.right * (start.right + perFrame.right * static_cast<float>(i));
    }
    gains_ = {reached(start.left, perFrame.left, frames, wanted.left),
              reached(start.right, perFrame.right, frames, wanted.right)};
}

// A few frames tell enough: those at the powers of two.
void PartOutput::measure(std::span<const StereoFrame> buffer, const StereoGain& gains) {
    float peak = 0;
    for (std::size_t i = 1; i < buffer.size(); i *= 2)
        peak = std::max({peak, std::fabs(buffer[i].left * gains.left),
                         std::fabs(buffer[i].right * gains.right)});
    std::uint32_t seen = peak_.get();
    while (std::bit_cast<float>(seen) < peak &&
           !peak_.replace(seen, std::bit_cast<std::uint32_t>(peak))) {
    }
}

float PartOutput::takePeak() { return std::bit_cast<float>(peak_.take()); }

}  // namespace stratovane
