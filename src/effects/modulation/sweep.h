// What the modulation types share: phases, and the reach of a chorus.
#pragma once

#include <algorithm>

namespace stratovane {

inline constexpr float twoPi = 6.2831855f;

/// Advances a phase that runs in 0..`span`; a step is always shorter than the span.
inline float advancePhase(float& phase, float step, float span) {
    phase += step;
    if (phase >= span) phase -= span;
    return phase;
}

/// Half of a chorus voice's sweep, in samples. It shrinks at fast rates, so that the pitch does not
/// stray further the faster it goes.
inline float chorusDepth(float hz, float depth, float rate, float gain) {
    return std::min(0.02f / hz, 0.024f) * rate * depth * depth * gain;
}

}  // namespace stratovane
