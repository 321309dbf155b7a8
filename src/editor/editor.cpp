#include "editor/editor.h"

namespace stratovane {

// Without views there is nothing to open, and no key or wheel that a control would take.

bool Editor::open(void*) { return false; }

bool Editor::keyDown(std::int32_t, std::int32_t, float) { return false; }

bool Editor::keyUp(std::int32_t, std::int32_t, float) { return false; }

bool Editor::wheel(float) { return false; }

}  // namespace stratovane
