// What is wrong with content, one line a fault.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace stratovane::content_tool {

class Faults {
  public:
    /// Prints the line at once.
    void add(const std::string& path, std::uint64_t offset, std::string_view sentence);
    int count() const { return count_; }

  private:
    int count_ = 0;
};

}  // namespace stratovane::content_tool
