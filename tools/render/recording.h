// From samples to a finished file: first all of them to disk, then gain, end and measure.
#pragma once

#include <cstdint>
#include <optional>

#include "failure.h"
#include "options.h"
#include "sound_file.h"
#include "summary.h"
#include "take.h"

namespace stratovane::render {

/// Frames that may follow the input; for an automatic tail the most there can be.
std::int64_t tailFrames(const Options& options, int rate);

/// No file is left behind unless `finish` succeeded.
class Recording {
  public:
    explicit Recording(const Options& options) : options_{options} {}

    /// `mostFrames`: the file will hold no more.
    std::optional<Failure> open(int rate, int channels, std::int64_t mostFrames);
    Take& take() { return take_; }
    /// Finds the frames up to the last one that shows in the file and is louder than `quietest`.
    std::optional<Failure> findAudibleFrames(float quietest, std::int64_t& frames);
    /// The second pass: the gain over the whole take, written and measured.
    std::optional<Failure> finish();
    Summary& summary() { return summary_; }

  private:
    float gain() const;

    const Options& options_;
    SoundFile file_;
    Take take_;
    Summary summary_;
};

}  // namespace stratovane::render
