#include "shared/new_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace stratovane {

namespace {

namespace fs = std::filesystem;

std::string because(const std::string& path) {
    return path + " cannot be written: " + std::strerror(errno);
}

}  // namespace

NewFile::~NewFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!path_.empty()) unlink(path_.c_str());
}

std::optional<std::string> NewFile::open(const std::string& target) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(target, error);  // a link's target is replaced
    target_ = error ? target : real.string();
    if (fs::exists(target_, error) && !fs::is_regular_file(target_, error))
        return target + " cannot be written: it exists and is no file";
    fs::path pattern{target_};
    pattern.replace_filename(".stratovane-new-XXXXXX");
    std::string name = pattern.string();
    descriptor_ = mkstemp(name.data());
    if (descriptor_ < 0) return because(target);
    path_ = name;
    return {};
}

std::optional<std::string> NewFile::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return because(target_);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return {};
}

std::optional<std::string> NewFile::write(const std::string& text) {
    return write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::optional<std::string> NewFile::keep() {
    const mode_t mask = umask(0);
    umask(mask);
    const bool flushed = fchmod(descriptor_, 0666 & ~mask) == 0 && close(descriptor_) == 0;
    descriptor_ = -1;
    if (!flushed || std::rename(path_.c_str(), target_.c_str()) != 0) return because(target_);
    path_.clear();
    return {};
}

}  // namespace stratovane
