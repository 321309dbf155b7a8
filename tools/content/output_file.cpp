#include "output_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "failure.h"

namespace stratovane::content_tool {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& path, const char* why) {
    throw Failure{Exit::output, path + " cannot be written: " + why};
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& target) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(target, error);  // a link's target is replaced
    target_ = error ? target : real.string();
    if (fs::exists(target_, error) && !fs::is_regular_file(target_, error))
        refuse(target, "it exists and is no file");
    fs::path pattern{target_};
    pattern.replace_filename(".stratovane-content-XXXXXX");
    std::string name = pattern.string();
    descriptor_ = mkstemp(name.data());
    if (descriptor_ < 0) refuse(target, std::strerror(errno));
    path_ = name;
}

TemporaryFile::~TemporaryFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!path_.empty()) unlink(path_.c_str());
}

void TemporaryFile::keep() {
    const mode_t mask = umask(0);
    umask(mask);
    const bool flushed = fchmod(descriptor_, 0666 & ~mask) == 0 && close(descriptor_) == 0;
    descriptor_ = -1;
    if (!flushed || std::rename(path_.c_str(), target_.c_str()) != 0)
        refuse(target_, std::strerror(errno));
    path_.clear();
}

void writeWhole(const std::string& path, ByteView bytes) {
    TemporaryFile file{path};
    for (std::uint64_t at = 0; at < bytes.size();) {
        const ssize_t written = write(file.descriptor(), bytes.data() + at, bytes.size() - at);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) refuse(path, std::strerror(errno));
        at += static_cast<std::uint64_t>(written);
    }
    file.keep();
}

void writeWhole(const std::string& path, const std::string& text) {
    writeWhole(
        path, ByteView{std::span{reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}});
}

void makeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!fs::is_directory(path, error)) refuse(path, "no such folder can be made");
}

}  // namespace stratovane::content_tool
