#include "patch/scene_table.h"

#include <cassert>
#include <cmath>
#include <cstring>
#include <utility>

#include "patch/parameter_ids.h"

namespace stratovane {

namespace layout = sceneLayout;

SceneRecord::SceneRecord(ByteView record) : bytes_(record.data(), record.data() + record.size()) {
    assert(record.size() >= layout::headerBytes);
    const auto room = (bytes_.size() - layout::headerBytes) / layout::eventBytes;
    const std::int32_t events = bytes().at<std::int32_t>(layout::eventCount);
    const bool fits = events >= 0 && static_cast<std::uint64_t>(events) <= room;
    const bool lasts = std::isfinite(phraseBeats()) && phraseBeats() > 0.0f;
    if (!fits || !lasts) std::memset(bytes_.data() + layout::eventCount, 0, sizeof events);
}

std::string_view SceneRecord::name() const {
    return bytes().part(layout::name, layout::nameBytes).terminatedText();
}
std::uint32_t SceneRecord::flags() const { return bytes().at<std::uint32_t>(layout::flags); }
float SceneRecord::knob(int knob) const {
    return knob >= 1 && knob <= 6 ? value(layout::knobs + 4 * (knob - 1)) : 0.0f;
}
float SceneRecord::global(int index) const {
    constexpr int first = global::firstArpeggiator, count = 20, steps = 80;
    if (index >= first && index < first + count)
        return value(layout::arpeggiator + 4 * (index - first));
    if (index >= global::firstStep && index < global::firstStep + steps)
        return value(layout::steps + 4 * (index - global::firstStep));
    return 0.0f;
}
float SceneRecord::phraseBeats() const { return value(layout::phraseBeats); }
int SceneRecord::eventCount() const { return bytes().at<std::int32_t>(layout::eventCount); }

const SceneRecord* SceneTable::at(int slot) const {
    return slot >= 0 && slot < layout::slots ? records_[static_cast<std::size_t>(slot)].get()
                                             : nullptr;
}

std::unique_ptr<const SceneRecord> SceneTable::put(int slot,
                                                   std::unique_ptr<const SceneRecord> record) {
    if (slot < 0 || slot >= layout::slots) return record;
    if (record && slot > highest_) highest_ = slot;
    return std::exchange(records_[static_cast<std::size_t>(slot)], std::move(record));
}

bool SceneTable::select(int slot) {
    if (!at(slot)) return false;
    current_ = slot;
    return true;
}

}  // namespace stratovane
