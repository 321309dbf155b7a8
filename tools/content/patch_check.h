// Whether patches and whole setups can be loaded.
#pragma once

#include <optional>

#include "content/bytes.h"
#include "content/content_data.h"

namespace stratovane::content_tool {

/// A patch record. Offsets count from its first byte.
std::optional<ContentFault> judgePatch(ByteView record);
/// A program file with a record, and a bank file with a setup. Offsets count from the file's start.
std::optional<ContentFault> judgePatchFile(ByteView file);
std::optional<ContentFault> judgeSetupFile(ByteView file);

}  // namespace stratovane::content_tool
