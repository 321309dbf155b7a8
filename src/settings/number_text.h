// Numbers as the settings store spells them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace stratovane {

/// Reads as scanf's %d does in the C locale: blanks and a sign may lead, anything may follow.
/// Nothing without a digit; a number too large for 32 bits gives the nearer end. Any thread.
std::optional<std::int32_t> parseInteger(std::string_view text);

/// Likewise %f, decimal; what is not finite is nothing. Any thread.
std::optional<float> parseDecimal(std::string_view text);

}  // namespace stratovane
