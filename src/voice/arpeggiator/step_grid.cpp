#include "voice/arpeggiator/step_grid.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "voice/arpeggiator/event_frames.h"

namespace stratovane {

namespace {
// A point found by division lies at most this many points before the one looked for.
constexpr int pointsLookedAt = 5;
}  // namespace

bool StepGrid::isOdd(double index) { return std::fmod(index, 2.0) != 0; }

void StepGrid::schedule(double index, float swing) {
    index_ = index;
    next_ = start_ + index * step_;
    if (!isOdd(index)) return;
    swing_ = swing;
    next_ += double{swing_} * step_ / 3;
}

/// Pairs of steps begin on multiples of two steps.
void StepGrid::findBeat(double now) {
    const double first = firstMultiple(now, step_);
    const double pair = std::floor(first / 2) * 2;
    start_ = pair * step_;
    index_ = first - pair;
}

void StepGrid::begin(double now, const Settings& settings) {
    step_ = settings.stepBeats;
    swing_ = settings.swing;
    start_ = now;
    index_ = 0;
    last_ = -std::numeric_limits<double>::infinity();
    if (settings.onBeat) findBeat(now);
    schedule(index_, settings.swing);
}

void StepGrid::retune(double now, const Settings& settings) {
    step_ = settings.stepBeats;
    if (settings.onBeat) findBeat(now);
    seek(now - beatTolerance, settings.swing);
}

void StepGrid::resume(double earliest, const Settings& settings) {
    step_ = settings.stepBeats;
    seek(earliest, settings.swing);
}

void StepGrid::seek(double earliest, float swing) {
    swing_ = swing;
    const double from = std::max(last_, earliest);
    double index = std::max(0.0, std::floor((from - start_) / step_) - 1);
    for (int i = 0; i < pointsLookedAt; ++i) {
        schedule(index, swing);
        if (next_ > last_ + beatTolerance && next_ >= earliest) return;
        index += 1;
    }
}

void StepGrid::stepPlayed(double position, double beatsPerFrame, float swing) {
    const auto missed = [&] { return frameOf(next_, position, beatsPerFrame) < 1; };
    last_ = next_;
    schedule(index_ + 1, swing);
    if (!missed()) return;
    double index = std::max(index_, std::floor((position - start_) / step_));
    for (int i = 0; i < pointsLookedAt; ++i) {
        schedule(index, swing);
        if (!missed()) return;
        index += 1;
    }
}

void StepGrid::move(double beats) {
    start_ += beats;
    next_ += beats;
    last_ += beats;
}

}  // namespace stratovane
