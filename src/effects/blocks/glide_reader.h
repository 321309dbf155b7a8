// A read pointer that glides to its delay between control ticks.
#pragma once

#include <algorithm>

#include "effects/blocks/line.h"

namespace stratovane {

/// Reads between neighbouring entries of a line; delay is the distance to the write index plus a
/// fraction. Call order per sample: write the line, `read`, `move`, step the line.
class GlideReader {
  public:
    /// At the write index, standing still against it.
    void reset(int writeIndex) {
        index_ = writeIndex;
        fraction_ = speed_ = 0;
    }
    /// Aims at a delay of `target` samples, to be reached in `samples` samples. The pointer never
    /// turns against the write direction.
    void aim(float target, int samples, int writeIndex, int lineSize) {
        int distance = index_ - writeIndex;
        if (distance < 0) distance += lineSize;
        if (distance == lineSize - 1) distance = -1;  // rounding may step past the write index
        const float way = target - fraction_ - static_cast<float>(distance);
        speed_ = std::min(way / static_cast<float>(samples) - 1.0f, 0.0f);
    }
    template <class T>
    int nextIndex(const CircularLine<T>& line) const {
        return index_ + 1 == line.size() ? 0 : index_ + 1;
    }
    float read(const Line& line) const {
        const float here = line.entry(index_);
        return here + (line.entry(nextIndex(line)) - here) * fraction_;
    }
    StereoFrame read(const StereoLine& line) const {
        const StereoFrame here = line.entry(index_), next = line.entry(nextIndex(line));
        return {here.left + (next.left - here.left) * fraction_,
                here.right + (next.right - here.right) * fraction_};
    }
    /// As `read`, `offset` frames (0..size - 1) further behind.
    StereoFrame read(const StereoLine& line, int offset) const {
        const int n = line.size();
        const int i = index_ + offset >= n ? index_ + offset - n : index_ + offset;
        const StereoFrame here = line.entry(i), next = line.entry(i + 1 == n ? 0 : i + 1);
        return {here.left + (next.left - here.left) * fraction_,
                here.right + (next.right - here.right) * fraction_};
    }
    void move(int lineSize) {
        fraction_ += speed_;
        while (fraction_ < 0) {
            fraction_ += 1;
            index_ = (index_ == 0 ? lineSize : index_) - 1;
        }
    }

  private:
    int index_ = 0;
    float fraction_ = 0;
    float speed_ = 0;  // per sample, -1 keeps the delay
};

}  // namespace stratovane
