// Making room for an element among the others, and closing the gap of one.
#pragma once

namespace stratovane {

class Patch;

/// Whether an element may be inserted as a number: 1..count + 1, and one of at most 63. Any thread.
bool hasRoom(const Patch& patch, int element);
/// Elements from a number that has room on move up by one; the one that stands there stays as it
/// is, to be overwritten. Builder.
void makeRoom(Patch& fresh, int element);

/// Elements behind a number 1..count move down by one. Builder.
void removeElement(Patch& fresh, int element);

}  // namespace stratovane
