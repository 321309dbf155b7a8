// Whether an item is one.
#pragma once

#include <optional>
#include <string>

#include "content/bytes.h"
#include "content/content_data.h"
#include "content/entry_names.h"
#include "faults.h"

namespace stratovane::content_tool {

/// An item of a bank file: what is wrong with it, if something is.
std::optional<ContentFault> judgeItem(ContentKind kind, ByteView item);
/// A file of a bank folder.
std::optional<ContentFault> judgeFile(ItemFile type, ByteView file);

}  // namespace stratovane::content_tool
