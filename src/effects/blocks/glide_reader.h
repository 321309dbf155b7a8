// A read pointer that glides to its delay between control ticks.
#pragma once

#include <algorithm>

#include "effects/blocks/line.h"

namespace stratovane {

/// Reads between neighbouring entries of a line; delay is the distance to the write index plus a
/// fraction. Call order per sample: write the line, `read`, `move`, step the line. In double: at
/// high rates a float delay has no digits left for the place between two samples.
class GlideReader {
  public:
    /// At the write index, standing still against it.
    void reset(int writeIndex) {
        index_ = writeIndex;
        fraction_ = speed_ = 0;
    }
    /// Aims at a delay of `target` samples, to be reached in `samples` samples. The pointer never
    /// turns against the write direction.
    void aim(double target, int samples, int writeIndex, int lineSize) {
        int distance = index_ - writeIndex;
        if (distance < 0) distance += lineSize;
        if (distance == lineSize - 1) distance = -1;  // rounding may step past the write index
        const double way = target - fraction_ - distance;
        speed_ = std::min(way * (1.0 / samples) - 1, 0.0);
    }
    template <class T>
    int nextIndex(const CircularLine<T>& line) const {
        return index_ + 1 == line.size() ? 0 : index_ + 1;
    }
    float read(const Line& line) const {
        const float here = line.entry(index_);
        return here + (line.entry(nextIndex(line)) - here) * static_cast<float>(fraction_);
    }
    StereoFrame read(const StereoLine& line) const {
        return between(line.entry(index_), line.entry(nextIndex(line)));
    }
    /// As `read`, `offset` frames (0..size - 1) further behind.
    StereoFrame read(const StereoLine& line, int offset) const {
        const int n = line.size();
        const int i = index_ + offset >= n ? index_ + offset - n : index_ + offset;
        return between(line.entry(i), line.entry(i + 1 == n ? 0 : i + 1));
    }
    void move(int lineSize) {
        fraction_ += speed_;
        while (fraction_ < 0) {
            fraction_ += 1;
            index_ = (index_ == 0 ? lineSize : index_) - 1;
        }
    }

  private:
    StereoFrame between(StereoFrame here, StereoFrame next) const {
        const auto share = static_cast<float>(fraction_);
        return {here.left + (next.left - here.left) * share,
                here.right + (next.right - here.right) * share};
    }

    int index_ = 0;
    double fraction_ = 0;
    double speed_ = 0;  // per sample, -1 keeps the delay
};

}  // namespace stratovane
