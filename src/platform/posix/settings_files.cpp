#include "platform/posix/settings_files.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace stratovane {

namespace {

namespace fs = std::filesystem;
constexpr const char* belowConfiguration = "taldrimor/stratovane2.ini";
constexpr std::size_t largestBytes = 1 << 20;  // a settings file has a few hundred

class File {
  public:
    explicit File(int descriptor) : descriptor_{descriptor} {}
    ~File() { close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    int get() const { return descriptor_; }
    bool close() {
        const bool done = descriptor_ < 0 || ::close(descriptor_) == 0;
        descriptor_ = -1;
        return done;
    }

  private:
    int descriptor_;
};

enum class Found { missing, unreadable, read };

Found readWhole(const std::string& path, std::string& text) {
    text.clear();
    if (path.empty()) return Found::missing;
    const File file{::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    if (file.get() < 0)
        return errno == ENOENT || errno == ENOTDIR ? Found::missing : Found::unreadable;
    char piece[4096];
    for (;;) {
        const ssize_t count = ::read(file.get(), piece, sizeof piece);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 || text.size() > largestBytes) return Found::unreadable;
        if (count == 0) return Found::read;
        text.append(piece, static_cast<std::size_t>(count));
    }
}

bool writeWhole(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return ::fsync(descriptor) == 0;
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string configurationFolder() {
    // The base directory rules say that a relative path there is to be ignored.
    if (std::string folder = environment("XDG_CONFIG_HOME"); folder.starts_with('/')) return folder;
    std::string home = environment("HOME");
    if (home.empty())
        if (const passwd* user = getpwuid(getuid())) home = user->pw_dir;
    return home.empty() ? home : home + "/.config";
}

}  // namespace

SettingsFiles SettingsFiles::fromEnvironment() {
    if (std::string named = environment("STRATOVANE_SETTINGS"); !named.empty())
        return {std::move(named), {}};
    const std::string folder = configurationFolder();
    return {folder.empty() ? folder : folder + '/' + belowConfiguration,
            std::string{"/etc/xdg/"} + belowConfiguration};
}

bool SettingsFiles::load(std::string& text) const {
    Found found = readWhole(own, text);
    if (found == Found::missing) found = readWhole(machineWide, text);
    if (found != Found::read) text.clear();
    return found != Found::unreadable;
}

bool SettingsFiles::save(const std::string& text) const {
    if (own.empty()) return false;
    // A link stays a link: what it leads to is replaced.
    std::error_code failed;
    fs::path target = fs::canonical(own, failed);
    if (failed) target = own;
    fs::create_directories(target.parent_path(), failed);  // opening below tells if it failed

    struct stat former {};
    const bool replaces = ::stat(target.c_str(), &former) == 0;
    const std::string prefix = target.string() + '.' + std::to_string(getpid()) + '.';
    std::string temporary;
    int descriptor = -1;
    for (int attempt = 0; descriptor < 0 && attempt < 100; ++attempt) {
        temporary = prefix + std::to_string(attempt) + ".tmp";
        descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST) return false;
    }
    if (descriptor < 0) return false;
    File file{descriptor};
    const bool written = (!replaces || ::fchmod(file.get(), former.st_mode & 07777) == 0) &&
                         writeWhole(file.get(), text) && file.close() &&
                         std::rename(temporary.c_str(), target.c_str()) == 0;
    if (!written) ::unlink(temporary.c_str());
    return written;
}

}  // namespace stratovane
