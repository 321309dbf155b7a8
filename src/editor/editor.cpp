#include "editor/editor.h"

#include "editor/effect_commands.h"
#include "editor/element_commands.h"
#include "editor/scene_commands.h"

namespace stratovane {

Editor::Editor() = default;

Editor::Editor(const EditorAccess& access)
    : elements_{std::make_unique<ElementCommands>(access)},
      effects_{std::make_unique<EffectCommands>(access)},
      scenes_{std::make_unique<SceneCommands>(access)} {}

Editor::~Editor() = default;

// Without views there is nothing to open, and no key or wheel that a control would take.

bool Editor::open(void*) { return false; }

bool Editor::keyDown(std::int32_t, std::int32_t, float) { return false; }

bool Editor::keyUp(std::int32_t, std::int32_t, float) { return false; }

bool Editor::wheel(float) { return false; }

}  // namespace stratovane
