// Saving that never leaves half a file.
#pragma once

#include <string>

#include "content/bytes.h"

namespace stratovane {

/// Writes a temporary file beside `path` and renames it there; a link stays a link. False when that
/// failed: what was there before is then unchanged. UI thread.
bool replaceFile(const std::string& path, ByteView bytes);

}  // namespace stratovane
