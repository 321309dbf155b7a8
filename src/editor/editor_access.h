// What the editor's commands work on.
#pragma once

#include <memory>

namespace stratovane {

class CommandRing;
class Engine;
class HostParameters;
class Patch;
class SettingsStore;
class Trace;
struct MultiSetup;
struct Settings;

/// UI thread.
struct EditorAccess {
    const std::unique_ptr<Engine>& engine;  // null until the instrument's first use
    HostParameters& parameters;
    MultiSetup& multi;
    Settings& settings;
    SettingsStore& store;
    CommandRing& commands;
    Trace& trace;

    static bool isPart(int part);
    /// The current patch of a part 0..15; for any other number the master channel's. Null while
    /// there is no engine.
    Patch* patch(int part) const;
    /// After a change: the editor redraws, and what the host shows of the part and of a send slot
    /// goes to the host's store.
    void tellChange(int part, int element) const;
};

}  // namespace stratovane
