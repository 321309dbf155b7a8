// Deep Phaser: twelve all-pass stages on the mono sum, bent by the level; the last stage apart for
// the right side.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/one_pole.h"
#include "effects/blocks/ramp.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/phaser_sweep.h"

namespace stratovane {

namespace {

enum { Mix, Sync, Rate, Depth, Feedback, Centre, EnvelopeMod, EnvelopeRate };
constexpr double floorPerSecond = 20000.0;  // where a loud input bends the sweep to, over the rate

class DeepPhaser final : public EffectUnit {
  public:
    DeepPhaser() : EffectUnit{effect::deepPhaser} {}

  private:
    double dry_ = 1, wet_ = 0;
    double feedback_ = 0;      // 0..0.8
    double bend_ = 0;          // -0.5..0.5
    double envelopeRate_ = 0;  // per tick
    double floor_ = 0;

    ControlTick tick_;
    PhaserSweep sweep_;
    double sum_ = 0;       // of magnitudes since the last tick
    double envelope_ = 0;  // that sum, smoothed
    Ramp left_, right_;    // coefficients, -0.999..0.999
    AllPassChain<11> chain_;
    double leftLast_ = 0, rightLast_ = 0;  // states of the twelfth stages
    double output_ = 0;                    // of the left twelfth stage

    void reset() override {
        tick_.reset();
        sweep_.reset();
        sum_ = envelope_ = 0;
        left_.reset(0);
        right_.reset(0);
        chain_ = {};
        leftLast_ = rightLast_ = output_ = 0;
        floor_ = floorPerSecond / rate();
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = v - v * v * 0.5f;
        }
        if (changed == Rate) sweep_.setRate(v, rate());
        if (changed == Depth) sweep_.setDepth(v, rate());
        if (changed == Feedback) feedback_ = 0.8 * v;
        if (changed == Centre) sweep_.setCentre(v, rate());
        if (changed == EnvelopeMod) bend_ = v - 0.5;
        if (changed == EnvelopeRate) {
            const double slow = 1.0 - v;
            envelopeRate_ =
                onePoleCoefficient(static_cast<double>(slow * slow * 5000.0f + 10.0f), rate());
        }
    }
    /// Louder input draws the sweep towards the floor, or with a negative bend down to -1.
    double bent(double target) const {
        if (bend_ >= 0) return (target - floor_) * std::exp(-envelope_ * bend_) + floor_;
        return (target + 1) * std::exp(envelope_ * bend_) - 1;
    }
    void render(std::span<StereoFrame> io, double) override {
        const double dry = dry_, wet = wet_, feedback = feedback_;
        ControlTick tick = tick_;
        double sum = sum_;
        Ramp left = left_, right = right_;
        AllPassChain<11> chain = chain_;
        double leftLast = leftLast_, rightLast = rightLast_, output = output_;
        for (StereoFrame& f : io) {
            if (tick.due(phaserTickSamples)) {
                sweep_.advance();
                envelope_ += (sum - envelope_) * envelopeRate_;
                sum = 0;
                const double target = sweep_.target(0);
                left.aim(allPassCoefficient(bent(target)), phaserTickSamples);
                right.aim(allPassCoefficient(target), phaserTickSamples);
            }
            const float x = f.left + f.right;
            sum += std::fabs(x);
            const double eleventh = chain.step(x - feedback * output, left.value);
            output = allPassStage(leftLast, eleventh, left.value);
            const double rightOutput = allPassStage(rightLast, eleventh, right.value);
            f.left = static_cast<float>(dry * f.left + wet * output);
            f.right = static_cast<float>(dry * f.right + wet * rightOutput);
            left.advance();
            right.advance();
        }
        tick_ = tick;
        sum_ = sum;
        left_ = left;
        right_ = right;
        chain_ = chain;
        leftLast_ = leftLast;
        rightLast_ = rightLast;
        output_ = output;
    }
};

void showEnvelopeMod(TextOut& out, float v, const EffectView&) {
    out.print("%.0f %%", v * 200.0f - 100.0f);
}

}  // namespace

constinit const EffectType effect::deepPhaser{.number = 41,
                                              .name = "Deep Phaser",
                                              .make = makeEffect<DeepPhaser>,
                                              .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                        {},
                                                        {"Rate", 0.5f, showEffectRate},
                                                        {"Depth", 0.5f, showEffectPercent},
                                                        {"Feedback", 0, showEffectPercent},
                                                        {"Centre", 0, showEffectPercent},
                                                        {"Env Mod", 0, showEnvelopeMod},
                                                        {"Env Rate", 0, showEffectPercent}}}};

}  // namespace stratovane
