// The on-screen keyboard, its wheels, and panic.
#pragma once

#include "editor/editor_access.h"

namespace stratovane {

/// What is played also reaches the parts linked behind the part, and the host. Numbers that do not
/// exist do nothing; what finds no room in the ring is lost. Threads: any.
class KeyboardCommands {
  public:
    explicit KeyboardCommands(CommandRing& commands) : commands_{commands} {}

    /// Velocity 0 releases the key.
    void note(int part, int key, int velocity);
    /// Controller 2 is the pitch wheel here.
    void controller(int part, int number, int value);
    void modulationWheel(int part, int value) { controller(part, 1, value); }
    /// 0..127, 64 in the middle.
    void pitchWheel(int part, int value) { controller(part, 2, value); }
    /// Ends all notes of all parts.
    void panic();

  private:
    CommandRing& commands_;
};

}  // namespace stratovane
