// A settings file of this run alone.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "failure.h"

namespace stratovane::render {

/// Makes a settings file in the folder for temporary files and points the plug-in at it, so that
/// the user's own is neither read nor written. The destructor removes it.
class PrivateSettings {
  public:
    PrivateSettings() = default;
    ~PrivateSettings();
    PrivateSettings(const PrivateSettings&) = delete;
    PrivateSettings& operator=(const PrivateSettings&) = delete;

    /// Before the plug-in is loaded.
    std::optional<Failure> make(bool copyUsers,
                                const std::vector<std::pair<std::string, std::string>>& settings);

  private:
    std::string folder_;
};

}  // namespace stratovane::render
