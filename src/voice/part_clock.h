// A part's frame count and the values that move with it whether the part sounds or not.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/units.h"
#include "voice/part_lfo.h"

namespace stratovane {

/// What every voice of a part reads at its tick.
struct PartStep {
    float pressure = 0;  // channel pressure, smoothed
    std::array<float, 2> lfo{};
};

/// Steps fall on every 32nd frame of part time from its first frame on, silent frames too, so that
/// a tick finds the same step however blocks are cut. Audio thread but for `prepare`.
class PartClock {
  public:
    /// The LFOs draw from generators of their own.
    explicit PartClock(std::uint32_t seed1 = 1, std::uint32_t seed2 = 2)
        : lfos_{PartLfo{seed1}, PartLfo{seed2}} {}
    /// Room for pieces of `maxFrames`; nothing else changes. Nothing may render meanwhile.
    void prepare(double rate, int maxFrames) {
        constexpr double pressureSeconds = 0.02;
        pressurePerStep_ = oneMinusExp(tickFrames / (pressureSeconds * rate));
        steps_.resize(static_cast<std::size_t>(maxFrames / tickFrames + 2));
    }
    /// Frames rendered so far: the frame of an event handled now.
    std::int64_t frame() const { return frame_; }

    /// Computes the steps that fall into the next `frames` (at most maxFrames) frames.
    void beginPiece(int frames, float pressureTarget) {
        steps_[0] = last_;
        firstStep_ = stepsUpTo(frame_) - 1;
        const std::int64_t count = stepsUpTo(frame_ + frames) - stepsUpTo(frame_);
        for (std::int64_t i = 0; i < count; ++i) {
            advance(pressureTarget);
            steps_[static_cast<std::size_t>(i + 1)] = last_;
        }
    }
    /// The last step at or before a frame of this piece.
    const PartStep& at(std::int64_t frame) const {
        return steps_[static_cast<std::size_t>(frame / tickFrames - firstStep_)];
    }
    void endPiece(int frames) { frame_ += frames; }

    /// Rate and wave of LFO 0 or 1; before the piece they are for.
    void followLfo(std::size_t lfo, const LfoControls& controls, float beatsPerStep) {
        lfos_[lfo].follow(controls, beatsPerStep);
        last_.lfo[lfo] = lfos_[lfo].value();
    }
    /// A note may restart LFO 0 or 1 between two steps, without moving these.
    void noteOn(std::size_t lfo, const LfoControls& controls, bool firstKey) {
        lfos_[lfo].noteOn(controls, firstKey);
        last_.lfo[lfo] = lfos_[lfo].value();
    }
    /// Values as of the last step, for what happens between two pieces.
    const PartStep& now() const { return last_; }

    /// The smoothed pressure is 0 at once.
    void resetPressure() { last_.pressure = 0; }

    /// Lets silent frames pass.
    void skip(int frames, float pressureTarget) {
        for (auto i = stepsUpTo(frame_ + frames) - stepsUpTo(frame_); i > 0; --i)
            advance(pressureTarget);
        frame_ += frames;
    }

  private:
    /// How many steps fall on the frames below `end`.
    static std::int64_t stepsUpTo(std::int64_t end) { return (end + tickFrames - 1) / tickFrames; }
    void advance(float pressureTarget) {
        last_.pressure += (pressureTarget - last_.pressure) * pressurePerStep_;
        for (std::size_t i = 0; i < lfos_.size(); ++i) {
            lfos_[i].advance();
            last_.lfo[i] = lfos_[i].value();
        }
    }

    float pressurePerStep_ = 1;
    std::int64_t frame_ = 0;
    std::int64_t firstStep_ = -1;  // number of the step in steps_[0]
    PartStep last_;
    std::array<PartLfo, 2> lfos_;
    std::vector<PartStep> steps_;
};

}  // namespace stratovane
