// "Drawbar" elements: tone-wheel set, percussion, nine drawbars, key click.
#include <cstddef>

#include "patch/element_rows.h"

namespace stratovane {

namespace {

using C = ElementControls;
using D = DrawbarControls;
constexpr auto drawbar = &C::drawbar;

constexpr SwitchTexts percussionTexts{"On", "Off"};
constexpr SwitchTexts levelTexts{"Loud", "Soft"};
constexpr SwitchTexts decayTexts{"Fast", "Slow"};
constexpr SwitchTexts harmonicTexts{"3rd", "2nd"};
constexpr auto triggers = choices(3.9f, "Normal", "+ Vel", "Mono", "Poly");

void setBar(ElementScope& s, float v) {
    s.controls.drawbar.bars[static_cast<std::size_t>(s.index - 25)] = choice(v, 8.9f);
}
constexpr Show showBar = showNumber<89>;

constexpr auto rows = std::to_array<ElementRow>({
    {.id = 18,
     .apply = [](auto& s, float v) { s.controls.drawbar.bank = choice(v, 128.9f); },
     .voices = true,
     .layout = true,
     .loads = true},
    {.id = 19,
     .apply = [](auto& s, float v) { s.controls.drawbar.set = choice(v, 128.9f); },
     .voices = true,
     .layout = true,
     .loads = true},
    {.id = 20,
     .name = "Perc Trig",
     .apply = [](auto& s, float v) { s.controls.drawbar.percussionTrigger = choice(v, 3.9f); },
     .show = showChoice<triggers>},
    {.id = 21,
     .name = "Percussion",
     .apply = flag<drawbar, &D::percussion>,
     .show = showSwitch<percussionTexts>},
    {.id = 22,
     .name = "Perc Level",
     .apply = flag<drawbar, &D::loud>,
     .show = showSwitch<levelTexts>},
    {.id = 23,
     .name = "Perc Decay",
     .apply = flag<drawbar, &D::fast>,
     .show = showSwitch<decayTexts>},
    {.id = 24,
     .name = "Perc Harm",
     .apply = flag<drawbar, &D::third>,
     .show = showSwitch<harmonicTexts>},
    {.id = 25, .name = "16    ", .apply = setBar, .show = showBar, .voices = true},
    {.id = 26, .name = "5 1/3", .apply = setBar, .show = showBar, .voices = true},
    {.id = 27, .name = "8     ", .initial = 1.0f, .apply = setBar, .show = showBar, .voices = true},
    {.id = 28, .name = "4     ", .apply = setBar, .show = showBar, .voices = true},
    {.id = 29, .name = "2 2/3", .apply = setBar, .show = showBar, .voices = true},
    {.id = 30, .name = "2     ", .apply = setBar, .show = showBar, .voices = true},
    {.id = 31, .name = "1 3/5", .apply = setBar, .show = showBar, .voices = true},
    {.id = 32, .name = "1 1/3", .apply = setBar, .show = showBar, .voices = true},
    {.id = 33, .name = "1     ", .apply = setBar, .show = showBar, .voices = true},
    {.id = 34,
     .name = "Key Click",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.drawbar.clickLevel = 6.0f * v * v; },
     .voices = true},
    {.id = 35,
     .name = "Click Length",
     .initial = 0.5f,
     .apply =
         [](auto& s, float v) {
             s.controls.drawbar.clickSamples =
                 (0.00013f * v + 0.00003f) * static_cast<float>(s.rate());
         },
     .voices = true},
    {.id = 36,
     .name = "Off Click",
     .initial = 0.5f,
     .apply = raw<drawbar, &D::offClick>,
     .voices = true},
});
static_assert(inOrder(rows));

}  // namespace

std::span<const ElementRow> drawbarBlock() { return rows; }

}  // namespace stratovane
