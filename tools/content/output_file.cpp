#include "output_file.h"

#include <filesystem>

#include "failure.h"

namespace stratovane::content_tool {

namespace {

namespace fs = std::filesystem;

void require(const std::optional<std::string>& fault) {
    if (fault) throw Failure{Exit::output, *fault};
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& target) { require(file_.open(target)); }

void TemporaryFile::write(ByteView bytes) {
    require(file_.write({bytes.data(), static_cast<std::size_t>(bytes.size())}));
}

void TemporaryFile::keep() { require(file_.keep()); }

void writeWhole(const std::string& path, ByteView bytes) {
    TemporaryFile file{path};
    file.write(bytes);
    file.keep();
}

void writeWhole(const std::string& path, const std::string& text) {
    writeWhole(
        path, ByteView{std::span{reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}});
}

void makeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!fs::is_directory(path, error))
        throw Failure{Exit::output, path + " cannot be written: no such folder can be made"};
}

}  // namespace stratovane::content_tool
