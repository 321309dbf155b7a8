// The single-byte text of content files as the UTF-8 of JSON files, and back.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stratovane {

/// The five bytes that the code page leaves open become the control characters of their number, so
/// that every text comes back.
std::string utf8FromWindows1252(std::string_view text);
/// Nothing when a character is not in the code page or the text is no UTF-8.
std::optional<std::string> windows1252FromUtf8(std::string_view text);

}  // namespace stratovane
