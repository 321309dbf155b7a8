// The events of one part and block.
#pragma once

#include <array>
#include <cstdint>

namespace stratovane {

struct EventRecord {
    std::int32_t frame = 0;   // within the block
    std::uint8_t status = 0;  // with channel
    std::uint8_t data1 = 0, data2 = 0;
    std::uint8_t extra = 0;  // a note's detune in cents (signed), else 0
};
static_assert(sizeof(EventRecord) == 8);

/// Up to 127 records in the order they act; a frame before that of the record in front acts with
/// it. Audio thread.
class PartEvents {
  public:
    static constexpr int capacity = 127;

    /// False, and nothing stored, when the list is full.
    bool append(const EventRecord& record) {
        if (count_ == capacity) return false;
        records_[static_cast<std::size_t>(count_++)] = record;
        return true;
    }
    void clear() { count_ = 0; }
    const EventRecord* begin() const { return records_.data(); }
    const EventRecord* end() const { return records_.data() + count_; }
    int size() const { return count_; }
    /// Frame of the last record, 0 when there is none: where a message joins that has no time of
    /// its own.
    std::int32_t lastFrame() const {
        return count_ == 0 ? 0 : records_[static_cast<std::size_t>(count_ - 1)].frame;
    }

  private:
    std::array<EventRecord, capacity> records_{};
    int count_ = 0;
};

using PartEventLists = std::array<PartEvents, 16>;

}  // namespace stratovane
