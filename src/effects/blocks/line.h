// A circular line: the memory of every echo, comb and all-pass.
#pragma once

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "base/stereo_frame.h"

namespace stratovane {

/// The write index moves down by one per sample; a tap d samples behind it is read at write + d.
/// Written before it is read, tap 0 is the sample just written; read before it is written, tap d is
/// x[n - d].
template <class T>
class CircularLine {
  public:
    /// Room for `samples` (at least 1), cleared; false without memory, and then it has none.
    bool resize(int samples) {
        try {
            data_.assign(static_cast<std::size_t>(std::max(samples, 1)), T{});
        } catch (const std::bad_alloc&) {
            data_.clear();
            return false;
        }
        write_ = 0;
        return true;
    }
    void clear() {
        std::fill(data_.begin(), data_.end(), T{});
        write_ = 0;
    }
    int size() const { return static_cast<int>(data_.size()); }

    /// d is 0..size() - 1.
    T& at(int d) {
        const int i = write_ + d, n = size();
        return data_[static_cast<std::size_t>(i >= n ? i - n : i)];
    }
    const T& tap(int d) const { return const_cast<CircularLine*>(this)->at(d); }
    void write(const T& x) { data_[static_cast<std::size_t>(write_)] = x; }
    void step() { write_ = (write_ == 0 ? size() : write_) - 1; }

    int writeIndex() const { return write_; }
    /// By place in memory, whatever the write index.
    const T& entry(int index) const { return data_[static_cast<std::size_t>(index)]; }

  private:
    std::vector<T> data_;
    int write_ = 0;
};

using Line = CircularLine<float>;
using StereoLine = CircularLine<StereoFrame>;

/// A Schroeder all-pass laid into a line that several share: it writes where the stage before it
/// reads. y = z - gain * x with z the line's value at `readTap`; x + gain * y goes to `writeTap`.
inline float allPass(Line& line, int writeTap, int readTap, float gain, float x) {
    const float y = line.tap(readTap) - gain * x;
    line.at(writeTap) = x + gain * y;
    return y;
}

}  // namespace stratovane
