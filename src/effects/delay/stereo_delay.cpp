// Stereo Delay: a line for each channel, whose echoes return on their own side or on the other.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/line.h"
#include "effects/delay/echo_unit.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 1.5f;

class StereoDelay final : public EchoUnit {
  public:
    StereoDelay() : EchoUnit{effect::stereoDelay} {}

  private:
    enum { Damp = Balance + 1 };

    // Coefficients.
    float feedback_ = 0;  // -0.99..0.99; up to 0 the lanes cross
    // State.
    StereoFrame damped_;
    // Lines.
    StereoLine line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        damped_ = {};
        setEchoTail(line_.size());
    }
    void update(int changed) override {
        if (changed == Feedback) feedback_ = 1.98f * parameter(Feedback) - 0.99f;
        updateEcho(changed, line_.size(), Damp);
    }
    void render(std::span<StereoFrame> io, double) override {
        if (feedback_ > 0)
            run<false>(io);
        else
            run<true>(io);
    }
    template <bool crossed>
    void run(std::span<StereoFrame> io) {
        const float dry = dry_, wet = wet_, feedback = std::fabs(feedback_), damping = damping_;
        const EchoTaps taps = taps_;
        StereoFrame damped = damped_;
        for (StereoFrame& f : io) {
            const float left = line_.tap(taps.left).left, right = line_.tap(taps.right).right;
            const StereoFrame echo = crossed ? StereoFrame{right, left} : StereoFrame{left, right};
            lowpass(damped.left, f.left + feedback * echo.left, damping);
            lowpass(damped.right, f.right + feedback * echo.right, damping);
            f.left = dry * f.left + wet * echo.left;
            f.right = dry * f.right + wet * echo.right;
            line_.write({damped.left + 1e-8f, damped.right + 1e-8f});
            line_.step();
        }
        damped_ = damped;
    }
};

void showFeedback(TextOut& out, float v, const EffectView&) {
    if (v < 0.5f) return out.print("R/L %.0f%%", (0.5f - v) * 200);
    out.print("L/R %.0f%%", (v - 0.5f) * 200);
}

}  // namespace

constinit const EffectType effect::stereoDelay{.number = 11,
                                               .name = "Stereo Delay",
                                               .wakes = Waking::audible,
                                               .make = makeEffect<StereoDelay>,
                                               .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                         {"Sync", 0, showEffectSwitch},
                                                         {"Delay", 0.5f, showEchoTime<lineSeconds>},
                                                         {"Feedback", 0.75f, showFeedback},
                                                         {"Balance", 0.5f, showBalance},
                                                         {"HF Damp", 1, showInvertedPercent}}}};

}  // namespace stratovane
