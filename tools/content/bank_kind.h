// Which kind of bank a file is.
#pragma once

#include <optional>
#include <string>

#include "content/bank_file.h"
#include "content/content_kind.h"

namespace stratovane::content_tool {

/// The kind whose folder the path is in. Any thread.
std::optional<ContentKind> kindOfFolder(const std::string& path);
/// By the folder, else by what the items are; nothing when that is not clear.
std::optional<ContentKind> kindOfBank(const std::string& path, const BankFile& bank);

}  // namespace stratovane::content_tool
