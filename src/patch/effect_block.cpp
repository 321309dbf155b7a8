// "Effect" elements: which effect, where its output goes, its twelve parameters.
#include "base/displays.h"
#include "patch/element_rows.h"

namespace stratovane {

namespace {

using C = ElementControls;

constexpr auto outs =
    choices(15.9f, "Off", "Split", "Out +0", "Out +1", "Out +2", "Out +3", "Out +4", "Out +5",
            "Out +6", "Out +7", "Out +8", "Out +9", "Out +10", "Out +11", "Out +12", "Out +13");

void setSend(ElementScope& s, float v) {
    s.controls.effect.sends[static_cast<std::size_t>(s.index - 21)] = 4.0f * v * v;
}

constexpr auto rows = std::to_array<ElementRow>({
    {.id = 19,
     .name = "FX",
     .initial = 1.0f,
     .apply = [](auto& s, float v) { s.controls.effect.type = choice(v, 128.9f); },
     .show = showNothing,
     .loads = true},
    {.id = 20,
     .name = "Aux Out",
     .apply = [](auto& s, float v) { s.controls.effect.auxOut = choice(v, 15.9f); },
     .show = showChoice<outs>},
    {.id = 21, .name = "FX Send 1", .apply = setSend, .show = shown<showElementLevel>},
    {.id = 22, .name = "FX Send 2", .apply = setSend, .show = shown<showElementLevel>},
    {.id = 23, .name = "FX Send 3", .apply = setSend, .show = shown<showElementLevel>},
    {.id = 24, .name = "FX Send 4", .apply = setSend, .show = shown<showElementLevel>},
    // Names and displays of these belong to the effect; without one there is nothing to say.
    {.id = 25, .show = showNothing},
    {.id = 26, .show = showNothing},
    {.id = 27, .show = showNothing},
    {.id = 28, .show = showNothing},
    {.id = 29, .show = showNothing},
    {.id = 30, .show = showNothing},
    {.id = 31, .show = showNothing},
    {.id = 32, .show = showNothing},
    {.id = 33, .show = showNothing},
    {.id = 34, .show = showNothing},
    {.id = 35, .show = showNothing},
    {.id = 36, .show = showNothing},
});
static_assert(inOrder(rows));

}  // namespace

std::span<const ElementRow> effectBlock() { return rows; }

}  // namespace stratovane
