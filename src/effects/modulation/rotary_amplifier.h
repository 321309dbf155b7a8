// The amplifier and crossover of "Rotary Speaker 2".
#pragma once

#include <cmath>

namespace stratovane {

/// What comes before the rotors: drive stage, voicing, and the split between horn and drum.
struct RotaryAmplifier {
    // Coefficients.
    float drive = 0, driveLowpass = 0, blend = 0, boost = 0;
    float voice = 0, smoothing = 0;
    float crossover = 0, horn = 0, hornDamping = 0.6f;
    // State.
    float driven = 0;
    float voiceBand = 0, voiceLow = 0, smooth = 0;
    float split = 0, low = 0;  // low goes to the drum
    float hornBand = 0, hornLow = 0;

    void reset() {
        driven = voiceBand = voiceLow = smooth = 0;
        split = low = hornBand = hornLow = 0;
    }
    void step(float x) {
        // A cubic clips softly up to 2, where its slope is 0.
        float u = drive * x;
        if (std::fabs(u) >= 2.0f) u = std::copysign(2.0f, u);
        const float shaped = u - 0.083333f * u * u * u, clean = boost * x;
        driven += ((shaped - x - clean) - driven) * driveLowpass;

        const float input = x + (driven - clean) * blend;
        voiceBand -= (voiceBand + voiceLow + input) * voice;
        voiceLow += voiceBand * voice;
        smooth += (voiceLow - smooth) * smoothing;
        const float speaker = voiceLow + smooth;

        const float high = speaker - (split + low);
        split += high * crossover;
        low += split * crossover;

        hornBand -= (hornDamping * hornBand + high + hornLow) * horn;
        hornLow += hornBand * horn;
    }
};

}  // namespace stratovane
