// Named strings under named keys, kept by the platform.
#pragma once

#include <string>
#include <string_view>

namespace stratovane {

/// Windows: strings of the machine-wide registry. Elsewhere: a text file of `[key]` sections with
/// `Name=Value` lines; STRATOVANE_SETTINGS names it, else it stands in the user's configuration
/// folder and a machine-wide one is read while that is missing. UI thread.
class SettingsStore {
  public:
    /// The empty text when key or value is missing; at most 1023 characters.
    std::string read(std::string_view key, std::string_view name) const;
    /// False when it could not be stored; what was there before is then unchanged.
    bool write(std::string_view key, std::string_view name, std::string_view value);
};

}  // namespace stratovane
