// Walks an oscillator's phase through a tick from event to event instead of sample by sample.
#pragma once

#include <algorithm>

#include "base/units.h"

namespace stratovane {

/// At most this many edges fall on one sample; what is left comes with the next.
inline constexpr int mostEventsPerSample = 64;

/// Phase and increment of an oscillator while a tick runs. The increment's reciprocal is kept, so
/// that an event costs a product.
struct PhaseRun {
    double phase = 0;
    double perSample = 0;  // above 0
    double samples = 0;    // its reciprocal
    int at = -1;           // the sample that phase belongs to
    int eventsHere = 0;

    void setIncrement(float increment) {
        perSample = double(increment);
        samples = 1 / perSample;
    }
    /// Moves on to the sample in which phase reaches `next`; false (and nothing moved) when that
    /// lies beyond the tick.
    bool reach(double next) {
        const double wait = std::min((next - phase) * samples, 2.0 * tickFrames);
        int steps = static_cast<int>(wait);
        if (steps < wait) ++steps;
        if (steps <= 0) steps = at < 0 || eventsHere >= mostEventsPerSample ? 1 : 0;
        if (at + steps >= tickFrames) return false;
        if (steps > 0) eventsHere = 0;
        ++eventsHere;
        at += steps;
        phase += steps * perSample;
        return true;
    }
    /// How many samples ago, at the sample reached, the phase passed `event`.
    double age(double event) const { return (phase - event) * samples; }
    /// To the last sample of the tick.
    void finish() { phase += (tickFrames - 1 - at) * perSample; }
};

}  // namespace stratovane
