// The patch's six knobs: where their settings are kept.
#pragma once

#include <array>

#include "patch/parameter_ids.h"

namespace stratovane {

struct MacroKnob {
    int position, destination, offset, range;  // global parameters
};

inline constexpr std::array<MacroKnob, 6> macroKnobs{{
    {global::knob1, 112, 113, 114},
    {global::knob2, 115, 116, 117},
    {global::knob3, 118, 119, 120},
    {global::knob4, 138, 139, 140},
    {global::knob5, 141, 142, 143},
    {global::knob6, 123, 124, 125},
}};

/// The destination that has no element parameter: it turns a rotary speaker.
inline constexpr int rotaryMacro = 12;

}  // namespace stratovane
