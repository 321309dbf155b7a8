// What "Phaser" and "Bi-Phaser" share: swept chains of four stages a side, with feedback.
#pragma once

#include "effects/blocks/control_tick.h"
#include "effects/blocks/ramp.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/phaser_sweep.h"

namespace stratovane {

/// One side. With `Twice` the phased mix passes a second chain and is mixed again.
template <bool Twice>
struct PhaserSide {
    AllPassChain<4> first, second;
    double last = 0;  // output of the first chain, for the feedback

    float step(float x, double c, double feedback, double dry, double wet) {
        last = first.step(x + feedback * last, c);
        double mixed = dry * x + wet * last;
        if constexpr (Twice) mixed = dry * mixed + wet * second.step(mixed, c);
        return static_cast<float>(mixed);
    }
};

template <bool Twice>
class PhaserUnit : public EffectUnit {
  public:
    using EffectUnit::EffectUnit;

  private:
    enum { Mix, Sync, Rate, Depth, Feedback, Stereo, Centre };

    double dry_ = 1, wet_ = 0;
    double feedback_ = 0;     // 0..0.97
    double rightOffset_ = 0;  // 0..2, a whole turn

    ControlTick tick_;
    PhaserSweep sweep_;
    Ramp left_, right_;  // coefficients, -0.999..0.999
    PhaserSide<Twice> leftSide_, rightSide_;

    void reset() override {
        tick_.reset();
        sweep_.reset();
        left_.reset(0);
        right_.reset(0);
        leftSide_ = rightSide_ = {};
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = wetGain(v);
        }
        if (changed == Rate) sweep_.setRate(v, rate());
        if (changed == Depth) sweep_.setDepth(v, rate());
        if (changed == Feedback) feedback_ = 0.97 * v;
        if (changed == Stereo) rightOffset_ = 2.0 * v;
        if (changed == Centre) sweep_.setCentre(v, rate());
    }
    void render(std::span<StereoFrame> io, double) override {
        const double dry = dry_, wet = wet_, feedback = feedback_;
        ControlTick tick = tick_;
        Ramp left = left_, right = right_;
        PhaserSide<Twice> leftSide = leftSide_, rightSide = rightSide_;
        for (StereoFrame& f : io) {
            if (tick.due(phaserTickSamples)) {
                sweep_.advance();
                left.aim(allPassCoefficient(sweep_.target(0)), phaserTickSamples);
                right.aim(allPassCoefficient(sweep_.target(rightOffset_)), phaserTickSamples);
            }
            f.left = leftSide.step(f.left, left.value, feedback, dry, wet);
            f.right = rightSide.step(f.right, right.value, feedback, dry, wet);
            left.advance();
            right.advance();
        }
        tick_ = tick;
        left_ = left;
        right_ = right;
        leftSide_ = leftSide;
        rightSide_ = rightSide;
    }
};

inline void showStereoPhase(TextOut& out, float v, const EffectView&) {
    out.print("%.0f\xB0", v * 360.0f);  // the degree sign of code page 1252
}

inline constexpr std::array<EffectRow, effectParameters> phaserRows{
    {{"Mix", 0.5f, showEffectPercent},
     {},
     {"Rate", 0.5f, showEffectRate},
     {"Depth", 0.5f, showEffectPercent},
     {"Feedback", 0, showEffectPercent},
     {"Stereo", 0.5f, showStereoPhase},
     {"Centre", 0.5f, showEffectPercent}}};

}  // namespace stratovane
