// Content that a part no longer selects but whose voices may still sound.
#pragma once

#include <cstdint>
#include <deque>

#include "content/content_kind.h"

namespace stratovane {

struct WaitingRelease {
    ContentId id;
    std::uint32_t stamp = 0;  // which render ran when the selection changed

    bool operator==(const WaitingRelease&) const = default;
};

/// One part's releases, oldest first. UI thread.
class WaitingReleases {
  public:
    void add(WaitingRelease release) { list_.push_back(release); }
    bool empty() const { return list_.empty(); }
    const WaitingRelease& oldest() const { return list_.front(); }
    void removeOldest() { list_.pop_front(); }

  private:
    std::deque<WaitingRelease> list_;
};

}  // namespace stratovane
