// The menu behind a control that binds MIDI controllers to its parameter.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "automation/midi_learn.h"
#include "editor/editor_access.h"

namespace stratovane {

class Instrument;

/// Threads: UI thread.
class LearnCommands {
  public:
    LearnCommands(const EditorAccess& access, Instrument& instrument)
        : learn_{access.parameters, access.trace}, instrument_{instrument} {}

    struct Entry {
        std::string text;
        bool offered = true;  // else it belongs to the engine and cannot be chosen
    };
    /// A submenu of all controllers under a title, then LearnMenu::learn, then LearnMenu::forget.
    struct Menu {
        std::string title;
        std::vector<Entry> controllers;  // by number
        bool offersForget = false;
    };

    /// Nothing for a control that takes no part; the host notices the parameter of one that does.
    std::optional<Menu> open(const LearnTarget& target);
    void assign(const LearnTarget& target, int controller);
    void learn(const LearnTarget& target);
    void forget(const LearnTarget& target);

  private:
    MidiLearn learn_;
    Instrument& instrument_;
};

}  // namespace stratovane
