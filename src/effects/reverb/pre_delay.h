// The mono pre-delay of hall and plate.
#pragma once

#include "effects/blocks/line.h"
#include "effects/reverb/input_eq.h"

namespace stratovane {

/// Delay in samples, 0..0.399 s; its line holds 0.4 s.
inline int preDelaySamples(float v, float rate) { return static_cast<int>(v * v * rate * 0.399f); }

/// Writes x, returns the filtered sample of `delay` samples ago, lowered to leave room for the
/// build-up behind it. Steps the line.
inline float preDelayed(Line& line, int delay, InputEq& eq, float x) {
    line.write(x);
    const float y = eq(0.2f * line.tap(delay));
    line.step();
    return y;
}

}  // namespace stratovane
