#include "effects/effect_displays.h"

#include <cmath>

#include "base/displays.h"
#include "base/tempo_divisions.h"
#include "base/units.h"

namespace stratovane {

void showEffectPercent(TextOut& out, float v, const EffectView&) { showPercent(out, v); }

void showInvertedPercent(TextOut& out, float v, const EffectView&) { showPercent(out, 1.0f - v); }

void showEffectSwitch(TextOut& out, float v, const EffectView&) {
    out.text(isOn(v) ? "ON" : "OFF");
}

void showEffectRate(TextOut& out, float v, const EffectView&) {
    constexpr float span = 5.9914646f;  // ln 400
    if (v >= 0.5f) return out.print("%.2f Hz", std::exp((v - 0.5f) * span));
    out.print("%.2f s", std::exp((0.5f - v) * span));
}

void showDecibels24(TextOut& out, float v, const EffectView&) {
    out.print("%+.1f dB", v * 24.0f - 12.0f);
}

void showDecibels40(TextOut& out, float v, const EffectView&) {
    out.print("%+.1f dB", v * 40.0f - 20.0f);
}

void showEffectDivision(TextOut& out, float v, const EffectView&) {
    out.text(tempoDivision(1.0f - v).name);
}

bool isSynced(const EffectView& view) { return isOn(view.values[1]); }

}  // namespace stratovane
