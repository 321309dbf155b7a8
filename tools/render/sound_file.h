// The sound file, written under another name until it is whole.
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "failure.h"
#include "options.h"
#include "shared/new_file.h"

namespace stratovane::render {

/// The smallest difference that a format holds, and the largest sample.
float formatStep(Format format);
float formatCeiling(Format format);
const char* formatName(Format format);
/// With the dot.
const char* formatExtension(Format format);

class SoundFile {
  public:
    SoundFile() = default;
    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    /// Begins a temporary file beside `path`. `mostFrames` decides whether the file needs 64-bit
    /// sizes.
    std::optional<Failure> open(const std::string& path, Format format, int rate, int channels,
                                std::int64_t mostFrames);
    /// Interleaved samples, finite. Whole-number formats round to the nearest step and clip.
    std::optional<Failure> write(std::span<const float> samples);
    /// Samples that were clipped, or in a float file are above full scale.
    std::int64_t clipped() const { return clipped_; }
    /// After the last sample.
    std::optional<Failure> close();
    /// Gives the closed file its name, replacing what was there.
    std::optional<Failure> commit();

  private:
    std::string path_;
    NewFile target_;
    Format format_ = Format::wav16;
    int channels_ = 2;
    std::int64_t clipped_ = 0;
    SNDFILE* file_ = nullptr;
    std::vector<int> integers_;
};

}  // namespace stratovane::render
