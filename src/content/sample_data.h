// One recorded sample of a sample bank, as voices read it.
#pragma once

#include <cstdint>
#include <memory>

#include "base/published.h"
#include "content/adaptive_delta.h"
#include "content/bytes.h"
#include "content/content_data.h"

namespace stratovane {

enum class SampleFormat : std::uint8_t { delta, pcm16, float32 };

/// Checked when it was read: every frame it announces is there. Any thread reads.
class SampleData {
  public:
    static constexpr int startPoints = 64;

    SampleFormat format() const { return format_; }
    int channels() const { return channels_; }  // 1, or 2 interleaved
    std::int32_t frames() const { return frames_; }
    std::int32_t rateHz() const { return rateHz_; }

    /// Values of frame 0 on: `frames` × `channels`. Of the format's own kind only.
    const std::int16_t* pcm16() const {
        return reinterpret_cast<const std::int16_t*>(bytes_.data() + headerBytes);
    }
    const float* float32() const {
        return reinterpret_cast<const float*>(bytes_.data() + headerBytes);
    }
    /// Adaptive delta: one byte a frame and channel.
    const std::uint8_t* delta() const {
        return bytes_.data() + headerBytes + recordBytes() * static_cast<std::size_t>(startPoints);
    }
    /// Adaptive delta: where the decoder of a channel stands at start point 0..63.
    DeltaState startState(int point, int channel) const;
    /// Adaptive delta: where it stands at a frame 0..frames, by decoding from the first one. Slow.
    DeltaState stateAt(std::int32_t frame, int channel) const;

    /// The frame of a start point 0..63: its square over 4096 of the length, even.
    static std::int32_t startFrame(std::int32_t frames, int point);

    static constexpr std::size_t headerBytes = 16;

  private:
    friend std::unique_ptr<SampleData> readSampleData(Bytes, ContentFault&);
    std::size_t recordBytes() const { return 4 * static_cast<std::size_t>(channels_); }

    Bytes bytes_;  // the header included; a frame of zeros behind the last one
    SampleFormat format_ = SampleFormat::pcm16;
    int channels_ = 1;
    std::int32_t frames_ = 0, rateHz_ = 0;
};

/// Where a sample is to be found while it is resident. The audio thread follows it.
using SampleSlot = Published<const SampleData>;

/// Takes a sample's bytes, or nothing when they are not a whole sample. Float values that are not
/// finite become 0. UI thread.
std::unique_ptr<SampleData> readSampleData(Bytes bytes, ContentFault& fault);

struct SampleSource {
    std::span<const float> values;  // -1..1, channels interleaved
    int channels = 1;               // 1 or 2
    std::int32_t rateHz = 44100;
};
/// A sample's bytes; values outside -1..1 are limited except in float. Any thread; adaptive delta
/// is slow.
Bytes writeSampleData(const SampleSource& source, SampleFormat format);

}  // namespace stratovane
