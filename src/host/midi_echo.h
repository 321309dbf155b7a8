// What the editor plays, told to the host.
#pragma once

#include <array>
#include <cstdint>

#include "engine/command_ring.h"
#include "mrx/events.h"

namespace stratovane {

/// A list of up to 32 MIDI events, in the layout the host reads. Audio thread.
class MidiEcho {
  public:
    static constexpr int capacity = 32;

    MidiEcho() {
        for (std::size_t i = 0; i < events_.size(); ++i) list_.pointers[i] = &events_[i];
    }
    MidiEcho(const MidiEcho&) = delete;
    MidiEcho& operator=(const MidiEcho&) = delete;

    bool full() const { return list_.count == capacity; }
    void clear() { list_.count = 0; }
    void add(const Command& command) {
        constexpr int wheel = 2;
        std::uint8_t(&bytes)[4] = events_[static_cast<std::size_t>(list_.count++)].bytes;
        const std::uint8_t d2 = command.data2;
        if (command.isNote()) {
            set(bytes, d2 != 0 ? 0x90 : 0x80, command, command.data1, d2);
        } else if (command.data1 == wheel) {
            set(bytes, 0xE0, command, d2 != 0 ? std::uint8_t{127} : std::uint8_t{0}, d2);
        } else {
            set(bytes, 0xB0, command, command.data1, d2);
        }
    }
    bool empty() const { return list_.count == 0; }
    void* list() { return &list_; }

  private:
    struct List {
        std::int32_t count = 0;
        std::int32_t reserved = 0;
        std::array<MidiEvent*, capacity> pointers{};
    };
    static void set(std::uint8_t (&bytes)[4], int status, const Command& command, std::uint8_t d1,
                    std::uint8_t d2) {
        bytes[0] = static_cast<std::uint8_t>(status | command.part);
        bytes[1] = d1;
        bytes[2] = d2;
    }
    std::array<MidiEvent, capacity> events_{};
    List list_;
};

}  // namespace stratovane
