// What a patch or setup file holds, in a few lines.
#pragma once

#include <string>

#include "content/bytes.h"

namespace stratovane::content_tool {

void showPatchInfo(const std::string& path, ByteView file);

}  // namespace stratovane::content_tool
