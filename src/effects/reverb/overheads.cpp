// Overheads: the near room of a pair of microphones, two diffusers whose ends are matrixed.
#include <cmath>

#include "effects/all_types.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/all_pass_chain.h"
#include "effects/reverb/displays.h"
#include "effects/reverb/input_eq.h"
#include "effects/reverb/mix.h"

namespace stratovane {

namespace {

enum { Mix = 0, Time = 2, LowEq = 3, HighEq = 4, Diffusion = 5, RoomSize = 6 };

class Overheads final : public EffectUnit {
  public:
    Overheads() : EffectUnit{effect::overheads} {}

  private:
    float mix_ = 0;  // coefficients
    AllPassChain<8> chain_;
    InputEq eq_;  // state
    Line line_;   // lines

    bool prepare() override { return line_.resize(static_cast<int>(rate() * 0.5f)); }

    void reset() override {
        eq_.clear();
        line_.clear();
    }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case LowEq:
                eq_.lowCut = atMostOne(v * 4000.0f / rate());
                break;
            case HighEq:
                eq_.highCut = highEqCoefficient(v, rate());
                break;
            case Diffusion:
                chain_.gains.fill(0.3f * (v + 1.0f));
                break;
            case Time:
            case RoomSize:
                setDelays(parameter(Time), 0.4f * parameter(RoomSize) + 0.75f);
                break;
        }
    }

    void setDelays(float time, float ratio) {
        std::array<float, 8> delays{};
        float d = std::floor(time * time * rate() * 0.025f) + 10.0f;
        delays[0] = d;
        delays[1] = d *= ratio;
        delays[2] = d *= ratio - 0.03f;
        delays[3] = d *= ratio;
        delays[4] = d = d * ratio * 0.807f;
        delays[5] = d *= ratio;
        delays[6] = d *= ratio - 0.07f;
        delays[7] = d *= ratio;
        chain_.setDelays(delays);
    }

    void render(std::span<StereoFrame> io, double) override {
        const float mix = mix_;
        const auto chain = chain_;
        InputEq eq = eq_;
        for (StereoFrame& f : io) {
            const float x = eq((f.left + f.right) * 0.5f);
            const float y3 = chain.run(line_, x, 0, 3), y4 = chain.stage(line_, 3, y3);
            const float y7 = chain.run(line_, x, 4, 7), y8 = chain.stage(line_, 7, y7);
            line_.step();
            const float a = y8 - y3, b = y4 + y7, c = (a - b) * 0.5f;
            f = crossfade(f, {a + c, b - c}, mix);
        }
        eq_ = eq;
    }
};

}  // namespace

constinit const EffectType effect::overheads{.number = 8,
                                             .name = "Overheads",
                                             .make = makeEffect<Overheads>,
                                             .rows = {{{"Mix", 0.5f},
                                                       {},
                                                       {"Time", 0.5f, showReflectionTime},
                                                       {"Low EQ", 0.5f},
                                                       {"High EQ", 0.75f, showInvertedPercent},
                                                       {"Diffusion", 0.0f},
                                                       {"Room Size", 0.0f}}}};

}  // namespace stratovane
