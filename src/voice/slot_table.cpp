#include "voice/slot_table.h"

#include <algorithm>

namespace stratovane {

SlotTable::SlotTable() {
    for (int i = 0; i < voicesPerPart; ++i) (*this)[i].voice = static_cast<std::uint8_t>(i);
}

int SlotTable::insert(int element) {
    int place = active_;
    while (place > 0 && (*this)[place - 1].element > element) --place;
    const std::uint8_t voice = (*this)[active_].voice;
    const auto at = slots_.begin() + place;
    std::move_backward(at, slots_.begin() + active_, slots_.begin() + active_ + 1);
    *at = VoiceSlot{};
    at->voice = voice;
    at->element = static_cast<std::uint8_t>(element);
    ++active_;
    return place;
}

int SlotTable::reinsert(int slot, int element) {
    removeAt(slot);
    return insert(element);
}

void SlotTable::free(int slot) { removeAt(slot); }

int SlotTable::slotOf(int voice) const {
    for (int i = 0; i < active_; ++i)
        if ((*this)[i].voice == voice) return i;
    return -1;
}

// The freed voice is parked right behind the slots in use: it is the next one taken.
void SlotTable::removeAt(int slot) {
    const VoiceSlot freed = (*this)[slot];
    const auto at = slots_.begin() + slot;
    std::move(at + 1, slots_.begin() + active_, at);
    --active_;
    (*this)[active_] = freed;
}

}  // namespace stratovane
