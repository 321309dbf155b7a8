// The filter of a new note, as every type but "Analog" starts it.
#pragma once

#include "voice/filter/voice_filter.h"

namespace stratovane {

/// From this resonance on, velocity included, the filter rings by itself.
inline constexpr float oscillatingResonance = 0.98f;

/// The digital filter with states as new. `velocity` is normalised. Audio thread.
inline void startDigitalFilter(VoiceFilter& filter, const ElementControls& controls,
                               float velocity) {
    const float resonance = controls.resonance + velocity * controls.velocityToResonance;
    filter.start(FilterCore::digital, controls.filterMode, resonance >= oscillatingResonance);
}

}  // namespace stratovane
