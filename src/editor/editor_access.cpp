#include "editor/editor_access.h"

#include "automation/host_parameters.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"

namespace stratovane {

bool EditorAccess::isPart(int part) { return part >= 0 && part < parts; }

Patch* EditorAccess::patch(int part) const {
    if (!engine) return nullptr;
    return isPart(part) ? &engine->patch(part) : &engine->master();
}

void EditorAccess::tellChange(int part, int element) const {
    if (isPart(part)) {
        multi.part[static_cast<std::size_t>(part)].changes.bump();
        parameters.refreshPart(part);
    }
    multi.refresh.bump();
    multi.dirty = true;
    if (element < firstSendSlot) return;
    const int slot = element - firstSendSlot;
    isPart(part) ? parameters.refreshInsert(part, slot) : parameters.refreshMaster(slot);
}

}  // namespace stratovane
