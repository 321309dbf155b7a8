// The effects as a text.
#pragma once

#include <string>

namespace stratovane::render {

/// Each effect's number and name and a line for each of its parameters: index, label, default
/// value and how it is shown. UTF-8.
std::string effectList();

}  // namespace stratovane::render
