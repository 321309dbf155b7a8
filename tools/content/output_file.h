// Files that appear whole or not at all.
#pragma once

#include <string>

#include "content/bytes.h"
#include "shared/new_file.h"

namespace stratovane::content_tool {

/// A new file whose failures are thrown.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& target);

    const std::string& path() const { return file_.path(); }
    int descriptor() const { return file_.descriptor(); }
    void write(ByteView bytes);
    /// Puts the file in the place of the target.
    void keep();

  private:
    NewFile file_;
};

void writeWhole(const std::string& path, ByteView bytes);
void writeWhole(const std::string& path, const std::string& text);
/// Makes the folder and those above it unless they are there.
void makeFolder(const std::string& path);

}  // namespace stratovane::content_tool
