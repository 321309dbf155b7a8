// An element as a file of its own.
#pragma once

#include <string>

namespace stratovane {

class Patch;

/// Writes an element 1..count or 65..68 as it stands; the file is named inside after its path.
/// False when there is no such element or the file cannot be written. UI thread.
bool saveElement(const Patch& patch, int element, const std::string& path);

/// The element becomes the effect of a file: type, twelve parameters, the file's base name as its
/// name; it sounds, and no knob reaches it. Output, level and pan stay, but a send slot that was
/// empty and off is put on the first output. False when the file is not there or no element file:
/// the element is then left without effect and name. Other elements than 1..count and 65..68 change
/// nothing. UI thread.
bool loadEffectFile(Patch& patch, int element, const std::string& path);

}  // namespace stratovane
