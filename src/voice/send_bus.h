// Where the sends of parts and effects gather for one effect.
#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "base/stereo_frame.h"

namespace stratovane {

/// Silent until something is added, and again once its effect has taken it. Audio thread but for
/// `prepare`.
class SendBus {
  public:
    void prepare(int frames) {
        frames_.assign(static_cast<std::size_t>(frames), StereoFrame{});
        written_ = false;
    }
    void add(std::span<const StereoFrame> x, StereoGain gain, int offset) {
        StereoFrame* to = frames_.data() + offset;
        for (std::size_t i = 0; i < x.size(); ++i) {
            to[i].left += x[i].left * gain.left;
            to[i].right += x[i].right * gain.right;
        }
        written_ = true;
    }
    bool written() const { return written_; }
    std::span<StereoFrame> frames(int offset, int count) {
        return {frames_.data() + offset, static_cast<std::size_t>(count)};
    }
    void clear(int offset, int count) {
        std::fill_n(frames_.begin() + offset, count, StereoFrame{});
        written_ = false;
    }

  private:
    std::vector<StereoFrame> frames_;
    bool written_ = false;
};

inline constexpr int sendBusCount = 4;
using SendBuses = std::array<SendBus, sendBusCount>;

}  // namespace stratovane
