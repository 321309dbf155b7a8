// The patches, samples, wavetables, tunings, drawbar sets and phrases on disk.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace stratovane {

/// Library location: bank << 8 | program, banks and programs 0..127; 0 is none.
using Location = std::int32_t;
constexpr int bankOf(Location location) { return location >> 8; }
constexpr int programOf(Location location) { return location & 255; }
inline constexpr Location firstCombi = 120 << 8;

/// Nothing is found yet: a library without a folder, which answers every question with "not there".
/// UI thread.
class ContentLibrary {
  public:
    /// Scans a folder. False when no library is there; what was known before stays.
    bool open(std::string_view folder);
    bool isOpen() const { return false; }
    /// Names; empty when there is none.
    std::string_view bankName(int bank) const;
    std::string_view programName(int bank, int program) const;
};

}  // namespace stratovane
