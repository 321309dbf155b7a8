// What the controllers of a part stand at, for a patch that a program change is still loading.
#pragma once

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdint>

#include "voice/part_engine.h"

namespace stratovane {

/// Notes the messages that are handed to a part, from the last program change on: what was sent
/// before gives way to the new patch, what was sent behind must reach it though it is not there
/// yet. In General MIDI mode nothing is forgotten: volume, pan and sends belong to the channel.
/// Audio thread.
class ControllerMemory {
  public:
    void forget() { noted_.reset(); }
    void note(const MidiBytes& bytes) {
        switch (bytes[0] & 0xF0) {
            case controller:
                if (bytes[1] == allSoundOff || bytes[1] == allNotesOff) return;
                if (bytes[1] == resetControllers) return dropWhatResets();
                if (bytes[1] < 128) keep(bytes[1], bytes);
                return;
            case pressure:
                return keep(pressureSlot, bytes);
            case bend:
                return keep(bendSlot, bytes);
            default:
                return;
        }
    }
    void applyTo(PartEngine& part) const {
        for (std::size_t slot = 0; slot < slots; ++slot)
            if (noted_[slot]) part.handleEvent(messages_[slot], EventSource::host);
    }

  private:
    static constexpr std::uint8_t controller = 0xB0, pressure = 0xD0, bend = 0xE0;
    static constexpr std::uint8_t allSoundOff = 120, resetControllers = 121, allNotesOff = 123;
    static constexpr std::size_t pressureSlot = 128, bendSlot = 129, slots = 130;

    void keep(std::size_t slot, const MidiBytes& bytes) {
        messages_[slot] = bytes;
        noted_.set(slot);
    }
    void dropWhatResets() {
        for (const std::size_t slot : {std::size_t{1}, std::size_t{11}, std::size_t{64},
                                       std::size_t{67}, std::size_t{68}, pressureSlot, bendSlot})
            noted_.reset(slot);
    }

    std::array<MidiBytes, slots> messages_{};
    std::bitset<slots> noted_;
};

}  // namespace stratovane
