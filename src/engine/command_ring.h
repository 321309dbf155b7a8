// Notes and controllers from the editor and the host's parameters to the audio thread.
#pragma once

#include <cstdint>

#include "base/ring.h"
#include "base/shared.h"

namespace stratovane {

/// How a command reaches the parts: along part links or its part alone.
enum class CommandKind : std::uint32_t { linkedNote, linkedController, note, controller };

struct Command {
    std::uint8_t part = 0;
    CommandKind kind = CommandKind::note;
    std::uint8_t data1 = 0, data2 = 0;
    constexpr bool isNote() const {
        return kind == CommandKind::linkedNote || kind == CommandKind::note;
    }
    constexpr bool isLinked() const {
        return kind == CommandKind::linkedNote || kind == CommandKind::linkedController;
    }
};

/// Any thread pushes, the audio thread drains. "All sound off" has a bit of its own per part, so
/// that a full ring loses none.
class CommandRing {
  public:
    static constexpr std::uint8_t allSoundOff = 120;

    /// What does not fit is dropped. Any thread.
    void push(CommandKind kind, int part, int data1, int data2) {
        if (data1 == allSoundOff && kind == CommandKind::linkedController)
            return linkedOff_.set(1u << part);
        if (data1 == allSoundOff && kind == CommandKind::controller) return off_.set(1u << part);
        commands_.push(pack(kind, part, data1, data2));
    }
    /// Ends all notes of all parts and the retiring patches with them. Any thread.
    void panic() {
        off_.set(0xFFFF);
        panic_.set(1);
    }

    bool pop(Command& command) {
        std::uint32_t word = 0;
        if (!commands_.pop(word)) return false;
        command = {
            static_cast<std::uint8_t>(word >> 24 & 15), static_cast<CommandKind>(word >> 16 & 3),
            static_cast<std::uint8_t>(word >> 8 & 127), static_cast<std::uint8_t>(word & 127)};
        return true;
    }
    std::uint32_t takeLinkedOff() { return linkedOff_.take(); }
    std::uint32_t takeOff() { return off_.take(); }
    bool takePanic() { return panic_.take() != 0; }
    /// Forgets what waits. The draining thread.
    void drop() {
        std::uint32_t word = 0;
        while (commands_.pop(word)) {
        }
        linkedOff_.take();
        off_.take();
        panic_.take();
    }

  private:
    static std::uint32_t pack(CommandKind kind, int part, int data1, int data2) {
        return static_cast<std::uint32_t>(part & 15) << 24 |
               static_cast<std::uint32_t>(kind) << 16 |
               static_cast<std::uint32_t>(data1 & 127) << 8 |
               static_cast<std::uint32_t>(data2 & 127);
    }
    Ring<std::uint32_t, 32> commands_;
    SharedBits linkedOff_, off_, panic_;
};

}  // namespace stratovane
