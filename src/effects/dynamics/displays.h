// Displays that several units of this family share.
#pragma once

#include <string_view>

#include "base/displays.h"
#include "effects/effect_type.h"

namespace stratovane::dynamics {

/// Decibels from `low` at 0 to `low + span` at 1.
template <int span, int low>
void showDecibels(TextOut& out, float v, const EffectView&) {
    out.print("%+.1f dB", v * static_cast<float>(span) + static_cast<float>(low));
}

/// -100..+100 %.
inline void showSigned(TextOut& out, float v, const EffectView&) { showSignedPercent(out, v); }

inline void showChannels(TextOut& out, float v, const EffectView&) {
    out.text(v <= 0.5f ? "Mono" : "Stereo");
}

}  // namespace stratovane::dynamics
