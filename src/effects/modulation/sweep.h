// What the modulation types share: phases, and the reach of a chorus.
#pragma once

#include <algorithm>

namespace stratovane {

inline constexpr double twoPi = 6.283185307179586;

/// Advances a phase that runs in 0..`span`; a step is always shorter than the span.
inline double advancePhase(double& phase, double step, double span) {
    phase += step;
    if (phase >= span) phase -= span;
    return phase;
}

/// Half of a chorus voice's sweep, in samples. It shrinks at fast rates, so that the pitch does not
/// stray further the faster it goes.
inline double chorusDepth(double hz, double depth, double rate, double gain) {
    return std::min(0.02 / hz, 0.024) * rate * depth * depth * gain;
}

}  // namespace stratovane
