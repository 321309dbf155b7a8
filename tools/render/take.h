// What was rendered, kept on disk until its last audible frame and its peak are known.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "failure.h"

namespace stratovane::render {

/// A nameless temporary file of interleaved floats in the folder of the output, so that a long song
/// takes disk and not memory.
class Take {
  public:
    /// `beside`: the file whose folder is used.
    std::optional<Failure> open(const std::string& beside, int channels);
    /// Appends `frames` of as many buffers as there are channels.
    std::optional<Failure> append(std::span<float* const> buffers, std::int32_t frames);
    /// Appends interleaved frames.
    std::optional<Failure> append(std::span<const float> interleaved);
    /// Forgets what lies behind `frames`.
    void cutTo(std::int64_t frames) { frames_ = std::min(frames_, frames); }
    std::int64_t frames() const { return frames_; }
    /// The largest magnitude of all finite samples appended.
    float peak() const { return peak_; }

    /// Reads up to `capacity` frames from `frame` on into `samples`, as many as are there.
    std::optional<Failure> read(std::int64_t frame, std::size_t capacity,
                                std::vector<float>& samples);
    /// Frames up to the last one with a sample above `threshold`; 0 when there is none.
    std::optional<Failure> findAudibleFrames(float threshold, std::int64_t& frames);

  private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file_;
    std::size_t channels_ = 0;
    std::int64_t frames_ = 0;
    float peak_ = 0;
    std::vector<float> interleaved_;
};

}  // namespace stratovane::render
