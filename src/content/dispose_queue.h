// What was replaced while the audio thread might still look at it.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>

namespace stratovane {

/// Things are freed in order: the first on the sixth idle step after it was queued, each further
/// one six steps after the one before. UI thread.
class DisposeQueue {
  public:
    /// `stamp` says which render ran when the thing was replaced; see `step`.
    template <class T>
    void add(std::unique_ptr<T> thing, std::uint32_t stamp = 0) {
        if (thing) entries_.push_back({std::shared_ptr<void>{std::move(thing)}, stamp});
    }
    /// Once an idle call. `passed` tells whether the render of a stamp is over; until then the
    /// oldest thing stays. Answers whether one was freed.
    template <class Passed>
    bool step(Passed passed) {
        if (entries_.empty()) return false;
        Entry& oldest = entries_.front();
        if (oldest.countdown-- >= 0) return false;
        if (!passed(oldest.stamp)) {
            oldest.countdown = -1;
            return false;
        }
        entries_.pop_front();
        return true;
    }
    void clear() { entries_.clear(); }
    bool empty() const { return entries_.empty(); }

  private:
    struct Entry {
        std::shared_ptr<void> thing;
        std::uint32_t stamp = 0;
        int countdown = 4;
    };
    std::deque<Entry> entries_;
};

}  // namespace stratovane
