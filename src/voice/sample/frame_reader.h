// Reads the frames of a sample at any speed, with linear interpolation.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/units.h"
#include "content/sample_data.h"

namespace stratovane {

/// What of a sample is played: frames 0..end - 1, of which the last `loop` repeat.
struct FrameRange {
    std::int32_t end = 1;
    std::int32_t loop = 0;  // 0: none; the last frame is then held

    /// The frame that a fraction behind `frame` leads to.
    std::int32_t partner(std::int32_t frame) const {
        if (frame + 1 < end) return frame + 1;
        return loop > 0 ? end - loop : frame;
    }
};

/// Where a voice stands in its sample. Audio thread.
struct FramePosition {
    double frame = 0;      // 0..end; end: the sample is over
    bool over = false;     // without a loop the position has come to the end
    bool wrapped = false;  // the loop was entered again; whoever asks clears it

    void advance(double framesPerSample, const FrameRange& range) {
        if (over) return;
        frame += framesPerSample;
        while (frame >= range.end && !over) {
            wrapped |= range.loop > 0;
            over = range.loop == 0;
            frame = over ? range.end : frame - range.loop;
        }
    }
    /// How many of the next `most` samples lie before the last frame.
    int runBeforeLast(double framesPerSample, const FrameRange& range, int most) const {
        const double way = range.end - 1 - frame;
        if (!(way > 0)) return 0;
        int run = static_cast<int>(std::min(way / framesPerSample, double(most)));
        while (run > 0 && frame + run * framesPerSample >= range.end - 1) --run;
        return run;
    }
};

/// The next 32 samples of one or two channels of frames of `step` values, 16-bit or float. A sample
/// is read after the position has moved.
template <int step, int lanes, class Value>
void readPcm(const Value* values, const FrameRange& range, FramePosition& position,
             double framesPerSample, float* const* out) {
    constexpr float unit = sizeof(Value) == 2 ? 1.0f / 32768 : 1.0f;
    const auto write = [&](int i, std::int32_t frame, std::int32_t next, float fraction) {
        for (int lane = 0; lane < lanes; ++lane) {
            const float a = static_cast<float>(values[std::ptrdiff_t{step} * frame + lane]) * unit;
            const float b = static_cast<float>(values[std::ptrdiff_t{step} * next + lane]) * unit;
            out[lane][i] = a + fraction * (b - a);
        }
    };
    for (int i = 0; i < tickFrames; ++i) {
        const int run = position.runBeforeLast(framesPerSample, range, tickFrames - i);
        for (int k = 0; k < run; ++k) {
            const double at = position.frame + (k + 1) * framesPerSample;
            const auto frame = static_cast<std::int32_t>(at);
            write(i + k, frame, frame + 1, static_cast<float>(at - frame));
        }
        position.frame += run * framesPerSample;
        i += run;
        if (i == tickFrames) return;
        position.advance(framesPerSample, range);
        const std::int32_t frame =
            std::min(static_cast<std::int32_t>(position.frame), range.end - 1);
        write(i, frame, range.partner(frame), static_cast<float>(position.frame - frame));
    }
}

/// Adaptive delta: decodes frame by frame. Audio thread.
class DeltaReader {
  public:
    /// Begins at a frame below the end. `point`, 0..63, is the start point there or one behind it.
    /// `loopStart` holds a state for each channel, here and below.
    void start(const SampleData& data, const FrameRange& range, const DeltaState* loopStart,
               int point, std::int32_t frame);
    /// As readPcm.
    template <int lanes>
    void read(const SampleData& data, const FrameRange& range, const DeltaState* loopStart,
              FramePosition& position, double framesPerSample, float* const* out) {
        const auto step = static_cast<std::size_t>(data.channels());
        for (int i = 0; i < tickFrames; ++i) {
            fraction_ += framesPerSample;
            while (fraction_ >= 1 && !position.over) {
                fraction_ -= 1;
                ++frame_;
                const bool ends = frame_ == range.end;
                if (ends) {
                    position.wrapped |= range.loop > 0;
                    position.over = range.loop == 0;
                    frame_ = position.over ? range.end : range.end - range.loop;
                }
                for (int lane = 0; lane < lanes; ++lane) {
                    Channel& c = channels_[lane];
                    c.state.value += c.slope;
                    if (ends && !position.over) c.state = loopStart[lane];
                    if (position.over)
                        c.slope = 0;
                    else
                        decode(data.delta() + step * static_cast<std::size_t>(frame_), range,
                               loopStart, lane);
                }
            }
            for (int lane = 0; lane < lanes; ++lane)
                out[lane][i] = channels_[lane].state.value +
                               static_cast<float>(fraction_) * channels_[lane].slope;
        }
    }

  private:
    struct Channel {
        DeltaState state;  // of the frame; its shift is the next one's
        float slope = 0;   // to the next frame
    };

    /// The slope of the frame whose bytes are given. The last one leads to the loop or nowhere.
    void decode(const std::uint8_t* frameBytes, const FrameRange& range,
                const DeltaState* loopStart, int lane) {
        Channel& c = channels_[lane];
        if (frame_ < range.end - 1)
            c.slope = c.state.slope(frameBytes[lane]);
        else
            c.slope = range.loop > 0 ? loopStart[lane].value - c.state.value : 0;
    }

    std::int32_t frame_ = 0;
    double fraction_ = 0;
    Channel channels_[2];
};

}  // namespace stratovane
