#include "patch/parameter_row.h"

#include "base/tempo_divisions.h"
#include "patch/element_controls.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

float ParameterView::stored(int other) const { return patch.get(element, other); }
float ParameterView::storedInPatch(int other) const { return patch.get(0, other); }
ElementType ParameterView::type() const {
    return static_cast<ElementType>(choice(stored(elementIndex::type), 15.9f));
}

namespace {
constexpr Choices<10> lfoWaves{15.9f,
                               {"OFF", "Constant", "Sine", "Triangle", "Sawtooth", "Square",
                                "S+H Random", "S+H Alternate", "Random Drift", "Slow Drift"},
                               "OFF"};
constexpr auto lfoSyncs =
    choices(4.9f, "Off", "First Note", "Each Note", "Tempo + Note", "Tempo + Beat");
}  // namespace

void showLfoWave(TextOut& out, float v, const ParameterView&) { out.text(lfoWaves.of(v)); }
void showLfoSync(TextOut& out, float v, const ParameterView&) { out.text(lfoSyncs.of(v)); }

void showLfoRateText(TextOut& out, float v, const ParameterView& view) {
    const auto sync = static_cast<LfoSync>(choice(view.stored(view.index - 1), 4.9f));
    if (sync < LfoSync::tempoAndNote) return showLfoRate(out, v);
    out.text(tempoDivision(v).name);
}

void showLfoPhase(TextOut& out, float v, const ParameterView&) {
    if (v > 0.9f) return out.text("Random");
    out.print("%.0f\xB0", 400.0f * v);
}

}  // namespace stratovane
