// "Effect" elements: which effect, where its output goes, its twelve parameters.
#include "base/displays.h"
#include "effects/catalogue.h"
#include "patch/element_rows.h"
#include "patch/patch.h"

namespace stratovane {

namespace {

using C = ElementControls;

constexpr auto outs =
    choices(15.9f, "Off", "Split", "Out +0", "Out +1", "Out +2", "Out +3", "Out +4", "Out +5",
            "Out +6", "Out +7", "Out +8", "Out +9", "Out +10", "Out +11", "Out +12", "Out +13");

void setSend(ElementScope& s, float v) {
    s.controls.effect.sends[static_cast<std::size_t>(s.index - 21)] = 4.0f * v * v;
}

// Texts of the parameters are the effect's own; without one there is nothing to say.

const EffectType* typeOf(const ParameterView& view) {
    return effectType(choice(view.stored(elementIndex::item), 128.9f));
}
void showEffectName(TextOut& out, float v, const ParameterView&) {
    if (const EffectType* type = effectType(choice(v, 128.9f))) showEffectLabel(out, *type, -1);
}
void showParameterName(TextOut& out, const ParameterView& view) {
    if (const EffectType* type = typeOf(view))
        showEffectLabel(out, *type, view.index - elementIndex::firstEffectParameter);
}
void showParameter(TextOut& out, float v, const ParameterView& view) {
    const EffectType* type = typeOf(view);
    if (type == nullptr) return;
    EffectView values;
    values.sampleRate = static_cast<float>(view.patch.sampleRate());
    for (int i = 0; i < effectParameters; ++i)
        values.values[static_cast<std::size_t>(i)] =
            view.stored(elementIndex::firstEffectParameter + i);
    const int number = view.index - elementIndex::firstEffectParameter;
    values.values[static_cast<std::size_t>(number)] = v;
    showEffectValue(out, *type, number, values);
}
void setParameter(ElementScope& s, float v) {
    s.setEffectParameter(s.index - elementIndex::firstEffectParameter, v);
}

// In a send slot it is an output pair of the instrument, in the chain a way around the part.
void showAuxOut(TextOut& out, float v, const ParameterView& view) {
    if (view.element < firstSendSlot) return showChoice<outs>(out, v, view);
    const int pair = choice(v, 32.9f);
    if (pair == 0) return out.text("OFF");
    out.print("%d", std::min(pair, view.patch.outputPairs()));
}

constexpr auto listed = std::to_array<ElementRow>({
    {.id = 19,
     .name = "FX",
     .initial = 1.0f,
     .apply = [](auto& s, float v) { s.controls.effect.type = choice(v, 128.9f); },
     .show = showEffectName,
     .loads = true},
    {.id = 20,
     .name = "Aux Out",
     .apply =
         [](auto& s, float v) {
             s.controls.effect.auxOut = choice(v, 15.9f);
             s.controls.effect.pair = choice(v, 32.9f);
         },
     .show = showAuxOut},
    {.id = 21, .name = "FX Send 1", .apply = setSend, .show = shown<showElementLevel>},
    {.id = 22, .name = "FX Send 2", .apply = setSend, .show = shown<showElementLevel>},
    {.id = 23, .name = "FX Send 3", .apply = setSend, .show = shown<showElementLevel>},
    {.id = 24, .name = "FX Send 4", .apply = setSend, .show = shown<showElementLevel>},
});

consteval std::array<ElementRow, effectParameters> parameters() {
    std::array<ElementRow, effectParameters> rows{};
    for (int i = 0; i < effectParameters; ++i) {
        ElementRow& row = rows[static_cast<std::size_t>(i)];
        row.id = elementIndex::firstEffectParameter + i;
        row.apply = setParameter;
        row.show = showParameter;
        row.showName = showParameterName;
    }
    return rows;
}

constexpr auto rows = joined(listed, parameters());
static_assert(inOrder(rows));

}  // namespace

std::span<const ElementRow> effectBlock() { return rows; }

}  // namespace stratovane
