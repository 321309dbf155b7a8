// The line of text that tells the last message acted upon.
#pragma once

#include <cstdint>

#include "base/shared.h"
#include "base/text_out.h"
#include "midi/system_exclusive.h"

namespace stratovane {

/// Kept as one small number, since both threads write it and the editor reads it. Any thread.
class StatusLine {
  public:
    void clear() { word_ = 0; }
    /// An unknown message leaves the line as it is.
    void tell(SystemExclusive::Kind kind) {
        if (kind != SystemExclusive::Kind::unknown) word_ = static_cast<std::uint32_t>(kind);
    }
    /// A program change as it is carried out; part 0..15.
    void tellProgramChange(std::int32_t location, int part) {
        word_ = programChange | static_cast<std::uint32_t>(part) << 16 |
                static_cast<std::uint32_t>(location & 0xFFFF);
    }
    void show(TextOut& out) const {
        const std::uint32_t word = word_;
        if ((word & programChange) == 0)
            return out.text(statusOf(static_cast<SystemExclusive::Kind>(word)));
        out.print("MIDI Program Change %d, Bank %d, Channel %d", word & 255, word >> 8 & 255,
                  word >> 16 & 15);
    }

  private:
    static constexpr std::uint32_t programChange = 1u << 24;
    Shared<std::uint32_t> word_{0};
};

}  // namespace stratovane
