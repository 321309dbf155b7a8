// Storing and choosing scenes, and phrases from MIDI files.
#pragma once

#include <cstdint>
#include <string>

#include "editor/editor_access.h"

namespace stratovane {

/// Parts 0..15; other numbers, and slots that do not exist or are empty, do nothing. Each answers
/// whether something was done. Threads: UI thread.
class SceneCommands {
  public:
    explicit SceneCommands(const EditorAccess& access) : access_{access} {}

    bool store(int part, int slot, std::uint32_t flags);
    bool select(int part, int slot);
    /// The file's notes become the patch's own phrase. False, too, when it has no usable event.
    bool importPhrase(int part, const std::string& path);

  private:
    Patch* patchOf(int part) const;
    void tellChange(int part) const;

    EditorAccess access_;
};

}  // namespace stratovane
