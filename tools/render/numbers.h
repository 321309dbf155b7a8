// Numbers as they are typed.
#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace stratovane::render {

/// A number of the whole text, finite; what from_chars would take, whatever the locale.
inline std::optional<double> wholeNumber(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return {};
    return value;
}

}  // namespace stratovane::render
