// Plays a song through the plug-in into files.
#pragma once

#include <variant>

#include "failure.h"
#include "midi_song.h"
#include "options.h"
#include "plugin_host.h"
#include "song_setup.h"
#include "summary.h"

namespace stratovane::render {

/// The plug-in is loaded, not yet started. No file is left behind by a failure.
std::variant<Summary, Failure> renderSong(PluginHost& plugIn, const Song& song,
                                          const SetupFiles& files, const Options& options);

}  // namespace stratovane::render
