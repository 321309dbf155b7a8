// LFO rates of the filters that run freely or follow the song.
#pragma once

#include <cmath>

#include "base/tempo_divisions.h"
#include "effects/blocks/curves.h"
#include "effects/effect_displays.h"

namespace stratovane {

/// What is over of `position` beats times `unitsPerBeat` beyond whole multiples of `cycle`; has the
/// sign of the position. In double: songs are long.
inline float songPhase(double position, double unitsPerBeat, double cycle) {
    return static_cast<float>(std::fmod(position * unitsPerBeat, cycle));
}

/// "1.00 Hz", or the division that v chooses.
inline void showSongLfoRate(TextOut& out, float v, const EffectView& view) {
    if (isSynced(view)) return out.text(tempoDivision(v).name);
    out.print("%.2f Hz", rateHz(v));
}

}  // namespace stratovane
