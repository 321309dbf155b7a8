// What the audio thread may still be using, on its way to destruction.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "base/render_epoch.h"

namespace stratovane {

/// Things are freed in order, each a few idle calls after it was retired and when no render can see
/// it any more. UI thread.
class RetiredList {
  public:
    template <class T>
    void add(std::unique_ptr<T> thing, const RenderEpoch& epoch) {
        add(std::shared_ptr<T>{std::move(thing)}, epoch);
    }
    /// What is shared: only this share of it goes.
    template <class T>
    void add(std::shared_ptr<T> thing, const RenderEpoch& epoch) {
        if (thing) queue_.push_back({std::move(thing), epoch.stamp(), idleCalls});
    }
    /// Once an idle call.
    void tick(const RenderEpoch& epoch) {
        if (queue_.empty()) return;
        Entry& head = queue_.front();
        if (--head.countdown < 0 && epoch.passed(head.stamp)) queue_.pop_front();
    }
    bool empty() const { return queue_.empty(); }

  private:
    static constexpr int idleCalls = 4;
    struct Entry {
        std::shared_ptr<const void> thing;
        std::uint32_t stamp;
        int countdown;
    };
    std::deque<Entry> queue_;
};

}  // namespace stratovane
