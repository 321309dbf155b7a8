// A value that moves in a straight line from tick to tick.
#pragma once

namespace stratovane {

/// Call order per sample: use `value`, then `advance`. After `samples` samples the value has
/// arrived.
struct Ramp {
    float value = 0;
    float perSample = 0;

    void reset(float start) {
        value = start;
        perSample = 0;
    }
    void aim(float target, int samples) {
        perSample = (target - value) * (1.0f / static_cast<float>(samples));
    }
    void advance() { value += perSample; }
};

}  // namespace stratovane
