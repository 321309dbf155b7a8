// A Standard MIDI File as a phrase.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "content/scene_record.h"

namespace stratovane {

class Trace;

/// A scene with nothing but a phrase: the file's note-ons, controllers and pitch bends from the
/// bar of the first one on, at most 32 beats and 2000 events. A damaged file gives what came before
/// the damage; without a usable event there is nothing. `path` names the scene; what is remarkable
/// is traced. UI thread.
std::optional<Scene> importPhrase(std::span<const std::uint8_t> file, std::string_view path,
                                  Trace& trace);
/// Reads the file, too.
std::optional<Scene> importPhrase(const std::string& path, Trace& trace);

/// The last component of a path without ".mid" (in either case), cut to 31 characters. Any thread.
std::string_view phraseName(std::string_view path);

}  // namespace stratovane
