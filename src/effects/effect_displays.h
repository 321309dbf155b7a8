// Display shapes that several effects share; pass them in an effect's rows.
#pragma once

#include "effects/effect_type.h"

namespace stratovane {

void showEffectPercent(TextOut& out, float v, const EffectView& view);    ///< "50 %"
void showInvertedPercent(TextOut& out, float v, const EffectView& view);  ///< (1 - v) * 100
void showEffectSwitch(TextOut& out, float v, const EffectView& view);     ///< "ON", "OFF"
void showEffectRate(TextOut& out, float v, const EffectView& view);  ///< "2.00 s" .. "20.00 Hz"
/// "%+.1f dB" of v * span - span / 2: spans 24 and 40 are used.
void showDecibels24(TextOut& out, float v, const EffectView& view);
void showDecibels40(TextOut& out, float v, const EffectView& view);
/// The division that 1 - v chooses.
void showEffectDivision(TextOut& out, float v, const EffectView& view);
/// Whether parameter 1, "Sync", is on.
bool isSynced(const EffectView& view);

}  // namespace stratovane
