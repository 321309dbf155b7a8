// The 21 note lengths that arpeggiator, LFOs and effects synchronise to.
#pragma once

#include <array>
#include <string_view>

#include "base/units.h"

namespace stratovane {

struct TempoDivision {
    std::string_view name;
    float perBeat;  // divisions per quarter note; one lasts 1 / perBeat beats
};

inline constexpr std::array<TempoDivision, 21> tempoDivisions{{
    {"8/4", 0.125f},     {"7/4", 0.142857f},    {"6/4", 0.166667f},    {"5/4", 0.2f},
    {"4/4", 0.25f},      {"3/4", 0.333333f},    {"4/4T", 0.375f},      {"2/4", 0.5f},
    {"1/4D", 0.666667f}, {"1/2T", 0.75f},       {"1/4", 1.0f},         {"1/8D", 1.333333f},
    {"1/4T", 1.5f},      {"1/8", 2.0f},         {"1/16D", 2.6666667f}, {"1/8T", 3.0f},
    {"1/16", 4.0f},      {"1/32D", 5.3333335f}, {"1/16T", 6.0f},       {"1/32", 8.0f},
    {"1/64", 16.0f},
}};

/// The division that a normalised value chooses (0..1, values outside go to an end).
constexpr const TempoDivision& tempoDivision(float v) {
    const int index = choice(v, 20.9f);
    return tempoDivisions[static_cast<std::size_t>(index < 0 ? 0 : index > 20 ? 20 : index)];
}

}  // namespace stratovane
