// What the editor's commands ask of the instrument as a whole.
#pragma once

#include <cstdint>
#include <string_view>

namespace stratovane {

class Engine;
class LibraryLoader;
struct SetupCommands;

/// UI thread.
class Instrument {
  public:
    /// The engine, made now when this is its first use.
    virtual Engine& startedEngine() = 0;
    /// Files, combis, copying and saving.
    virtual SetupCommands& setupCommands() = 0;
    virtual LibraryLoader& programs() = 0;
    /// The whole setup as the General MIDI mode starts, or empty with the mode off.
    virtual void resetGeneralMidi() = 0;
    /// Where the content library lives from now on; stored when a library is there. Answers
    /// whether.
    virtual bool setContentLocation(std::string_view path) = 0;
    virtual bool contentFound() const = 0;
    /// What the host's inspector offers has to be listed again.
    virtual void refreshProgramList() = 0;
    /// Sets a host parameter as the user's own doing, which the host may record.
    virtual void setByUser(std::int32_t index, float value) = 0;

  protected:
    ~Instrument() = default;
};

}  // namespace stratovane
