// Where a patch lives.
#pragma once

namespace stratovane {

class ContentLibrary;
struct KeySource;

struct PatchPlace {
    int part = 0;               // seeds the random draws of effects
    KeySource* keys = nullptr;  // followed by effects; null: none
    int outputPairs = 16;
    ContentLibrary* library = nullptr;  // null: nothing is ever found
};

}  // namespace stratovane
