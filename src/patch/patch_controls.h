// What a patch's global parameters mean to the engine.
#pragma once

#include <array>
#include <cstdint>

#include "patch/element_controls.h"
#include "patch/zone_table.h"

namespace stratovane {

inline constexpr int macroDestinations = 15;

/// The patch's word on gliding; `byElement` leaves it to each element's mode.
enum class PatchGlide : std::int32_t { off, byElement, legato, on };

struct TuningControls {
    std::int32_t bank = 0, item = 128;  // 128: none
    std::int32_t root = 0;              // semitones from middle C, -12..12
};

/// Owner: the thread that plays the patch (before hand-over: its builder).
struct PatchControls {
    bool muted = false;
    float eco = 0.5f;
    PatchGlide glide = PatchGlide::byElement;
    ZoneTable keyGain{}, velocityGain{};
    std::int32_t transpose = 0;  // semitones, -36..36
    float finePitch = 0;         // patch and engine-wide fine tuning
    float monoPoly = 0.5f;
    std::int32_t voiceLimit = 32;  // 1..64
    float gain = 0;                // level² * trim² * 8
    float pan = 0.5f;
    std::int32_t output = 1;        // 1-based pair, 0 off; not yet limited to the pairs there are
    bool patchSends = false;        // own send effects instead of the master channel's
    std::array<float, 4> sends{};   // v²
    std::int32_t type = 0;          // 0..15
    std::int32_t redamper = 0;      // 0..127
    std::int32_t lfoRateFlags = 0;  // bit 0..2: LFO 1..3 follow the macro "LFO Rate"
    float pianoCharacter = 0;
    std::int32_t bendUp = 0, bendDown = 0;  // range codes, 0..15
    std::array<LfoControls, 2> lfo;
    std::array<TuningControls, 2> tuning;
    float tuning2Depth = 0;
    std::int32_t pianoVariant = 0;
    std::array<float, 6> knobs{};                        // positions, 0..1
    std::array<float, macroDestinations> macroBase{};    // B: -1..1
    std::array<float, macroDestinations> macroOffset{};  // O
};

}  // namespace stratovane
