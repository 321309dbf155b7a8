// Named strings under named keys, kept by the platform.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace stratovane {

struct NamedValue {
    std::string_view name, value;
};

/// Windows: strings of the machine-wide registry. Elsewhere: a text file of `[key]` sections with
/// `Name=Value` lines; STRATOVANE_SETTINGS names it, else it stands in the user's configuration
/// folder and a machine-wide one is read while that is missing. UI thread.
class SettingsStore {
  public:
    static constexpr std::size_t longestValue = 1023;

    /// The empty text when key or value is missing; at most 1023 characters.
    std::string read(std::string_view key, std::string_view name) const;
    /// False when it could not be stored; what was there before is then unchanged. A value that
    /// could not be read back (a line end in it, more than 1023 characters) is refused.
    bool write(std::string_view key, std::string_view name, std::string_view value) {
        const NamedValue one{name, value};
        return write(key, {&one, 1});
    }
    /// The same for several values, off Windows all of them or none.
    bool write(std::string_view key, std::span<const NamedValue> values);
};

}  // namespace stratovane
