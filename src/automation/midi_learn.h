// The menu behind a control of the editor that binds MIDI controllers to its parameter.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/text_out.h"
#include "base/trace.h"

namespace stratovane {

class Engine;
class HostParameters;
class Patch;

/// A parameter of the selected part's patch, as a control names it: element 0 is the patch, 1..64
/// its elements, 65..68 its insert effects. A control without parameter has index -1.
struct LearnTarget {
    int part = 0, element = 0, index = -1;
};

/// What the menu shows, in this order: a submenu of the 128 controllers, "Learn", and "Forget" when
/// a controller drives the parameter.
struct LearnMenu {
    static constexpr std::string_view learn = "Learn", forget = "Forget";
    static constexpr int controllers = 128, none = -1;

    int assigned = none;  // the lowest controller that drives the parameter

    bool offersForget() const { return assigned != none; }
    /// "CC", with the assigned controller's number behind it.
    void showTitle(TextOut& out) const;
};

/// UI thread.
class MidiLearn {
  public:
    MidiLearn(HostParameters& parameters, Trace& trace) : parameters_{parameters}, trace_{trace} {}

    /// The menu of a parameter, after the host was made to notice the parameter; nothing, with a
    /// trace, when the control has none, and nothing when an effect without a type has it or it is
    /// one of the panel's own numbers.
    std::optional<LearnMenu> open(Engine& engine, const LearnTarget& target);

    /// An entry of the submenu: the number with what the controller drives, or with its usual name.
    static void showController(TextOut& out, const Patch& patch, int controller);
    /// Whether the entry can be chosen; the others belong to the engine, and their names begin with
    /// "-G".
    static bool isOffered(int controller);

    /// From now on the controller drives the parameter. One that is not offered changes nothing.
    void assign(Engine& engine, const LearnTarget& target, int controller);
    /// The next controller that the part receives will drive it.
    void arm(Engine& engine, const LearnTarget& target);
    /// The assigned controller drives nothing any more.
    void forget(Engine& engine, const LearnTarget& target);

  private:
    /// Makes it the parameter changed last, without changing it.
    void touch(Engine& engine, const LearnTarget& target);

    HostParameters& parameters_;
    Trace& trace_;
};

}  // namespace stratovane
