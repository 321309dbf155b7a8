// Early Reflections: a short diffuser that forks at its end, one branch a side.
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

enum { Mix = 0, Time = 2, LowEq = 3, HighEq = 4 };

class EarlyReflections final : public EffectUnit {
  public:
    EarlyReflections() : EffectUnit{effect::earlyReflections} {}

  private:
    float mix_ = 0;  // coefficients
    AllPassChain<5> chain_;
    InputEq eq_;  // state
    Line line_;   // lines

    bool prepare() override { return line_.resize(static_cast<int>(rate() * 0.2f)); }

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
            case Time: {
                const float d = std::floor(v * v * rate() * 0.025f) + 10.0f;
                chain_.setDelays({0.3747f * d, 0.2823f * d, 0.7309f * d, d, 0.913f * d});
                const float g = 0.9f - 0.4f * v;
                chain_.gains = {0.83333f * g, 0.83333f * g, g, g, g};
                break;
            }
            case LowEq:
                eq_.lowCut = lowEqCoefficient(v, rate());
                break;
            case HighEq:
                eq_.highCut = highEqCoefficient(v, rate());
                break;
        }
    }

    void render(std::span<StereoFrame> io, double) override {
        const float mix = mix_;
        const auto chain = chain_;
        InputEq eq = eq_;
        for (StereoFrame& f : io) {
            const float stem = chain.run(line_, eq(f.left + f.right), 0, 3);
            const float right = chain.stage(line_, 3, stem), left = chain.stage(line_, 4, stem);
            line_.step();
            f = crossfade(f, {left, right}, mix);
        }
        eq_ = eq;
    }
};

}  // namespace

constinit const EffectType effect::earlyReflections{
    .number = 6,
    .name = "Early Reflections",
    .make = makeEffect<EarlyReflections>,
    .rows = {{{"Mix", 0.5f},
              {},
              {"Time", 0.5f, showReflectionTime},
              {"Low EQ", 0.5f},
              {"High EQ", 0.75f, showInvertedPercent}}}};

}  // namespace stratovane
