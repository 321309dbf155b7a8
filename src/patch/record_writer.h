// Writes a patch as one self-contained record of bytes.
#pragma once

#include "content/bytes.h"

namespace stratovane {

class Patch;

/// The record of a patch as it stands. Send slots in which the patch has no effect of its own in
/// use take what `master` plays there, if it is not null. UI thread.
Bytes writePatchRecord(const Patch& patch, const Patch* master);

}  // namespace stratovane
