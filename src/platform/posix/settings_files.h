// Where the settings stand and how they are replaced as a whole.
#pragma once

#include <string>

namespace stratovane {

struct SettingsFiles {
    std::string own;          // read and written; empty when there is no place for it
    std::string machineWide;  // read while the own one is missing; empty for none

    /// As the environment says now. UI thread.
    static SettingsFiles fromEnvironment();

    /// The text in force; empty without any file. False when there is one that cannot be read, so
    /// that writing would lose what it holds. UI thread.
    bool load(std::string& text) const;
    /// Replaces the own file in one step and keeps its mode; makes missing folders. False, with the
    /// former file unchanged, when that cannot be done. UI thread.
    bool save(const std::string& text) const;
};

}  // namespace stratovane
