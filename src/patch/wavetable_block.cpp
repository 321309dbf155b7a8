// "Wavetable" elements: the table, and the oscillator that shapes or restarts it.
#include "patch/oscillator_rows.h"

namespace stratovane {

namespace {

using C = ElementControls;
using W = WavetableControls;

constexpr Choices<7> waves{
    7.9f, {"Saw", "Square", "Tri", "Saw+Tri", "Noise", "Tab x Nse", "Tab x Tri"}, "Tab x Tri"};

void setRatio(ElementScope& s, float) {
    s.controls.wavetable.ratio2 = tuningRatio(s.value(22), s.value(23));
}

constexpr auto rows = std::to_array<ElementRow>({
    {.id = 18,
     .name = "Bank",
     .apply = [](auto& s, float v) { s.controls.wavetable.bank = choice(v, 128.9f); },
     .show = showNothing,
     .layout = true,
     .loads = true},
    {.id = 19,
     .name = "Wave",
     .apply = [](auto& s, float v) { s.controls.wavetable.item = choice(v, 128.9f); },
     .show = showNothing,
     .layout = true,
     .loads = true},
    {.id = 21,
     .name = "Sync",
     .apply = flag<&C::wavetable, &W::sync>,
     .show = showSwitch<onOff>,
     .voices = true},
    {.id = 22,
     .name = "Semi",
     .initial = 0.5f,
     .apply = setRatio,
     .show = showCentred<24>,
     .voices = true},
    {.id = 23,
     .name = "Cent",
     .initial = 0.5f,
     .apply = setRatio,
     .show = showCent,
     .voices = true},
    {.id = 24,
     .name = "Wavetable Aliasing",
     .apply = [](auto& s, float v) { s.controls.wavetable.aliasing = aliasingBits(v); },
     .voices = true},
    {.id = 28,
     .name = "Osc2 Wave",
     .apply = [](auto& s, float v) { s.controls.wavetable.wave2 = listedWave(v, 7); },
     .show = showChoice<waves>,
     .voices = true},
    {.id = 29,
     .name = "Osc2 Mix",
     .apply = [](auto& s, float v) { s.controls.wavetable.mix2 = v + mixFloor; },
     .voices = true},
});
static_assert(inOrder(rows));

}  // namespace

std::span<const ElementRow> wavetableBlock() { return rows; }

}  // namespace stratovane
