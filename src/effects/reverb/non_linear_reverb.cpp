// Non-Linear Reverb: bursts of equal pulses that stop at once, made of combs that end.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/curves.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/all_pass_chain.h"
#include "effects/reverb/input_eq.h"
#include "effects/reverb/mix.h"

namespace stratovane {

namespace {

enum { Mix = 0, Time = 2, LowEq = 3, HighEq = 4 };

// The burst lasts 2520 steps, the least common multiple of 5, 7, 8 and 9: each comb's period
// divides it, so that what goes in at the end cancels the last pulse exactly.
constexpr int burstSteps = 2520;
constexpr std::array<int, 4> combSteps{burstSteps / 5, burstSteps / 7, burstSteps / 8,
                                       burstSteps / 9};
constexpr int mostWholeSteps = 5;  // above, combs run at half the step, with twice the pulses

// In double: a comb without loss keeps its rounding errors for ever.
using Combs = CircularLine<std::array<double, combSteps.size()>>;

int stepSamples(float v, float rate) {
    return std::max(1, static_cast<int>((0.45f * v + 0.05f) * rate * 0.0003968254f));
}

class NonLinearReverb final : public EffectUnit {
  public:
    NonLinearReverb() : EffectUnit{effect::nonLinearReverb} { diffuser_.gains.fill(0.5f); }

  private:
    float dry_ = 1, wet_ = 0;  // coefficients
    int burst_ = burstSteps;   // samples
    std::array<int, combSteps.size()> periods_ = combSteps;
    AllPassChain<4> diffuser_;
    float time_ = 0;         // the parameter as last seen
    bool restart_ = false;   // pulses of another length are under way
    InputEq eq_;             // state
    Line diffusing_, past_;  // lines
    Combs combs_;

    bool prepare() override {
        const int most = stepSamples(1.0f, rate());
        const int mostCombStep = std::max(std::min(most, mostWholeSteps), most / 2);
        return diffusing_.resize(static_cast<int>(rate() * 0.5f)) &&
               past_.resize(burstSteps * most + 1) &&
               combs_.resize(combSteps[0] * mostCombStep + 1);
    }

    void reset() override {
        eq_.clear();
        diffusing_.clear();
        past_.clear();
        combs_.clear();
        time_ = parameter(Time);
        restart_ = false;
    }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                dry_ = dryGain(v);
                wet_ = 0.2f * v * v;
                break;
            case Time:
                setTime(v);
                break;
            case LowEq:
                eq_.lowCut = lowEqCoefficient(v, rate());
                break;
            case HighEq:
                eq_.highCut = highEqCoefficient(v, rate());
                break;
        }
    }

    void setTime(float v) {
        const int step = stepSamples(v, rate());
        const bool halved = step > mostWholeSteps;
        const int combStep = halved ? step / 2 : step;
        burst_ = burstSteps * (halved ? 2 * combStep : step);
        for (std::size_t i = 0; i < periods_.size(); ++i) periods_[i] = combSteps[i] * combStep;
        const float d = std::floor((0.44f * v + 0.1f) * rate() * 0.05209f);
        diffuser_.setDelays({d, 0.79f * d, 0.79f * 0.79f * d, 0.79f * 0.79f * 0.79f * d});
        restart_ = restart_ || v != time_;
        time_ = v;
    }

    void render(std::span<StereoFrame> io, double) override {
        if (restart_) reset();
        const float dry = dry_, wet = wet_;
        const int burst = burst_;
        const auto periods = periods_;
        const auto diffuser = diffuser_;
        InputEq eq = eq_;
        for (StereoFrame& f : io) {
            const float x = diffuser.run(diffusing_, eq(monoInput(f)));
            diffusing_.step();
            const double change = static_cast<double>(x) - static_cast<double>(past_.tap(burst));
            past_.write(x);
            past_.step();
            std::array<double, combSteps.size()> z{}, in{};
            for (std::size_t i = 0; i < z.size(); ++i) {
                z[i] = combs_.tap(periods[i])[i];
                in[i] = change + z[i];
            }
            combs_.write(in);
            combs_.step();
            const double u = static_cast<double>(x) + z[0] - z[1];
            f = {f.left * dry + static_cast<float>(u + z[3]) * wet,
                 f.right * dry + static_cast<float>(u + z[2]) * wet};
        }
        eq_ = eq;
    }
};

void showBurst(TextOut& out, float v, const EffectView&) { out.print("%.2f s", v * 0.45f + 0.05f); }

}  // namespace

constinit const EffectType effect::nonLinearReverb{
    .number = 5,
    .name = "Non-Linear Reverb",
    .make = makeEffect<NonLinearReverb>,
    .rows = {{{"Mix", 0.5f},
              {},
              {"Time", 0.5f, showBurst},
              {"Low EQ", 0.5f},
              {"High EQ", 0.75f, showInvertedPercent}}}};

}  // namespace stratovane
