// Plate Reverb: pre-delay and a long diffuser into four cross-fed lines with damped reads.
#include "effects/all_types.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/all_pass_chain.h"
#include "effects/reverb/displays.h"
#include "effects/reverb/feedback_network.h"
#include "effects/reverb/input_eq.h"
#include "effects/reverb/mix.h"
#include "effects/reverb/pre_delay.h"

namespace stratovane {

namespace {

enum { Mix = 0, Time = 2, PreDelay = 3, HfDamp = 4, LowEq = 5, HighEq = 6 };

class PlateReverb final : public EffectUnit {
  public:
    PlateReverb() : EffectUnit{effect::plateReverb} {
        diffuser_.gains = {0.833f, 0.833f, 0.65f, 0.65f, 0.65f, 0.65f};
    }

  private:
    float mix_ = 0;   // coefficients
    float gain_ = 0;  // of the feedback, 0.16..0.66
    float damp_ = 1;
    int preDelay_ = 0;
    AllPassChain<6> diffuser_;
    std::array<int, 4> delays_{};
    InputEq eq_;  // state
    std::array<float, 4> sums_{}, damped_{};
    Line early_, diffusing_;  // lines
    FourLines lines_;

    bool prepare() override {
        const int samples = static_cast<int>(rate() * 0.1f);
        const float longest = rate() * 0.09f, d = 0.39f * longest;
        diffuser_.setDelays({d * 0.3747f, d * 0.2823f, d * 0.7309f, d * 0.15f, d * 0.79f, d});
        delays_ = {static_cast<int>(longest), static_cast<int>(0.91f * longest),
                   static_cast<int>(0.91f * 0.91f * longest),
                   static_cast<int>(0.91f * 0.91f * 0.91f * longest)};
        // The diffuser's delays add up to 0.1168 s.
        return early_.resize(4 * samples) && diffusing_.resize(static_cast<int>(rate() * 0.12f)) &&
               lines_.resize(samples);
    }

    void reset() override {
        eq_.clear();
        sums_ = damped_ = {};
        early_.clear();
        diffusing_.clear();
        lines_.clear();
    }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Time:
                gain_ = 0.66f - 0.5f * (1.0f - v) * (1.0f - v) * (1.0f - v);
                break;
            case PreDelay:
                preDelay_ = preDelaySamples(v, rate());
                break;
            case HfDamp:
                damp_ = highEqCoefficient(v, rate());
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
        const float mix = mix_, gain = gain_, damp = damp_;
        const int preDelay = preDelay_;
        const auto diffuser = diffuser_;
        const auto delays = delays_;
        InputEq eq = eq_;
        auto s = sums_, r = damped_;
        for (StereoFrame& f : io) {
            const float x = preDelayed(early_, preDelay, eq, monoInput(f));
            const float e = diffuser.run(diffusing_, x);
            diffusing_.step();
            const FourReads reads = readFour(lines_, delays);
            for (std::size_t i = 0; i < r.size(); ++i) lowpass(r[i], reads[i], damp);
            feedFour(lines_, s, r, gain, e);
            lines_.step();
            f = crossfade(f, {e + s[1] + r[2], s[0] + r[3] + e}, mix);
        }
        eq_ = eq;
        sums_ = s;
        damped_ = r;
    }
};

}  // namespace

constinit const EffectType effect::plateReverb{.number = 2,
                                               .name = "Plate Reverb",
                                               .wakes = Waking::audible,
                                               .make = makeEffect<PlateReverb>,
                                               .rows = {{{"Mix", 0.5f},
                                                         {},
                                                         {"Time", 0.5f, showDecay},
                                                         {"Pre Del", 0.25f, showPreDelay},
                                                         {"HF Damp", 0.75f, showInvertedPercent},
                                                         {"Low EQ", 0.0f},
                                                         {"Hi EQ", 0.25f, showInvertedPercent}}}};

}  // namespace stratovane
