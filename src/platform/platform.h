// What the operating system gives: own path, debug output, message box.
#pragma once

#include <string>

namespace stratovane {

/// The full path of the file that holds this code (the plug-in library, or the program it is linked
/// into); empty when the system does not tell. Any thread.
std::string ownPath();

/// A line for the platform's debug output (standard error off Windows). UI thread.
void debugOutput(const char* line);

/// Shows a text under the title "Stratovane 2"; a question answers 1 for yes, 0 for no. UI thread.
/// Off Windows the text goes to standard error and a question is answered no, unless a hook is set.
int messageBox(const char* text, bool question);

/// Receives what messageBox would show. Null restores the default. Process-wide. Any thread.
using MessageBoxHook = int (*)(const char* text, int question);
void setMessageBoxHook(MessageBoxHook hook);

}  // namespace stratovane
