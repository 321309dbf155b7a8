#include "editor/scene_commands.h"

#include <memory>
#include <utility>

#include "content/phrase_import.h"
#include "engine/multi_setup.h"
#include "patch/editing/scene_store.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

Patch* SceneCommands::patchOf(int part) const {
    return EditorAccess::isPart(part) ? access_.patch(part) : nullptr;
}

/// The knobs that the editor shows may have moved.
void SceneCommands::tellChange(int part) const {
    const Patch& patch = *patchOf(part);
    PartSetup& setup = access_.multi.part[static_cast<std::size_t>(part)];
    for (std::size_t i = 0; i < setup.knobs.size(); ++i)
        setup.knobs[i] = patch.get(0, global::knobs[i]);
    access_.tellChange(part, 0);
}

bool SceneCommands::store(int part, int slot, std::uint32_t flags) {
    Patch* patch = patchOf(part);
    if (patch == nullptr || !storeScene(*patch, slot, flags)) return false;
    tellChange(part);
    return true;
}

bool SceneCommands::select(int part, int slot) {
    Patch* patch = patchOf(part);
    if (patch == nullptr || !patch->selectScene(slot)) return false;
    tellChange(part);
    return true;
}

bool SceneCommands::importPhrase(int part, const std::string& path) {
    Patch* patch = patchOf(part);
    if (patch == nullptr) return false;
    auto scene = stratovane::importPhrase(path, access_.trace);
    if (!scene) return false;
    patch->takePhrase(std::make_shared<const Scene>(std::move(*scene)));
    tellChange(part);
    return true;
}

}  // namespace stratovane
