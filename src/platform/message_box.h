// The box that the operating system itself shows.
#pragma once

namespace stratovane {

/// What messageBox does without a hook. UI thread.
int systemMessageBox(const char* text, bool question);

}  // namespace stratovane
