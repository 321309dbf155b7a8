// A patch's scenes: slot 0 is its phrase, 1..63 are snapshots with a phrase each.
#pragma once

#include <array>
#include <memory>

#include "content/patch_record_layout.h"
#include "content/scene_record.h"

namespace stratovane {

/// Records never change once they are here, so copies of the table share them.
/// Threads: UI thread (builder before hand-over).
class SceneTable {
  public:
    using Record = std::shared_ptr<const Scene>;

    /// Null for an empty slot, and outside 0..63.
    const Scene* at(int slot) const;
    /// Raises the highest slot when needed. Answers what stood there before, or the record itself
    /// when there is no such slot.
    Record put(int slot, Record record);
    /// The highest slot that was ever filled, at least 0.
    int highest() const { return highest_; }
    int current() const { return current_; }
    /// Makes a filled slot the current one; others change nothing. Recalls no values.
    bool select(int slot);

  private:
    std::array<Record, sceneLayout::slots> records_;
    int highest_ = 0;
    int current_ = 0;
};

}  // namespace stratovane
