// State-variable filter after Chamberlin, in its inverting form.
#pragma once

namespace stratovane::dynamics {

/// `low` is the inverted lowpass, `band` the inverted bandpass of what is fed.
struct StateVariable {
    float band = 0, low = 0;

    /// f is about 2 pi Hz / rate, q is 1 / Q.
    void feed(float x, float f, float q) {
        band -= (q * band + low + x) * f;
        low += band * f;
    }
};

}  // namespace stratovane::dynamics
