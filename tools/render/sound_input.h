// A sound file as stereo frames.
#pragma once

#include <sndfile.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/stereo_frame.h"
#include "failure.h"

namespace stratovane::render {

/// Whether the first bytes are those of a sound file that libsndfile reads.
bool isSoundFile(const std::string& path);

class SoundInput {
  public:
    SoundInput() = default;
    ~SoundInput();
    SoundInput(const SoundInput&) = delete;
    SoundInput& operator=(const SoundInput&) = delete;

    /// Refuses what is damaged, has more than two channels or a rate outside 8..192 kHz.
    std::optional<Failure> open(const std::string& path);
    int rate() const { return info_.samplerate; }
    /// As many as the file's head promises, which may be wrong.
    std::int64_t frames() const {
        return std::clamp<std::int64_t>(info_.frames, 0, std::int64_t{1} << 48);
    }

    /// Reads frames, a mono file's sample for both channels, and counts them in `frames`: fewer
    /// than fit only at the end. Samples that are no finite numbers are read as 0.
    std::optional<Failure> read(std::span<StereoFrame> to, std::size_t& frames);
    std::int64_t invalidSamples() const { return invalid_; }

  private:
    std::string path_;
    SNDFILE* file_ = nullptr;
    SF_INFO info_{};
    std::vector<float> samples_;
    std::int64_t invalid_ = 0;
};

}  // namespace stratovane::render
