// Puts a patch record into a part: reads it, settles what belongs to the mixer, hands it over.
#pragma once

#include <cstdint>

#include "base/trace.h"
#include "content/bytes.h"

namespace stratovane {

class CommandRing;
class Engine;
class HostParameters;
class Patch;
struct MultiSetup;
struct PatchRecord;
struct Settings;

/// Threads: UI thread.
class PatchLoader {
  public:
    PatchLoader(MultiSetup& multi, const Settings& settings, HostParameters& parameters,
                CommandRing& commands, Trace& trace)
        : multi_{multi},
          settings_{settings},
          parameters_{parameters},
          commands_{commands},
          trace_{trace} {}

    enum class Mode {
        load,
        copy,     // the master channel, which the part shares with its model, stays as it is
        restore,  // a whole bank comes back: everything is taken from the record
    };
    static constexpr int noBank = -1;
    /// Pan, output, tuning and ranges: as the patch and the part have them, or as General MIDI
    /// starts with.
    enum class Mix { ofPatch, plain };

    struct Source {
        Mode mode = Mode::load;
        int libraryBank = noBank;
        bool forMessage = false;  // a MIDI message asked for it
        Mix mix = Mix::ofPatch;
        std::string_view name{};  // replaces the record's name unless empty
    };

    /// False, the part unchanged and the reason traced, when the bytes hold no patch record.
    bool load(Engine& engine, int part, ByteView block, const Source& source);
    bool load(Engine& engine, int part, const PatchRecord& record, const Source& source);
    /// Ends the part's notes and leaves it without patch and location.
    void clear(Engine& engine, int part, bool forMessage = false);

  private:
    void settleMixer(int part, Patch& fresh, Mode mode) const;
    void showToHost(int part);
    void noteLocation(int part, std::int32_t location, bool forMessage);

    MultiSetup& multi_;
    const Settings& settings_;
    HostParameters& parameters_;
    CommandRing& commands_;
    Trace& trace_;
};

}  // namespace stratovane
