#include "editor/keyboard_commands.h"

#include "engine/command_ring.h"

namespace stratovane {

namespace {

constexpr bool isData(int value) { return value >= 0 && value < 128; }

}  // namespace

void KeyboardCommands::note(int part, int key, int velocity) {
    if (EditorAccess::isPart(part) && isData(key) && isData(velocity))
        commands_.push(CommandKind::linkedNote, part, key, velocity);
}

void KeyboardCommands::controller(int part, int number, int value) {
    if (EditorAccess::isPart(part) && isData(number) && isData(value))
        commands_.push(CommandKind::linkedController, part, number, value);
}

void KeyboardCommands::panic() { commands_.panic(); }

}  // namespace stratovane
