#include "private_settings.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "settings/settings.h"

namespace stratovane::render {

namespace {

namespace fs = std::filesystem;

constexpr const char* pathVariable = "STRATOVANE_SETTINGS";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// The file the plug-in would use; the machine's when there is no user's.
fs::path usersFile() {
    if (const std::string path = environment(pathVariable); !path.empty()) return path;
    const fs::path name = fs::path{"taldrimor"} / "stratovane2.ini";
    const std::string config = environment("XDG_CONFIG_HOME"), home = environment("HOME");
    const fs::path own =
        !config.empty() ? fs::path{config} / name : fs::path{home} / ".config" / name;
    std::error_code error;
    return fs::exists(own, error) ? own : fs::path{"/etc/xdg"} / name;
}

/// Sets a value in our section, which is made when there is none.
void setValue(std::vector<std::string>& lines, const std::string& name, const std::string& value) {
    std::string section{"["};
    section.append(settingsKey).append("]");
    std::size_t at = 0;
    while (at < lines.size() && lines[at] != section) ++at;
    if (at == lines.size()) lines.push_back(section);
    const std::string start = name + "=";
    for (++at; at < lines.size() && !lines[at].starts_with("["); ++at) {
        if (!lines[at].starts_with(start)) continue;
        lines[at] = start + value;
        return;
    }
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), start + value);
}

}  // namespace

PrivateSettings::~PrivateSettings() {
    std::error_code error;
    if (!folder_.empty()) fs::remove_all(folder_, error);
}

std::optional<Failure> PrivateSettings::make(
    bool copyUsers, const std::vector<std::pair<std::string, std::string>>& settings) {
    std::vector<std::string> lines;
    if (copyUsers) {
        std::ifstream users{usersFile()};
        for (std::string line; std::getline(users, line);) {
            if (line.ends_with('\r')) line.pop_back();
            lines.push_back(line);
        }
    }
    for (const auto& [name, value] : settings) setValue(lines, name, value);

    std::error_code error;
    std::string pattern = (fs::temp_directory_path(error) / "stratovane-render-XXXXXX").string();
    if (error || mkdtemp(pattern.data()) == nullptr)
        return Failure{Exit::output, "no folder for temporary files can be made: " + pattern};
    folder_ = pattern;
    const fs::path path = fs::path{folder_} / "settings.ini";
    std::ofstream file{path, std::ios::binary};
    for (const std::string& line : lines) file << line << '\n';
    file.close();
    if (!file || setenv(pathVariable, path.c_str(), 1) != 0)
        return Failure{Exit::output,
                       "the private settings file cannot be written: " + path.string()};
    return {};
}

}  // namespace stratovane::render
