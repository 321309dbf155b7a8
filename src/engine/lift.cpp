#include "engine/lift.h"

namespace stratovane {

float Lift::set(float amount, float sampleRate) {
    constexpr float offBelow = 0.01f, gainPerAmount = 2.2f, lowPassHz = 700.0f,
                    wideFromHz = 64000.0f;
    const bool on = amount > offBelow;  // false for what is not a number
    const float gain = on ? gainPerAmount * amount : 0.0f;
    coefficient_ = lowPassHz / sampleRate;
    wide_ = sampleRate >= wideFromHz;
    gain_ = gain;
    return (8.0f - gain) * 0.25f;
}

void Lift::process(int output, std::span<float> samples) {
    const float g = gain_, r = coefficient_;
    const bool wide = wide_;
    State s = states_[static_cast<std::size_t>(output)];
    for (float& sample : samples) {
        const float x = sample;
        sample = x + g * (x + (wide ? s.olderDifference : s.difference));
        s.low1 += (x - s.low1) * r;
        s.low2 += (s.low1 - s.low2) * r;
        s.olderDifference = s.difference;
        s.difference = s.low2 - x;
    }
    states_[static_cast<std::size_t>(output)] = s;
}

}  // namespace stratovane
