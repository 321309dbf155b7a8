// What host and plug-in exchange first: the effect record and the two request functions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stratovane {

struct EffectRecord;

/// A code of four characters, the first in the most significant byte.
constexpr std::int32_t fourCharacters(const char (&c)[5]) {
    return static_cast<std::int32_t>(
        static_cast<std::uint32_t>(static_cast<unsigned char>(c[0])) << 24 |
        static_cast<std::uint32_t>(static_cast<unsigned char>(c[1])) << 16 |
        static_cast<std::uint32_t>(static_cast<unsigned char>(c[2])) << 8 |
        static_cast<std::uint32_t>(static_cast<unsigned char>(c[3])));
}

// All through the platform's C convention. `value` carries a pointer where a request says so.
using RequestFunction = std::intptr_t (*)(EffectRecord*, std::int32_t opcode, std::int32_t index,
                                          std::intptr_t value, void* pointer, float number);
using HostCallback = RequestFunction;
using RenderFunction = void (*)(EffectRecord*, float** inputs, float** outputs,
                                std::int32_t frames);
using SetParameterFunction = void (*)(EffectRecord*, std::int32_t index, float value);
using GetParameterFunction = float (*)(EffectRecord*, std::int32_t index);

enum EffectFlags : std::int32_t {
    hasEditor = 0x1,
    canRenderReplacing = 0x10,
    stateIsChunk = 0x20,
    isInstrument = 0x100,
};

/// The plug-in's face, shared with the host and laid out exactly so.
struct EffectRecord {
    std::int32_t magic = fourCharacters("MrxP");
    RequestFunction request = nullptr;
    RenderFunction process = nullptr;
    SetParameterFunction setParameter = nullptr;
    GetParameterFunction getParameter = nullptr;
    std::int32_t programCount = 0;
    std::int32_t parameterCount = 0;
    std::int32_t inputCount = 0;
    std::int32_t outputCount = 0;
    std::int32_t flags = 0;
    std::int32_t reserved1 = 0;
    std::int32_t reserved2 = 0;
    std::int32_t initialDelay = 0;
    std::int32_t realTimeQuality = 0;
    std::int32_t offlineQuality = 0;
    float inputOutputRatio = 1.0f;
    void* object = nullptr;
    void* userPointer = nullptr;
    std::int32_t uniqueId = 0;
    std::int32_t version = 0;
    RenderFunction processReplacing = nullptr;
    char future[60] = {};
};

static_assert(sizeof(void*) != 4 ||
              (sizeof(EffectRecord) == 144 && offsetof(EffectRecord, flags) == 36 &&
               offsetof(EffectRecord, uniqueId) == 72 &&
               offsetof(EffectRecord, processReplacing) == 80));
static_assert(sizeof(void*) != 8 ||
              (sizeof(EffectRecord) == 184 && offsetof(EffectRecord, request) == 8 &&
               offsetof(EffectRecord, programCount) == 40 && offsetof(EffectRecord, flags) == 56 &&
               offsetof(EffectRecord, object) == 88 && offsetof(EffectRecord, uniqueId) == 104 &&
               offsetof(EffectRecord, processReplacing) == 112));

}  // namespace stratovane
