#include "patch/scene_table.h"

#include <utility>

namespace stratovane {

SceneTable& SceneTable::operator=(const SceneTable& other) {
    records_ = other.records_;
    for (std::size_t i = 0; i < records_.size(); ++i) published_[i].publish(records_[i].get());
    highest_ = other.highest_;
    current_ = other.current_;
    return *this;
}

const Scene* SceneTable::at(int slot) const {
    return slot >= 0 && slot < sceneLayout::slots
               ? published_[static_cast<std::size_t>(slot)].read()
               : nullptr;
}

SceneTable::Record SceneTable::put(int slot, Record record) {
    if (slot < 0 || slot >= sceneLayout::slots) return record;
    if (record && slot > highest_) highest_ = slot;
    const auto at = static_cast<std::size_t>(slot);
    published_[at].exchange(record.get());
    return std::exchange(records_[at], std::move(record));
}

bool SceneTable::select(int slot) {
    if (!at(slot)) return false;
    current_ = slot;
    return true;
}

}  // namespace stratovane
