// The universal system-exclusive messages that are understood.
#pragma once

#include <cstdint>
#include <string_view>

namespace stratovane {

struct SystemExclusive {
    enum class Kind : std::uint8_t {
        unknown,
        masterVolume,  // value: 0..16383
        generalMidiOn,
        generalMidiOff,
        generalMidi2On,
        masterFineTune,    // value: 0..16383, 8192 is none
        masterCoarseTune,  // value: 0..127, 64 is none
        otherParameter,    // of a global parameter control that controls nothing here
        reverbType,        // value of this and what follows: 0..127
        reverbTime,
        chorusType,
        chorusRate,
        chorusDepth,
        chorusFeedback,
        chorusToReverb,
    } kind = Kind::unknown;
    std::int32_t value = 0;
};

/// Reads a message from its first byte, 0xF0, on. One that has no end within `length` bytes, that
/// another status byte interrupts, or that ends before its last value, is unknown. Null and lengths
/// below 0 likewise. Any thread.
SystemExclusive readSystemExclusive(const std::uint8_t* dump, std::int32_t length);

/// What the status line says of a message; empty for an unknown one. Any thread.
std::string_view statusOf(SystemExclusive::Kind kind);

}  // namespace stratovane
