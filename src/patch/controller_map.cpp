#include "patch/controller_map.h"

#include <cstddef>
#include <span>

#include "patch/parameter_ids.h"

namespace stratovane {

namespace {

struct Assignment {
    int controller;
    int id;  // element * 256 + index
};

constexpr Assignment general[] = {
    {5, global::glideTime},
    {7, global::level},
    {9, global::mute},
    {10, global::pan},
    {16, global::knob1},
    {17, global::knob2},
    {18, global::knob3},
    {19, global::knob4},
    {65, global::glide},
    {69, global::arpeggiatorOn},
    {70, 126},  // the sound controllers drive the patch's macro destinations
    {71, 129},
    {72, 135},
    {73, 133},
    {74, 128},
    {75, 134},
    {76, 127},
    {77, 131},
    {78, 132},
    {79, 130},
    {80, global::knob5},
    {81, global::knob6},
    {91, 63},
    {92, 64},
    {93, 65},
    {94, 66},
};
constexpr Assignment ofType1[] = {
    {20, 0x115}, {21, 0x162}, {22, 0x121}, {23, 0x166}, {24, 0x11D}, {25, 0x11E},
    {26, 0x11F}, {27, 0x16A}, {28, 0x168}, {29, 0x123}, {30, 0x18B},
};
constexpr Assignment ofType2[] = {{70, global::pianoCharacter}};
constexpr Assignment ofType3[] = {
    // The nine drawbars, then the organ's switches.
    {12, 0x119}, {13, 0x11A}, {14, 0x11B}, {15, 0x11C}, {16, 0x11D}, {17, 0x11E}, {18, 0x11F},
    {19, 0x120}, {20, 0x121}, {31, 0x219}, {66, 0x115}, {70, 0x116}, {71, 0x117}, {72, 0x118},
};
constexpr Assignment ofType4[] = {{77, 0x1B0}, {78, 0x1AE}};

consteval ControllerMap map(std::span<const Assignment> own) {
    ControllerMap result{};
    result.fill(0xFFFF);
    for (const Assignment& a : general)
        result[static_cast<std::size_t>(a.controller)] = static_cast<std::uint16_t>(a.id);
    for (const Assignment& a : own)
        result[static_cast<std::size_t>(a.controller)] = static_cast<std::uint16_t>(a.id);
    return result;
}

constexpr ControllerMap maps[] = {map({}), map(ofType1), map(ofType2), map(ofType3), map(ofType4)};

}  // namespace

const ControllerMap& defaultControllerMap(int type) {
    return maps[type >= 1 && type <= 4 ? type : 0];
}

}  // namespace stratovane
