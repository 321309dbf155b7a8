// What a filter core needs of one channel of a voice, and nothing else.
#pragma once

namespace stratovane {

/// Which loop runs. The modulated ones take a lane of factors beside the signal.
enum class FilterCore { digital, digitalModulated, alternativeBand, ladder, ladderModulated };

inline bool isModulated(FilterCore core) {
    return core == FilterCore::digitalModulated || core == FilterCore::ladderModulated;
}

/// Aligned so that lanes can load several voices' records with transposes: states, then controls.
struct alignas(64) FilterKernel {
    // States. The ladder's four stages stand in low, band, low2, band2.
    float low = 0, band = 0, low2 = 0, band2 = 0;
    float lastInput = 0;  // the ladder's: after its feedback
    // Controls of the tick
    float f1 = 0, f2 = 0, f3 = 0;  // integrator steps per sample of both stages
    float damping = 1;             // 1/Q of stage 1
    float damping2 = 1;            // of stage 2
    float limit = 1;               // largest stable f1 and f2 at this damping
    float stage = 0;               // ladder: step per stage, 0..1
    float feedback = 0;            // ladder
    float distortion = 0;          // ladder, 0..0.5
    // The mode as weights of what may be heard
    float inputTap = 2, lowTap = 0, bandTap = 0, highTap = 0, low2Tap = 0, band2Tap = 0;
};

}  // namespace stratovane
