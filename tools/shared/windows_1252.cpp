#include "shared/windows_1252.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace stratovane {

namespace {

/// Code points of the bytes 0x80..0x9F; all others stand for themselves.
constexpr std::array<char16_t, 32> upper{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
constexpr unsigned firstUpper = 0x80, behindUpper = firstUpper + upper.size();

std::optional<char> byteOf(char32_t point) {
    const auto found = std::find(upper.begin(), upper.end(), point);
    if (found != upper.end())
        return static_cast<char>(firstUpper + static_cast<unsigned>(found - upper.begin()));
    if (point < firstUpper || (point >= behindUpper && point <= 0xFF))
        return static_cast<char>(point);
    return std::nullopt;
}

}  // namespace

std::string utf8FromWindows1252(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<std::uint8_t>(c);
        const unsigned point =
            byte >= firstUpper && byte < behindUpper ? upper[byte - firstUpper] : byte;
        if (point < 0x80) {
            out += c;
        } else if (point < 0x800) {
            out += static_cast<char>(0xC0 | point >> 6);
            out += static_cast<char>(0x80 | (point & 0x3F));
        } else {
            out += static_cast<char>(0xE0 | point >> 12);
            out += static_cast<char>(0x80 | (point >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (point & 0x3F));
        }
    }
    return out;
}

std::optional<std::string> windows1252FromUtf8(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<std::uint8_t>(text[i]);
        const std::size_t more = first < 0x80 ? 0 : first >= 0xE0 ? 2 : 1;
        if ((first >= 0x80 && first < 0xC0) || first >= 0xF0 || i + more >= text.size())
            return std::nullopt;
        char32_t point = more == 0 ? first : first & (more == 1 ? 0x1Fu : 0x0Fu);
        for (std::size_t k = 1; k <= more; ++k) {
            const auto next = static_cast<std::uint8_t>(text[i + k]);
            if ((next & 0xC0) != 0x80) return std::nullopt;
            point = point << 6 | (next & 0x3Fu);
        }
        const auto byte = byteOf(point);
        if (!byte) return std::nullopt;
        out += *byte;
        i += more + 1;
    }
    return out;
}

}  // namespace stratovane
