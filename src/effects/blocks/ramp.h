// A value that moves in a straight line from tick to tick.
#pragma once

namespace stratovane {

/// Call order per sample: use `value`, then `advance`. After `samples` samples the value has
/// arrived. In double, so that it arrives where it should: close to -1 an all-pass coefficient has
/// no digits to lose.
struct Ramp {
    double value = 0;
    double perSample = 0;

    void reset(double start) {
        value = start;
        perSample = 0;
    }
    void aim(double target, int samples) { perSample = (target - value) * (1.0 / samples); }
    void advance() { value += perSample; }
};

}  // namespace stratovane
