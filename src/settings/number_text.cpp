#include "settings/number_text.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace stratovane {

namespace {

// std::from_chars takes neither blanks nor a plus sign.
std::string_view withoutLead(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    if (first == text.npos) return {};
    text.remove_prefix(first);
    if (text.front() != '+') return text;
    text.remove_prefix(1);
    return text.starts_with('-') ? std::string_view{} : text;
}

}  // namespace

std::optional<std::int32_t> parseInteger(std::string_view text) {
    text = withoutLead(text);
    std::int32_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::invalid_argument) return std::nullopt;
    if (result.ec == std::errc::result_out_of_range) {
        using limits = std::numeric_limits<std::int32_t>;
        return text.starts_with('-') ? limits::min() : limits::max();
    }
    return value;
}

std::optional<float> parseDecimal(std::string_view text) {
    text = withoutLead(text);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc{}) return std::nullopt;
    const float narrow = static_cast<float>(value);
    return std::isfinite(narrow) ? std::optional{narrow} : std::nullopt;
}

}  // namespace stratovane
