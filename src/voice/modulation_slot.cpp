#include "voice/modulation_slot.h"

#include <algorithm>
#include <cmath>

namespace stratovane {
namespace {

constexpr float twoPi = 6.2831853f;
constexpr float nearlyZero = 1e-10f;  // where holds decay to; keeps them from denormal numbers

/// Rows that feed each other back stay finite.
float bounded(float y) {
    constexpr float limit = 1e6f;
    if (y != y) return 0;
    return std::clamp(y, -limit, limit);
}

float boundedExp(float x) {
    constexpr float largest = 80;
    return std::exp(std::clamp(x, -largest, largest));
}

float logarithm(float x) {
    constexpr float smallest = 4.54e-05f, floor = -10;
    return x > smallest ? std::log(x) : floor;
}

float plain(const ModulationSlot& slot) {
    return (*slot.modifier * slot.depth + slot.amount) * *slot.source;
}

/// A walk towards random targets; draws a new one on passing the old.
void walk(ModulationSlot& slot, Random& random) {
    float &s = slot.state, &y = slot.output;
    if (s <= y) {
        y += slot.amount * (s - y - 1);
        if (y < s) s = random.bipolar();
    } else {
        y += slot.amount * (s - y + 1);
        if (y > s) s = random.bipolar();
    }
}

float advanceAngle(float angle, float step) { return std::fmod(angle + step, twoPi); }

/// What a processor makes of x; `y` is its output of the tick before, `s` its state.
float process(std::int32_t processor, float x, float a, float y, float& s) {
    constexpr float ln10 = 2.302585f;
    // The state of ramps and envelopes runs to 1 and stays there.
    const bool runs = s < 1;
    const float now = s;
    switch (processor) {
        case rowProcessor::add:
            return x + a;
        case rowProcessor::multiply:
            return x * a;
        case rowProcessor::drive:
            return std::clamp(x * a, -1.0f, 1.0f);
        case rowProcessor::clipAbove:
            return x > a ? a : x;
        case rowProcessor::clipBelow:
            return x < a ? a : x;
        case rowProcessor::clipBelowZero:
            return std::min(x - a, 0.0f);
        case rowProcessor::clipAboveZero:
            return std::max(x - a, 0.0f);
        case rowProcessor::foldAbove:
            return x > a ? 2 * a - x : x;
        case rowProcessor::foldBelow:
            return x < a ? 2 * a - x : x;
        case rowProcessor::curve:
            return x * (1 - a + a * (x * x));
        case rowProcessor::sine:
            return std::sin(x * a);
        case rowProcessor::exponential:
            return boundedExp(x * a);
        case rowProcessor::logarithm:
            return logarithm(x + a);
        case rowProcessor::threshold:
            return x > a ? 1.0f : 0.0f;
        case rowProcessor::quantiseOnSteps:
            return std::floor(x * a + 0.5f) * s;
        case rowProcessor::quantiseBetweenSteps:
            return (std::floor(x * a) + 0.5f) * s;
        case rowProcessor::sampleAndHold:
            s -= a;
            if (s >= 0) return y;
            s += 1;
            return x;
        case rowProcessor::sineAmp:
            s = advanceAngle(s, a);
            return std::sin(now) * x;
        case rowProcessor::sineFrequency:
            s = advanceAngle(s, boundedExp(x * ln10) * a);
            return std::sin(now);

        case rowProcessor::linearRamp:
            if (runs) s += a;
            return runs ? x * now : x;
        case rowProcessor::linearRamp + rowProcessor::inverted:
            if (runs) s += a;
            return runs ? x - x * now : 0.0f;
        case rowProcessor::delayRamp:
            if (runs) s += a;
            if (!runs) return x;
            return now > 0.5f ? (2 * now - 1) * x : y;
        case rowProcessor::delayRamp + rowProcessor::inverted:
            if (runs) s += a;
            if (!runs) return 0;
            return now > 0.5f ? (2 - 2 * now) * x : y;
        case rowProcessor::exponentialRamp:
            s += (1 - s) * a;
            return s * x;
        case rowProcessor::exponentialRamp + rowProcessor::inverted:
            s += (1 - s) * a;
            return x - s * x;
        case rowProcessor::logarithmicRamp:
            if (runs) s *= a;
            return runs ? x * now : x;
        case rowProcessor::logarithmicRamp + rowProcessor::inverted:
            if (runs) s *= a;
            return runs ? x - x * now : 0.0f;
        case rowProcessor::triangleEnvelope:
            if (!runs) return y;
            s += a;
            return now < 0.5f ? 2 * x * now : 2 * x * (1 - now);
        case rowProcessor::triangleEnvelope + rowProcessor::inverted:
            if (!runs) return y;
            s += a;
            return 2 * x * std::fabs(now - 0.5f);
        case rowProcessor::gateEnvelope:
            if (runs) s += a;
            return runs ? x : 0.0f;
        case rowProcessor::gateEnvelope + rowProcessor::inverted:
            if (runs) s += a;
            return runs ? 0.0f : x;

        case rowProcessor::exponentialLag:
            return y + (x - y) * a;
        case rowProcessor::linearLag:
            return x > y ? std::min(y + a, x) : std::max(y - a, x);
        case rowProcessor::peakHold:
            return x > y ? x : y + (nearlyZero - y) * a;
        case rowProcessor::differenceHold:
            s = x;
            return y + (nearlyZero - y) * a + (x - now);
        case rowProcessor::crossfade:
            return -8 * ((x - a) * (x - a));
        default:
            return 0;
    }
}

}  // namespace

void runSlot(ModulationSlot& slot, Random& random) {
    float& destination = *slot.destination;
    switch (slot.processor) {
        case rowProcessor::plain:
            slot.output = bounded(plain(slot));
            destination += slot.output;
            return;
        case rowProcessor::scale:
            slot.output = bounded(plain(slot));
            destination = bounded(destination * (1 + slot.output));
            return;
        case rowProcessor::scaleAround:
            slot.output = bounded(2 * *slot.source * slot.amount - slot.amount);
            destination = bounded(destination * (1 + slot.output));
            return;
        case rowProcessor::drift:
            walk(slot, random);
            slot.output = bounded(slot.output);
            destination += slot.output * *slot.source * slot.depth;
            return;
        default:
            slot.output = bounded(
                process(slot.processor, *slot.source, slot.amount, slot.output, slot.state));
            destination += slot.output * slot.depth;
    }
}

}  // namespace stratovane
