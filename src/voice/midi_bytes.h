// A channel message as a part receives it.
#pragma once

#include <array>
#include <cstdint>

namespace stratovane {

/// A channel message: status without channel, two data bytes and a note's detune in cents (signed).
using MidiBytes = std::array<std::uint8_t, 4>;

enum class EventSource : std::uint8_t {
    host,
    arpeggiator,
    taken,  // the player's key that the arpeggiator took: for elements marked "No Arp" alone
};

}  // namespace stratovane
