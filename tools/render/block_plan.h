// Cuts a song into the blocks a host would send.
#pragma once

#include <cstdint>

#include "midi_song.h"
#include "mrx/events.h"

namespace stratovane::render {

/// One block: events firstEvent..endEvent - 1 of the song, those on frame `start + frames` acting
/// after its last frame.
struct Block {
    std::int64_t start = 0;
    std::int32_t frames = 0;
    std::size_t firstEvent = 0, endEvent = 0;
    bool loads = false;  // the plug-in may have to load before the next block
};

/// A block ends at the largest size, at every message that may load something (a block of no frames
/// when another stands on the same frame), at every change of tempo or time signature, and before
/// it holds more events than one part can take.
class BlockPlan {
  public:
    /// Up to `endFrame`, which may lie before or behind the song's end.
    BlockPlan(const Song& song, std::int32_t largestFrames, std::int64_t endFrame)
        : song_{song}, largestFrames_{largestFrames}, endFrame_{endFrame} {}

    bool done() const { return at_ >= endFrame_ && !eventWaits(); }
    Block next();
    /// Musical time at the start of a block, which must be the one `next` gave last.
    TimeInfo timeAt(const Block& block) const;

  private:
    static constexpr std::size_t mostEvents = 127;

    bool eventWaits() const {
        return event_ < song_.events.size() && song_.events[event_].frame <= endFrame_;
    }

    const Song& song_;
    std::int32_t largestFrames_;
    std::int64_t endFrame_;
    std::int64_t at_ = 0;
    std::size_t event_ = 0;
    std::size_t transport_ = 0;
};

}  // namespace stratovane::render
