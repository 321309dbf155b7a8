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
    if (isPart(part)) multi.part[static_cast<std::size_t>(part)].changes.bump();
    multi.refresh = multi.refresh + 1;
    multi.dirty = true;
    if (element < firstSendSlot) return;
    const int slot = element - firstSendSlot;
    if (!isPart(part)) return parameters.rememberMaster(slot);
    for (int row = 0; row < effectRows; ++row)
        parameters.rememberInsert({HostBlock::insert, part, slot, row});
}

}  // namespace stratovane
