// Hall Reverb: pre-delay and diffuser into six damped combs, three a side.
#include "effects/all_types.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/all_pass_chain.h"
#include "effects/reverb/displays.h"
#include "effects/reverb/input_eq.h"
#include "effects/reverb/mix.h"
#include "effects/reverb/pre_delay.h"

namespace stratovane {

namespace {

enum { Mix = 0, Time = 2, PreDelay = 3, HfDamp = 4, LowEq = 5, HighEq = 6 };

constexpr std::size_t combs = 6;

class HallReverb final : public EffectUnit {
  public:
    HallReverb() : EffectUnit{effect::hallReverb} {
        diffuser_.gains = {0.833f, 0.833f, 0.65f, 0.65f};
    }

  private:
    float mix_ = 0;   // coefficients
    float gain_ = 0;  // of the combs, -0.98..-0.58: negative, so that they ring between the
                      // harmonics of their length and leave no DC
    float damp_ = 1;
    int preDelay_ = 0;
    AllPassChain<4> diffuser_;
    std::array<int, combs> delays_{};
    InputEq eq_;  // state
    std::array<float, combs> damped_{};
    Line early_, diffusing_;  // lines
    CircularLine<std::array<float, combs>> lines_;

    bool prepare() override {
        const int samples = static_cast<int>(rate() * 0.1f);
        const float longest = rate() * 0.09f, d = 0.383f * longest;
        diffuser_.setDelays({d * 0.3747f, d * 0.2823f, d * 0.7309f, d});
        constexpr std::array<float, combs> ratios{1, 0.9231f, 0.9444f, 0.8971f, 0.918f, 0.8929f};
        float length = longest;
        for (std::size_t i = 0; i < combs; ++i) {
            length *= ratios[i];
            delays_[i] = static_cast<int>(length);
        }
        return early_.resize(4 * samples) && diffusing_.resize(samples) && lines_.resize(samples);
    }

    void reset() override {
        eq_.clear();
        damped_ = {};
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
                gain_ = -0.58f - 0.4f * v;
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
        auto damped = damped_;
        for (StereoFrame& f : io) {
            const float x = preDelayed(early_, preDelay, eq, monoInput(f));
            const float e = diffuser.run(diffusing_, x);
            diffusing_.step();
            std::array<float, combs> r{}, in{};
            for (std::size_t i = 0; i < combs; ++i) {
                r[i] = gain * lines_.tap(delays[i])[i];
                in[i] = lowpass(damped[i], r[i], damp) + e;
            }
            lines_.write(in);
            lines_.step();
            f = crossfade(f, {r[4] + r[2] + r[0] + e, r[5] + r[3] + r[1] + e}, mix);
        }
        eq_ = eq;
        damped_ = damped;
    }
};

}  // namespace

constinit const EffectType effect::hallReverb{.number = 1,
                                              .name = "Hall Reverb",
                                              .wakes = Waking::audible,
                                              .make = makeEffect<HallReverb>,
                                              .rows = {{{"Mix", 0.5f},
                                                        {},
                                                        {"Time", 0.5f, showDecay},
                                                        {"Pre Del", 0.5f, showPreDelay},
                                                        {"HF Damp", 0.75f, showInvertedPercent},
                                                        {"Low EQ", 0.0f},
                                                        {"Hi EQ", 0.0f, showInvertedPercent}}}};

}  // namespace stratovane
