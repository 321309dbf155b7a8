// "Analog" elements: two shape oscillators, a third with its sub-octave, noise, filter character.
#include <cmath>

#include "patch/oscillator_rows.h"

namespace stratovane {

namespace {

using C = ElementControls;
using A = AnalogControls;
constexpr auto analog = &C::analog;

constexpr SwitchTexts filterTexts{"Analog", "Digital"};
constexpr SwitchTexts phaseTexts{"Inverted", "Normal"};
constexpr Choices<7> shapes{
    7.9f,
    {"Saw Sync", "Sqr Sync", "Sqr PWM", "Saw Pitch", "Sqr Pitch", "Saw Unison", "Wavetable"},
    "Wavetable"};
constexpr Choices<3> plainWaves{7.9f, {"Saw", "Square", "Tri"}, "Tri"};

void setMix1(ElementScope& s, float) {
    const float mix = s.value(21);
    const float oscillatorLevel = isOn(s.value(18)) ? -1.0f : 1.0f;
    s.controls.analog.mix1 = (mix * mix + mixFloor) * oscillatorLevel;
}
// A one-pole highpass at e^(7v + 3) / 2 pi Hz; at very low rates it would leak more than all.
void setLeak(ElementScope& s, float v) {
    const double exponent = 7.0 * static_cast<double>(v) + 3.0 - std::log(s.rate());
    s.controls.analog.leak = std::max(0.0f, static_cast<float>(-std::expm1(exponent)));
}
void setRatio1(ElementScope& s, float) {
    s.controls.analog.ratio1 = tuningRatio(s.value(22), s.value(23));
}
void setRatio2(ElementScope& s, float) {
    s.controls.analog.ratio2 = tuningRatio(s.value(25), s.value(26));
}

void showPulseWidth(TextOut& out, float v, const ParameterView&) {
    out.print("%.1f %%", 10.0f * v + 0.1f);
}

constexpr auto rows =
    std::to_array<ElementRow>({
        {.id = 17,
         .name = "Filter",
         .initial = 1.0f,
         .apply = flag<analog, &A::ladder>,
         .show = showSwitch<filterTexts>,
         .voices = true},
        {.id = 18,
         .name = "Osc1 Phase",
         .apply = setMix1,
         .show = showSwitch<phaseTexts>,
         .voices = true},
        {.id = 19,
         .name = "Wave",
         .apply = [](auto& s, float v) { s.controls.analog.wave = listedWave(v, 7); },
         .show = showChoice<shapes>,
         .voices = true},
        {.id = 20, .name = "Highpass Filter", .initial = 0.1f, .apply = setLeak, .voices = true},
        {.id = 21, .name = "Osc1 Mix", .initial = 1.0f, .apply = setMix1, .voices = true},
        {.id = 22,
         .name = "Semi",
         .initial = 0.5f,
         .apply = setRatio1,
         .show = showCentred<24>,
         .voices = true},
        {.id = 23,
         .name = "Cent",
         .initial = 0.5f,
         .apply = setRatio1,
         .show = showCent,
         .voices = true},
        {.id = 24,
         .name = "Minimum Pulse Width",
         .initial = 0.1f,
         .apply = [](auto& s, float v) { s.controls.analog.minimumPulseWidth = 0.1f * v + 0.001f; },
         .show = showPulseWidth,
         .voices = true},
        {.id = 25,
         .name = "Osc2 Semi",
         .initial = 0.5f,
         .apply = setRatio2,
         .show = showCentred<24>,
         .voices = true},
        {.id = 26,
         .name = "Osc2 Cent",
         .initial = 0.5f,
         .apply = setRatio2,
         .show = showCent,
         .voices = true},
        {.id = 27,
         .name = "Osc2 Wave",
         .apply = [](auto& s, float v) { s.controls.analog.wave2 = listedWave(v, 7); },
         .show = showChoice<shapes>,
         .voices = true},
        {.id = 28,
         .name = "Osc3 Wave",
         .apply = [](auto& s, float v) { s.controls.analog.wave3 = listedWave(v, 3); },
         .show = showChoice<plainWaves>,
         .voices = true},
        {.id = 29,
         .name = "Osc3 Mix",
         .apply = [](auto& s, float v) { s.controls.analog.mix3 = v + mixFloor; },
         .voices = true},
        {.id = 30,
         .name = "Sub Osc",
         .apply = [](auto& s, float v) { s.controls.analog.sub = 0.7079458f * v * v + mixFloor; },
         .voices = true},
        {.id = 31,
         .name = "Noise",
         .apply = [](auto& s, float v) { s.controls.analog.noise = v * v; },
         .voices = true},
        {.id = 32,
         .name = "Osc3 Filter Mod",
         .apply = [](auto& s, float v) { s.controls.analog.filterMod = 0.68f * v * v; },
         .voices = true},
        {.id = 33,
         .name = "Osc2 Mix",
         .apply = [](auto& s, float v) { s.controls.analog.mix2 = v + mixFloor; },
         .voices = true},
        // The table of the wave "Wavetable", always of bank 0.
        {.id = 34,
         .name = "Wavetable",
         .apply =
             [](auto& s, float v) {
                 s.controls.wavetable.bank = 0;
                 s.controls.wavetable.item = choice(v, 128.9f);
             },
         .show = showNothing,
         .layout = true,
         .loads = true},
        {.id = 35,
         .name = "Filt Dist",
         .apply = [](auto& s, float v) { s.controls.analog.filterDistortion = v / 2.0f; },
         .voices = true},
        {.id = 36,
         .name = "Wavetable Aliasing",
         .apply = [](auto& s, float v) { s.controls.analog.aliasing = aliasingBits(v); },
         .voices = true},
        {.id = 37,
         .name = "Osc3 Mute",
         .apply = flag<analog, &A::mute3>,
         .show = showSwitch<onOff>,
         .voices = true},
    });
static_assert(inOrder(rows));

}  // namespace

std::span<const ElementRow> analogBlock() { return rows; }

}  // namespace stratovane
