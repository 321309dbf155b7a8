#include "content/replace_file.h"

#include <filesystem>
#include <system_error>

#include "content/file_bytes.h"

namespace stratovane {

namespace fs = std::filesystem;

namespace {

/// A name beside the target that nobody has; empty when a hundred are taken.
std::string freeName(const std::string& target) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string name = target + '.' + std::to_string(attempt) + ".tmp";
        std::error_code failed;
        if (fs::symlink_status(name, failed).type() == fs::file_type::not_found) return name;
    }
    return {};
}

}  // namespace

bool replaceFile(const std::string& path, ByteView bytes) {
    std::error_code failed;
    const fs::path linked = fs::canonical(path, failed);
    const std::string target = failed ? path : linked.string();
    const std::string temporary = freeName(target);
    if (temporary.empty()) return false;
    bool done = writeFile(temporary, bytes);
    if (done) {
        fs::rename(temporary, target, failed);
        done = !failed;
    }
    if (!done) fs::remove(temporary, failed);
    return done;
}

}  // namespace stratovane
