// The engine of "Detune" and "Pitch Shift": two taps a side that wander along a line and
// crossfade.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>

#include "effects/blocks/curves.h"
#include "effects/blocks/line.h"

namespace stratovane {

/// One side: where its first tap stands in the grain. In double: the change of some thousandths of
/// a sample adds up all the time that the unit runs.
struct ShiftVoice {
    double offset = 0;  // samples, 0..span; the second tap stands a span behind

    /// `change` is the growth of the delay per sample: 1 - the ratio of pitches.
    void move(double change, double span) {
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
    void setChange(double left, double right) {
        leftChange_ = left;
        rightChange_ = right;
    }
    /// "Latency" v: grains of 5 to 40 ms.
    void setSpan(float v, float rate) {
        span_ = std::max(static_cast<int>((0.035f * v + 0.005f) * rate), 1);
        const auto span = static_cast<double>(span_);
        left_.offset = std::fmod(left_.offset, span);
        right_.offset = std::fmod(right_.offset, span);
    }
    int span() const { return span_; }
    /// A delay of both taps in samples, up to one second.
    void setDelay(double samples) {
        delay_ = static_cast<int>(samples);
        delayFraction_ = samples - delay_;
    }
    /// What each side of the line gets of the last output, and from which side.
    void setFeedback(float gain, Side intoLeft, Side intoRight) {
        feedback_ = gain;
        intoLeft_ = intoLeft;
        intoRight_ = intoRight;
    }

    void render(std::span<StereoFrame> io) {
        const float dry = dry_, wet = wet_, feedback = feedback_;
        const double leftChange = leftChange_, rightChange = rightChange_;
        const auto span = static_cast<double>(span_), perSpan = 1 / span;
        const bool crossLeft = intoLeft_ == Side::right, crossRight = intoRight_ == Side::left;
        ShiftVoice left = left_, right = right_;
        StereoFrame last = last_;
        for (StereoFrame& f : io) {
            line_.write({f.left + feedback * (crossLeft ? last.right : last.left),
                         f.right + feedback * (crossRight ? last.left : last.right)});
            left.move(leftChange, span);
            right.move(rightChange, span);
            last = {read<&StereoFrame::left>(left.offset, perSpan),
                    read<&StereoFrame::right>(right.offset, perSpan)};
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
    float read(double offset, double perSpan) const {
        const double position = offset + delayFraction_;
        const int whole = static_cast<int>(position), near = whole + delay_, far = near + span_;
        const auto fraction = static_cast<float>(position - whole);
        const auto between = [&](int d) {
            const float here = line_.tap(d).*side;
            return here + (line_.tap(d + 1).*side - here) * fraction;
        };
        const float first = between(near), second = between(far);
        const auto out = static_cast<float>(1 - offset * perSpan), x = out * out;
        return first + (second - first) * (2.0f * x - x * x);
    }

    float dry_ = 1, wet_ = 0;
    double leftChange_ = 0, rightChange_ = 0;
    int span_ = 1, delay_ = 0;
    double delayFraction_ = 0;
    float feedback_ = 0;
    Side intoLeft_ = Side::left, intoRight_ = Side::right;

    ShiftVoice left_, right_;
    StereoFrame last_;  // last output, before the mix

    StereoLine line_;
};

}  // namespace stratovane
