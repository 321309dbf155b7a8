// The 2528 host parameters as 104 rows and two functions.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "base/units.h"

namespace stratovane {

/// Display of a host parameter; the host's texts are tighter than the patch's own ("50%").
enum class HostShow : std::uint8_t {
    percent,
    spacedPercent,
    signedPercent,
    decibels,
    pan,
    onOff,
    mute,
    sendMode,
    outputPair,
    element,  // the effect element's own display
};

/// What setting does beside storing the value.
enum class HostEffect : std::uint8_t { write, nothing, masterOrLink, mute };

struct HostRow {
    std::string_view name;  // a leading blank picks the prefix that ends without blanks of its own
    std::int16_t target = -1;  // parameter of the patch, or of the effect element; -1: held here
    HostShow show = HostShow::percent;
    HostEffect effect = HostEffect::write;
    float scale = 1, offset = 0;  // patch value = scale * host value + offset
};

inline constexpr int stripRows = 56, effectRows = 24, slots = 4;
inline constexpr int partRows = stripRows + slots * effectRows;          // 152
inline constexpr int masterFirst = parts * partRows;                     // 2432
inline constexpr int hostParameters = masterFirst + slots * effectRows;  // 2528

enum class HostBlock : std::uint8_t { strip, insert, master };

/// Where a host parameter lives: block, part (0 for the master), slot and row.
struct HostAddress {
    HostBlock block = HostBlock::strip;
    int part = 0, slot = 0, row = 0;
};

constexpr HostAddress decodeHostIndex(int index) {
    if (index >= masterFirst) {
        const int j = index - masterFirst;
        return {HostBlock::master, 0, j / effectRows, j % effectRows};
    }
    const int part = index / partRows, k = index % partRows;
    if (k < stripRows) return {HostBlock::strip, part, 0, k};
    return {HostBlock::insert, part, (k - stripRows) / effectRows, (k - stripRows) % effectRows};
}

constexpr int encodeHostIndex(const HostAddress& a) {
    switch (a.block) {
        case HostBlock::strip:
            return a.part * partRows + a.row;
        case HostBlock::insert:
            return a.part * partRows + stripRows + a.slot * effectRows + a.row;
        default:
            return masterFirst + a.slot * effectRows + a.row;
    }
}

static_assert([] {
    for (int i = 0; i < hostParameters; ++i)
        if (encodeHostIndex(decodeHostIndex(i)) != i) return false;
    return true;
}());

/// Rows that other code names.
namespace strip {
inline constexpr int link = 0, mute = 1, level = 2, pan = 3, output = 4, firstSend = 5,
                     firstKnob = 9, keyLow = 15, keyHigh = 16, keyFade = 17, velocityLow = 18,
                     velocityHigh = 19, velocityFade = 20, levelTrim = 26, polyphony = 23,
                     sendMode = 24, coarseTune = 21, fineTune = 22, lock = 25, bendUp = 27,
                     bendDown = 28, monoMode = 29, glideMode = 30, glideTime = 31, tuningBank = 32,
                     tuningScale = 33, arpeggiatorOn = 39, arpeggiatorRate = 45, named = 48;
}  // namespace strip

/// What a part's mix, tuning and ranges are when General MIDI starts afresh.
struct PlainMix {
    int row;
    float value;
};
inline constexpr PlainMix plainMix[] = {
    {strip::output, 0.05f},    {strip::pan, 0.5f},         {strip::keyLow, 0.0f},
    {strip::keyHigh, 1.0f},    {strip::velocityLow, 0.0f}, {strip::velocityHigh, 1.0f},
    {strip::coarseTune, 0.5f}, {strip::fineTune, 0.5f},    {strip::polyphony, 0.5f},
};

/// The table row of a parameter.
const HostRow& hostRow(const HostAddress& address);

/// The host parameter that shows a parameter of a part's patch (element 0 or 65..68) or, with
/// `part` 16, of the master channel; -1 when none does.
int hostIndexOf(int part, int element, int index);

/// What a host parameter is before anything sets it.
float hostDefault(int index);

}  // namespace stratovane
