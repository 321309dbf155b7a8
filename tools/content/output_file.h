// Files that appear whole or not at all.
#pragma once

#include <string>

#include "content/bytes.h"

namespace stratovane::content_tool {

/// A name beside `target` under which a file can be written first; an empty file of that name is
/// made. Without `keep`, the file goes with the object.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return path_; }
    int descriptor() const { return descriptor_; }
    /// Puts the file in the place of the target.
    void keep();

  private:
    std::string target_, path_;
    int descriptor_ = -1;
};

void writeWhole(const std::string& path, ByteView bytes);
void writeWhole(const std::string& path, const std::string& text);
/// Makes the folder and those above it unless they are there.
void makeFolder(const std::string& path);

}  // namespace stratovane::content_tool
