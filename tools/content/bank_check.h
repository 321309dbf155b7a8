// Looks through everything that a bank file holds.
#pragma once

#include <string>

#include "content/content_kind.h"
#include "faults.h"

namespace stratovane::content_tool {

/// Every item, zone and sample. Offsets count from the start of the file.
void checkBankFile(const std::string& path, ContentKind kind, Faults& faults);

}  // namespace stratovane::content_tool
