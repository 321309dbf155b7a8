// A file that appears whole or not at all.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace stratovane {

/// Written under a name beside the target until `keep`; without it the file goes with the object
/// and what stood there stays. Failures are sentences: the target and why.
class NewFile {
  public:
    NewFile() = default;
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Makes an empty file beside the target; refuses a target that is there and is no file.
    std::optional<std::string> open(const std::string& target);
    bool isOpen() const { return descriptor_ >= 0; }
    const std::string& path() const { return path_; }
    int descriptor() const { return descriptor_; }
    std::optional<std::string> write(std::span<const std::uint8_t> bytes);
    std::optional<std::string> write(const std::string& text);
    /// Puts the file in the place of the target, with the rights a new file has.
    std::optional<std::string> keep();

  private:
    std::string target_, path_;
    int descriptor_ = -1;
};

}  // namespace stratovane
