// Reverb: a diffuser into four cross-fed lines.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/curves.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/all_pass_chain.h"
#include "effects/reverb/displays.h"
#include "effects/reverb/feedback_network.h"
#include "effects/reverb/input_eq.h"
#include "effects/reverb/mix.h"

namespace stratovane {

namespace {

enum { Mix = 0, Time = 2, LowEq = 3, HighEq = 4 };

class Reverb final : public EffectUnit {
  public:
    Reverb() : EffectUnit{effect::reverb} { diffuser_.gains.fill(0.6f); }

  private:
    float dry_ = 1, wet_ = 0;  // coefficients
    float gain_ = 0;           // of the feedback, 0.16..0.66
    AllPassChain<4> diffuser_;
    std::array<int, 4> delays_{};
    InputEq eq_;  // state
    std::array<float, 4> sums_{};
    Line diffusing_;  // lines
    FourLines lines_;

    bool prepare() override {
        const float t = std::floor(rate() * 0.05209f), u = std::floor(rate() * 0.15331f);
        diffuser_.setDelays({t, 0.787f * t, 0.787f * 0.787f * t, 0.787f * 0.787f * 0.787f * t});
        delays_ = {static_cast<int>(u), static_cast<int>(0.79f * u),
                   static_cast<int>(0.79f * 0.79f * u),
                   static_cast<int>(0.79f * 0.79f * 0.79f * u)};
        return diffusing_.resize(static_cast<int>(rate() * 0.5f)) &&
               lines_.resize(static_cast<int>(rate() * 0.2f));
    }

    void reset() override {
        eq_.clear();
        sums_ = {};
        diffusing_.clear();
        lines_.clear();
    }

    void update(int changed) override {
        const float v = parameter(changed), slow = 1.0f - parameter(Time);
        switch (changed) {
            case Mix:
            case Time:
                gain_ = 0.66f - 0.5f * slow * slow;
                dry_ = dryGain(parameter(Mix));
                wet_ = 0.25f * parameter(Mix) / (gain_ + 0.5f);  // longer is denser and louder
                break;
            case LowEq:
                eq_.lowCut = lowEqCoefficient(v, rate());
                break;
            case HighEq:
                eq_.highCut = highEqCoefficient(v, rate());
                break;
        }
    }

    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_, gain = gain_;
        const auto delays = delays_;
        const auto diffuser = diffuser_;
        InputEq eq = eq_;
        auto s = sums_;
        for (StereoFrame& f : io) {
            const float e = diffuser.run(diffusing_, eq(monoInput(f)));
            diffusing_.step();
            const FourReads r = readFour(lines_, delays);
            feedFour(lines_, s, r, gain, e);
            lines_.step();
            f = {f.left * dry + (r[2] + s[1]) * wet, f.right * dry - (r[3] + s[0]) * wet};
        }
        eq_ = eq;
        sums_ = s;
    }
};

}  // namespace

constinit const EffectType effect::reverb{.number = 0,
                                          .name = "Reverb",
                                          .wakes = Waking::audible,
                                          .make = makeEffect<Reverb>,
                                          .rows = {{{"Mix", 0.5f},
                                                    {},
                                                    {"Time", 0.5f, showDecay},
                                                    {"Low EQ", 0.5f},
                                                    {"High EQ", 0.75f, showInvertedPercent}}}};

}  // namespace stratovane
