// The text form of the settings store: sections of named values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace stratovane {

/// Lines `[key]` and `Name=Value`; a value is everything behind the first '=', blanks too. Comments
/// begin with ';' or '#'. Lines that are neither are kept as they are. The first of several equal
/// names counts. UI thread.
class SettingsText {
  public:
    explicit SettingsText(std::string_view text = {});

    /// The empty text when it is missing.
    std::string_view value(std::string_view key, std::string_view name) const;
    void set(std::string_view key, std::string_view name, std::string_view value);
    std::string text() const;

    /// Whether a key, name and value would be read back as they are.
    static bool canHold(std::string_view key, std::string_view name, std::string_view value);

  private:
    struct Place {
        std::size_t value;   // the line with the value, or `none`
        std::size_t insert;  // where a new line of the section goes, or `none` without one
    };
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    Place find(std::string_view key, std::string_view name) const;

    std::vector<std::string> lines_;
};

}  // namespace stratovane
