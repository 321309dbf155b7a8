// A patch's scenes: slot 0 is its phrase, 1..63 are snapshots with a phrase each.
#pragma once

#include <array>
#include <memory>

#include "base/published.h"
#include "base/shared.h"
#include "content/patch_record_layout.h"
#include "content/scene_record.h"

namespace stratovane {

/// Records never change once they are here, so copies of the table share them.
/// Threads: the UI thread (builder before hand-over) puts, copies and asks for the highest slot;
/// the rest may be called from any. What a slot held must outlive a render that may still read it.
class SceneTable {
  public:
    using Record = std::shared_ptr<const Scene>;

    SceneTable() = default;
    SceneTable& operator=(const SceneTable& other);

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
    std::array<Published<const Scene>, sceneLayout::slots> published_;  // of the records
    int highest_ = 0;
    Shared<std::int32_t> current_{0};
};

}  // namespace stratovane
