// A patch's scenes as they are stored: slot 0 is its phrase, 1..63 are snapshots with a phrase
// each.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "content/bytes.h"
#include "content/patch_record_layout.h"

namespace stratovane {

/// The bytes of one scene, of which at least the header is there and the size word is right. The
/// events stand at an address that suits their doubles. UI thread.
class SceneRecord {
  public:
    /// A copy of a whole record of 504 bytes or more. Loses its phrase when the events do not fit
    /// or the length is not above 0.
    explicit SceneRecord(ByteView record);

    ByteView bytes() const { return bytes_; }
    std::string_view name() const;
    bool recallsKnobs() const { return (flags() & 1) != 0; }
    bool recallsArpeggiator() const { return (flags() & 2) != 0; }
    float knob(int knob) const;  // 1..6
    /// Of the global values 17..36 and 172..251; 0 for others, which a scene does not hold.
    float global(int index) const;
    float phraseBeats() const;
    int eventCount() const;

  private:
    std::uint32_t flags() const;
    float value(int offset) const { return bytes().at<float>(static_cast<std::uint64_t>(offset)); }
    Bytes bytes_;
};

/// Threads: UI thread (builder before hand-over).
class SceneTable {
  public:
    /// Null for an empty slot, and outside 0..63.
    const SceneRecord* at(int slot) const;
    /// Raises the highest slot when needed. Answers what stood there before.
    std::unique_ptr<const SceneRecord> put(int slot, std::unique_ptr<const SceneRecord> record);
    /// The highest slot that was ever filled, at least 0.
    int highest() const { return highest_; }
    int current() const { return current_; }
    /// Makes a filled slot the current one; others change nothing. Recalls no values.
    bool select(int slot);

  private:
    std::array<std::unique_ptr<const SceneRecord>, sceneLayout::slots> records_;
    int highest_ = 0;
    int current_ = 0;
};

}  // namespace stratovane
