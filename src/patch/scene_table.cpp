#include "patch/scene_table.h"

#include <utility>

namespace stratovane {

const Scene* SceneTable::at(int slot) const {
    return slot >= 0 && slot < sceneLayout::slots ? records_[static_cast<std::size_t>(slot)].get()
                                                  : nullptr;
}

SceneTable::Record SceneTable::put(int slot, Record record) {
    if (slot < 0 || slot >= sceneLayout::slots) return record;
    if (record && slot > highest_) highest_ = slot;
    return std::exchange(records_[static_cast<std::size_t>(slot)], std::move(record));
}

bool SceneTable::select(int slot) {
    if (!at(slot)) return false;
    current_ = slot;
    return true;
}

}  // namespace stratovane
