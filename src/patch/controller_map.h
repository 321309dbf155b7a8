// What the 128 MIDI controllers drive in a fresh patch, and which of them can be assigned.
#pragma once

#include <array>
#include <cstdint>

namespace stratovane {

/// Parameter ids (element * 256 + index) by controller, 0xFFFF for none. `type` 0..15 is the patch
/// type; types without assignments of their own get the general ones. Any thread.
using ControllerMap = std::array<std::uint16_t, 128>;
const ControllerMap& defaultControllerMap(int type);

/// Whether a controller may drive a parameter: false for those that the engine interprets itself
/// (bank select, data entry, RPN and NRPN, channel modes) and outside 0..127. Any thread.
constexpr bool isAssignable(int controller) {
    switch (controller) {
        case 0:
        case 6:
        case 32:
        case 98:
        case 99:
        case 100:
        case 101:
        case 120:
        case 121:
        case 123:
        case 126:
        case 127:
            return false;
        default:
            return controller >= 0 && controller <= 127;
    }
}

}  // namespace stratovane
