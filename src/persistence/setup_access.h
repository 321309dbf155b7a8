// The records that together are the whole setup, for whoever saves and restores it.
#pragma once

#include <array>
#include <string_view>

#include "base/text_out.h"

namespace stratovane {

class CommandRing;
class ContentLibrary;
class HostParameters;
class Trace;
struct EngineShared;
struct MultiSetup;
struct Settings;

/// Told what the host and its lists are to follow. UI thread.
class SetupListener {
  public:
    virtual ~SetupListener() = default;
    /// Parts play other patches: the host may draw them, if the user wants it.
    virtual void partsChanged() = 0;
    /// Banks of the library were read again.
    virtual void libraryChanged() = 0;
};

using ProgramName = std::array<char, 32>;

/// References to what lives longer than whoever holds them. UI thread.
struct SetupAccess {
    MultiSetup& multi;
    Settings& settings;
    EngineShared& shared;
    HostParameters& parameters;
    ContentLibrary& library;
    ProgramName& programName;
    bool& inside;  // see Stay
    SetupListener& listener;
    Trace& trace;

    void setProgramName(std::string_view name) const {
        TextOut out{programName};
        out.text(name);
    }
};

}  // namespace stratovane
