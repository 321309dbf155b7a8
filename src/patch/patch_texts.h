// The free texts that a patch carries, in fields of fixed size.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace stratovane {

/// Selectors as in Patch::text. UI thread.
class PatchTexts {
  public:
    /// Empty for selectors that do not exist.
    std::string_view get(int selector) const;
    /// Cut to the field less its NUL, and at the first NUL.
    void set(int selector, std::string_view text);

  private:
    std::span<const char> field(int selector) const;

    std::array<char, 32> name_{};
    std::array<std::array<char, 32>, 68> elements_{};
    std::array<std::array<char, 16>, 6> knobs_{};
    std::array<char, 128> field1_{}, field2_{};
    std::array<char, 64> field3_{}, codes_{};
};

}  // namespace stratovane
