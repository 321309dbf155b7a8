#include "content/file_bytes.h"

#include <filesystem>
#include <fstream>
#include <ios>
#include <new>
#include <system_error>

namespace stratovane {

namespace {

/// A name beside the target that nobody has; empty when a hundred are taken.
std::string freeName(const std::string& target) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string name = target + '.' + std::to_string(attempt) + ".tmp";
        std::error_code failed;
        if (std::filesystem::symlink_status(name, failed).type() ==
            std::filesystem::file_type::not_found)
            return name;
    }
    return {};
}

}  // namespace

std::optional<std::uint64_t> fileSize(const std::string& path) {
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(path, failed);
    if (failed) return std::nullopt;
    return size;
}

std::optional<Bytes> readFilePart(const std::string& path, std::uint64_t offset,
                                  std::uint64_t count) {
    const std::optional<std::uint64_t> size = fileSize(path);
    if (!size || offset > *size || count > *size - offset) return std::nullopt;
    std::ifstream in{path, std::ios::binary};
    if (!in) return std::nullopt;
    try {
        Bytes bytes(static_cast<std::size_t>(count));
        in.seekg(static_cast<std::streamoff>(offset));
        in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
        if (!in) return std::nullopt;
        return bytes;
    } catch (const std::bad_alloc&) {  // nothing may be thrown into the host
        return std::nullopt;
    }
}

std::optional<Bytes> readFileFrom(const std::string& path, std::uint64_t offset) {
    const std::optional<std::uint64_t> size = fileSize(path);
    if (!size || offset > *size) return std::nullopt;
    return readFilePart(path, offset, *size - offset);
}

bool writeFile(const std::string& path, ByteView bytes) {
    std::ofstream out{path, std::ios::binary | std::ios::trunc};
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    out.close();
    return !out.fail();
}

bool replaceFile(const std::string& path, ByteView bytes) {
    std::error_code failed;
    // A link stays a link: what it leads to is replaced.
    std::filesystem::path target = std::filesystem::canonical(path, failed);
    if (failed) target = path;
    const std::string beside = freeName(target.string());
    if (beside.empty()) return false;
    bool written = writeFile(beside, bytes);
    if (written) {
        std::filesystem::rename(beside, target, failed);
        written = !failed;
    }
    if (!written) std::filesystem::remove(beside, failed);
    return written;
}

}  // namespace stratovane
