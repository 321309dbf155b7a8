// Tells whether a render could still see what has been taken away from it.
#pragma once

#include <atomic>
#include <cstdint>

namespace stratovane {

/// The audio thread enters and leaves; the UI thread takes a stamp after it has replaced a
/// published pointer, and frees what it replaced once that stamp has passed. Sequentially
/// consistent: either the render sees the new pointer or the stamp sees the render.
class RenderEpoch {
  public:
    /// A stay of the audio thread.
    class Stay {
      public:
        explicit Stay(RenderEpoch& epoch) noexcept : epoch_{epoch} { epoch_.count_.fetch_add(1); }
        ~Stay() { epoch_.count_.fetch_add(1); }
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;

      private:
        RenderEpoch& epoch_;
    };

    std::uint32_t stamp() const noexcept { return count_.load(); }
    /// Whether the render that ran at the stamp, if any, is over.
    bool passed(std::uint32_t stamp) const noexcept {
        return (stamp & 1) == 0 || count_.load() != stamp;
    }

  private:
    std::atomic<std::uint32_t> count_{0};  // odd while a render runs
};

}  // namespace stratovane
