// Time-stamped events and musical time as host and plug-in exchange them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stratovane {

/// What every event begins with.
struct Event {
    static constexpr std::int32_t midi = 1, systemExclusive = 6;
    std::int32_t type = 0;
    std::int32_t byteSize = 0;
    std::int32_t frame = 0;  // within the block
};

struct MidiEvent {
    Event head{Event::midi, 24, 0};
    std::int32_t flags = 0;
    std::int32_t noteLength = 0;
    std::int32_t noteOffset = 0;
    std::uint8_t bytes[4] = {};  // status with channel, two data bytes, padding
    std::int8_t detuneCents = 0;
    std::uint8_t noteOffVelocity = 0;
    std::uint8_t reserved[2] = {};
};
static_assert(sizeof(MidiEvent) == 32 && offsetof(MidiEvent, bytes) == 24 &&
              offsetof(MidiEvent, detuneCents) == 28);

struct SystemExclusiveEvent {
    Event head{Event::systemExclusive, static_cast<std::int32_t>(sizeof(SystemExclusiveEvent)), 0};
    std::int32_t flags = 0;
    std::int32_t dumpLength = 0;
    std::int32_t reserved1 = 0;
    const std::uint8_t* dump = nullptr;  // from 0xF0 on
    std::intptr_t reserved2 = 0;
};
static_assert(offsetof(SystemExclusiveEvent, dump) == 24);

/// A list of events; `events` continues for `count` pointers.
struct EventList {
    std::int32_t count = 0;
    std::int32_t reserved = 0;
    Event* events[2] = {};
};
static_assert(offsetof(EventList, events) == 8);

/// The host's answer to HostRequest::getTime (the callback returns its address, or 0).
struct TimeInfo {
    enum Flags : std::int32_t {
        playing = 0x2,
        positionValid = 0x200,
        tempoValid = 0x400,
        barStartValid = 0x800,
        signatureValid = 0x2000,
    };
    static constexpr std::int32_t wanted = 0x2E00;
    double musicalPosition = 0;  // quarter notes
    double tempo = 0;            // quarter notes a minute
    double barStart = 0;         // quarter notes
    std::int32_t timeSignatureNumerator = 0;
    std::int32_t timeSignatureDenominator = 0;
    std::int32_t flags = 0;
    std::int32_t reserved = 0;
};

}  // namespace stratovane
