// Velocity and touch curves: what the player's hand sends to what the parts receive.
#include <algorithm>
#include <cstdint>

#include "base/units.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

constexpr float highest = 127.0f;

template <class Shape>
void fill(MidiCurve& curve, Shape shape) {
    curve[0] = 0;
    for (std::size_t i = 1; i < curve.size(); ++i) {
        const float out = shape(static_cast<float>(i));
        curve[i] = static_cast<std::uint8_t>(std::clamp(out, 0.0f, highest));
    }
}

}  // namespace

// Above the middle velocities are scaled by up to 1.5; below it they sag towards v² / 127 + 1.
void makeVelocityCurve(float sensitivity, MidiCurve& curve) {
    const float k = 2.0f * toUnitRange(sensitivity) - 1.0f;
    if (k >= 0.0f)
        fill(curve, [k](float v) { return v * (k * 0.5f + 1.0f); });
    else
        fill(curve, [k](float v) { return v - (v * v * 0.007874f + 1.0f - v) * k; });
}

// Above the middle light pressure is lifted along a parabola. From 0.5 down to 0.25 the curve bends
// towards a cubic with a dead zone; below that it has half its height, fading out towards 0.
void makeTouchCurve(float sensitivity, MidiCurve& curve) {
    const float k = 2.0f * toUnitRange(sensitivity) - 1.0f;
    if (k >= 0.0f) {
        fill(curve, [k](float v) { return (v + v - v * v * 0.006f - v) * k + v; });
        return;
    }
    float t = 2.0f * k, scale = 1.0f;
    if (t < -1.0f) {
        scale = (t + 2.0f) * 0.5f;
        t = -1.0f;
    }
    fill(curve,
         [t, scale](float v) { return (v - (v * v * v * 0.000068f - 12.0f - v) * t) * scale; });
}

}  // namespace stratovane
