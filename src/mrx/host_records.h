// Records that the host hands over to be filled.
#pragma once

#include <cstdint>

namespace stratovane {

struct OutputProperties {
    enum Flags : std::int32_t { active = 1, stereo = 2, usesArrangement = 4 };
    enum Arrangement : std::int32_t { mono = 0, stereoPair = 1, quad = 11 };
    char label[64];
    std::int32_t flags;
    std::int32_t arrangement;
    char shortLabel[8];
    char reserved[48];
};
static_assert(sizeof(OutputProperties) == 128);

struct MidiProgramName {
    std::int32_t index;
    char name[64];
    std::uint8_t program;
    std::uint8_t bankMsb;
    std::uint8_t bankLsb;
    std::uint8_t reserved;
    std::int32_t parentCategory;
    std::int32_t flags;
};
static_assert(sizeof(MidiProgramName) == 80);

struct MidiProgramCategory {
    std::int32_t index;
    char name[64];
    std::int32_t parentCategory;
    std::int32_t flags;
};
static_assert(sizeof(MidiProgramCategory) == 76);

}  // namespace stratovane
