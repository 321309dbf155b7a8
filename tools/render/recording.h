// From samples to a finished file: first all of them to disk, then gain, end and measure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "failure.h"
#include "options.h"
#include "sound_file.h"
#include "summary.h"
#include "take.h"

namespace stratovane::render {

/// Frames that may follow the input; for an automatic tail the most there can be.
std::int64_t tailFrames(const Options& options, int rate);

/// No file is left behind unless `commit` succeeded.
class Recording {
  public:
    /// Tells the summary what the file came to.
    Recording(const Options& options, std::string output, Summary& summary)
        : options_{options}, output_{std::move(output)}, summary_{summary} {}

    /// `mostFrames`: the file will hold no more.
    std::optional<Failure> open(int rate, int channels, std::int64_t mostFrames);
    Take& take() { return take_; }
    /// Normalizing takes this for the peak instead of the take's own.
    void normalizeFrom(float peak) { peak_ = peak; }
    /// Finds the frames up to the last one that shows in the file and is louder than `quietest`.
    std::optional<Failure> findAudibleFrames(float quietest, std::int64_t& frames);
    /// The second pass: the gain over the whole take, written and measured.
    std::optional<Failure> write();
    /// Gives what is written its name.
    std::optional<Failure> commit() { return file_.commit(); }

  private:
    float gain() const;

    const Options& options_;
    const std::string output_;
    Summary& summary_;
    SoundFile file_;
    Take take_;
    std::optional<float> peak_;
};

}  // namespace stratovane::render
