// What the plug-in is brought to before the song begins.
#pragma once

#include <optional>
#include <variant>

#include "content/bytes.h"
#include "failure.h"
#include "options.h"
#include "program_watch.h"

namespace stratovane::render {

/// The chunks of the files named on the command line; empty: none.
struct SetupFiles {
    Bytes bank, preset;
};
std::variant<SetupFiles, Failure> readSetupFiles(const Options& options);

/// Whether the song is to begin with General MIDI switched on. `songResets`: it does so itself, or
/// off.
bool wantsGeneralMidi(PluginHost& plugIn, const Options& options, bool songResets);

/// General MIDI, then bank, patches, preset, effects and parameters: what fills all parts comes
/// first. The plug-in is started.
std::optional<Failure> setUp(PluginHost& plugIn, const Options& options, const SetupFiles& files,
                             bool generalMidi, ProgramWatch& watch);

}  // namespace stratovane::render
