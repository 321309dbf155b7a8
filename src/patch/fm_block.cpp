// "FM" elements: two operators, their key scaling and the second one's envelope.
#include <cmath>

#include "base/displays.h"
#include "patch/element_rows.h"

namespace stratovane {

namespace {

using O = FmOperatorControls;

// Operator 1 begins at 17, operator 2 at 25; both have their fields in the same order.
O& operatorOf(ElementScope& s) { return s.controls.fm.operators[s.index < 25 ? 0 : 1]; }

// Frequency ratio in half steps, 0..32. In double: just above the middle the exponential must not
// fall below 12 half steps.
double coarseRatio(float v) {
    const double x = static_cast<double>(v);
    return std::floor(v <= 0.5f ? 24.0 * x : std::exp(3.378 * x + 0.796)) / 2.0;
}

void setCoarse(ElementScope& s, float v) {
    operatorOf(s).coarse = static_cast<float>(coarseRatio(v));
}
void setFine(ElementScope& s, float v) { operatorOf(s).fine = v * v / 2.0f; }
void setDepth(ElementScope& s, float v) { operatorOf(s).depth = 3.0f * v * v; }
void setVelocity(ElementScope& s, float v) { operatorOf(s).velocity = v; }
void setLowScale(ElementScope& s, float v) { operatorOf(s).lowScale = 3.0f - 4.0f * v; }
void setBreakpoint(ElementScope& s, float v) { operatorOf(s).breakpoint = 127.9f * v; }
void setHighScale(ElementScope& s, float v) {
    operatorOf(s).highScale = (2.0f - v) * v * 4.0f - 2.0f;
}
void setEnvelopeRate(ElementScope& s, float v) {
    s.controls.fm.envelopePerTick = approachCoefficient(timeSeconds(v), s.tickSeconds());
}

float carrierHz(float v) { return v <= 0.05f ? 0.0f : 50.0f * v * v * v * v; }

void showCoarse(TextOut& out, float v, const ParameterView&) { out.print("%.1f", coarseRatio(v)); }
void showFine(TextOut& out, float v, const ParameterView&) { out.print("%.4f", v * v / 2.0f); }
void showEnvelopeLevel(TextOut& out, float v, const ParameterView&) {
    if (v > 0.5f) return out.print("From %.0f %%", (1.0f - v) * 200.0f);
    out.print("To %.0f %%", 200.0f * v);
}
void showCarrier(TextOut& out, float v, const ParameterView&) {
    if (carrierHz(v) == 0.0f) return out.text("OFF");
    out.print("%.2f Hz", carrierHz(v));
}
constexpr Show showBreakpoint = showKey<1279>;

constexpr auto rows = std::to_array<ElementRow>({
    {.id = 17,
     .name = "Coarse",
     .initial = 0.26f,
     .apply = setCoarse,
     .show = showCoarse,
     .voices = true},
    {.id = 18, .name = "Fine", .apply = setFine, .show = showFine, .voices = true},
    {.id = 19,
     .name = "Thru Mix",
     .apply = [](auto& s, float v) { s.controls.fm.through = 3.0f * v; },
     .voices = true},
    {.id = 20, .name = "Depth", .initial = 1.0f, .apply = setDepth, .voices = true},
    {.id = 21, .name = "Vel Sens", .initial = 1.0f, .apply = setVelocity, .voices = true},
    {.id = 22, .name = "Lo Scale", .initial = 0.5f, .apply = setLowScale, .voices = true},
    {.id = 23,
     .name = "Breakpoint",
     .initial = 0.5f,
     .apply = setBreakpoint,
     .show = showBreakpoint,
     .voices = true},
    {.id = 24, .name = "Hi Scale", .initial = 0.5f, .apply = setHighScale, .voices = true},
    {.id = 25,
     .name = "Coarse",
     .initial = 0.5f,
     .apply = setCoarse,
     .show = showCoarse,
     .voices = true},
    {.id = 26, .name = "Fine", .apply = setFine, .show = showFine, .voices = true},
    {.id = 27,
     .name = "Keytrack",
     .initial = 1.0f,
     .apply = [](auto& s, float v) { s.controls.fm.keytrack = 1.0f - v; },
     .voices = true},
    {.id = 28, .name = "Depth", .initial = 1.0f, .apply = setDepth, .voices = true},
    {.id = 29, .name = "Vel Sens", .apply = setVelocity, .voices = true},
    {.id = 30, .name = "Lo Scale", .initial = 0.5f, .apply = setLowScale, .voices = true},
    {.id = 31,
     .name = "Breakpoint",
     .initial = 0.5f,
     .apply = setBreakpoint,
     .show = showBreakpoint,
     .voices = true},
    {.id = 32, .name = "Hi Scale", .initial = 0.5f, .apply = setHighScale, .voices = true},
    {.id = 33,
     .name = "Env Rate",
     .initial = 0.2f,
     .apply = setEnvelopeRate,
     .show = shown<showTime>,
     .voices = true},
    {.id = 34,
     .name = "Env Level",
     .apply = [](auto& s, float v) { s.controls.fm.envelopeLevel = 2.0f * v; },
     .show = showEnvelopeLevel,
     .voices = true},
    {.id = 35,
     .name = "LF Carrier",
     .apply = [](auto& s, float v) { s.controls.fm.carrierHz = carrierHz(v); },
     .show = showCarrier,
     .voices = true},
    {.id = 36, .name = "Vel->Decay", .initial = 0.5f},  // voices read the stored value
});
static_assert(inOrder(rows));

}  // namespace

std::span<const ElementRow> fmBlock() { return rows; }

}  // namespace stratovane
