// Elements to files, and effects from files and presets.
#pragma once

#include <string>
#include <string_view>

#include "editor/editor_access.h"

namespace stratovane {

/// Parts and answers as for ElementCommands. Threads: UI thread.
class EffectCommands {
  public:
    explicit EffectCommands(const EditorAccess& access) : access_{access} {}

    enum class Name { fullPath, inContent };  // in the content's folder of effects

    bool save(int part, int element, const std::string& path);
    /// False also when there was no such file; the element is then without effect.
    bool load(int part, int element, std::string_view name, Name meant);
    bool loadPreset(int part, int element, int presetNumber);

  private:
    EditorAccess access_;
};

}  // namespace stratovane
