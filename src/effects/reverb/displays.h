// Display shapes of the reverbs; pass them in an effect's rows.
#pragma once

#include "effects/effect_type.h"

namespace stratovane {

/// "0.50 s".."10.00 s", about the time to fall by 60 dB.
inline void showDecay(TextOut& out, float v, const EffectView&) {
    out.print("%.2f s", v * v * v * 9.5f + 0.5f);
}
/// "0 ms".."400 ms".
inline void showPreDelay(TextOut& out, float v, const EffectView&) {
    out.print("%.0f ms", v * v * 400.0f);
}
/// "0 ms".."250 ms".
inline void showReflectionTime(TextOut& out, float v, const EffectView&) {
    out.print("%.0f ms", v * v * 250.0f);
}

}  // namespace stratovane
