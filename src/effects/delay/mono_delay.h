// A damped mono line fed by both channels and read by a tap for each.
#pragma once

#include "effects/blocks/line.h"
#include "effects/delay/echo_unit.h"

namespace stratovane {

class MonoDelay : public EchoUnit {
  public:
    MonoDelay(const EffectType& type, float lineSeconds)
        : EchoUnit{type}, lineSeconds_{lineSeconds} {}

  protected:
    enum { Damp = Balance + 1 };

    const float lineSeconds_;
    // Coefficients.
    float feedback_ = 0;
    // State.
    float damped_ = 0;
    // Lines.
    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds_)); }
    void reset() override {
        line_.clear();
        damped_ = 0;
        setEchoTail(line_.size());
    }
    void update(int changed) override {
        if (changed == Feedback) feedback_ = 0.995f * parameter(Feedback);
        updateEcho(changed, line_.size(), Damp);
    }
    void render(std::span<StereoFrame> io, double) override {
        run(io, [](Line& line, float fed) { line.write(fed); });
    }

    /// `write` puts what is fed back into the line, before it is stepped.
    template <class Write>
    void run(std::span<StereoFrame> io, Write write) {
        const float dry = dry_, wet = wet_, feedback = feedback_, damping = damping_;
        const EchoTaps taps = taps_;
        const bool leftIsLonger = taps.left > taps.right;
        float damped = damped_;
        for (StereoFrame& f : io) {
            const float left = line_.tap(taps.left), right = line_.tap(taps.right);
            const float longer = leftIsLonger ? left : right;
            const float fed = (f.left + f.right) * 0.5f + feedback * longer + 1e-8f;
            f.left = wet * left + dry * f.left;
            f.right = wet * right + dry * f.right;
            write(line_, lowpass(damped, fed, damping));
            line_.step();
        }
        damped_ = damped;
    }
};

}  // namespace stratovane
