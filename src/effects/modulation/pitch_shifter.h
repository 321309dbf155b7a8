// The engine of "Detune" and "Pitch Shift": two taps a side that wander along a line and
// crossfade.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>

#include "effects/blocks/curves.h"
#include "effects/blocks/line.h"

namespace stratovane {

/// One side: where its first tap stands in the grain.
struct ShiftVoice {
    float offset = 0;  // samples, 0..span; the second tap stands a span behind

    /// `change` is the growth of the delay per sample: 1 - the ratio of pitches.
    void move(float change, float span) {
        offset += change;
        if (offset >= span) offset -= span;
        if (offset < 0) offset += span;
    }
};

/// Per sample: write the line, move the offsets, read.
class PitchShifter {
  public:
    enum class Side { left, right };

    bool prepare(float rate) { return line_.resize(static_cast<int>(rate * lineSeconds)); }
    void reset() {
        line_.clear();
        left_ = right_ = {};
        last_ = {};
    }
    void setMix(float v) {
        dry_ = dryGain(v);
        wet_ = wetGain(v);
    }
    /// The growth of each side's delay per sample, above -2 and below 1.
    void setChange(float left, float right) {
        leftChange_ = left;
        rightChange_ = right;
    }
    /// "Latency" v: grains of 5 to 40 ms.
    void setSpan(float v, float rate) {
        span_ = std::max(static_cast<int>((0.035f * v + 0.005f) * rate), 1);
        const auto span = static_cast<float>(span_);
        left_.offset = std::fmod(left_.offset, span);
        right_.offset = std::fmod(right_.offset, span);
    }
    int span() const { return span_; }
    /// A delay of both taps in samples, up to one second.
    void setDelay(float samples) {
        delay_ = static_cast<int>(samples);
        delayFraction_ = samples - static_cast<float>(delay_);
    }
    /// What each side of the line gets of the last output, and from which side.
    void setFeedback(float gain, Side intoLeft, Side intoRight) {
        feedback_ = gain;
        intoLeft_ = intoLeft;
        intoRight_ = intoRight;
    }

    void render(std::span<StereoFrame> io) {
        const float dry = dry_, wet = wet_, feedback = feedback_;
        const float leftChange = leftChange_, rightChange = rightChange_;
        const auto span = static_cast<float>(span_);
        const bool crossLeft = intoLeft_ == Side::right, crossRight = intoRight_ == Side::left;
        ShiftVoice left = left_, right = right_;
        StereoFrame last = last_;
        for (StereoFrame& f : io) {
            line_.write({f.left + feedback * (crossLeft ? last.right : last.left),
                         f.right + feedback * (crossRight ? last.left : last.right)});
            left.move(leftChange, span);
            right.move(rightChange, span);
            last = {read<&StereoFrame::left>(left.offset), read<&StereoFrame::right>(right.offset)};
            f.left = dry * f.left + wet * last.left;
            f.right = dry * f.right + wet * last.right;
            line_.step();
        }
        left_ = left;
        right_ = right;
        last_ = last;
    }

  private:
    static constexpr float lineSeconds = 1.2f;  // a second of delay and two grains

    template <float StereoFrame::*side>
    float read(float offset) const {
        // Whole delay and fraction are kept apart: a float that holds a second of samples has no
        // digits left for the place between two of them.
        const float position = offset + delayFraction_;
        const int whole = static_cast<int>(position), near = whole + delay_, far = near + span_;
        const float fraction = position - static_cast<float>(whole);
        const auto between = [&](int d) {
            const float here = line_.tap(d).*side;
            return here + (line_.tap(d + 1).*side - here) * fraction;
        };
        const float first = between(near), second = between(far);
        const float out = 1.0f - offset * (1.0f / static_cast<float>(span_)), x = out * out;
        return first + (second - first) * (2.0f * x - x * x);
    }

    float dry_ = 1, wet_ = 0;
    float leftChange_ = 0, rightChange_ = 0;
    int span_ = 1, delay_ = 0;
    float delayFraction_ = 0;
    float feedback_ = 0;
    Side intoLeft_ = Side::left, intoRight_ = Side::right;

    ShiftVoice left_, right_;
    StereoFrame last_;  // last output, before the mix

    StereoLine line_;
};

}  // namespace stratovane
