// Stereo Enhancer: a chain of all-passes for each channel, tuned apart, so that their phases
// differ.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/units.h"
#include "effects/all_types.h"
#include "effects/blocks/tiny.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

constexpr int stages = 3;

int activeStages(float v) { return 1 + choice(v, 2.9f); }

/// Coefficient (1 - t) / (1 + t) of a first-order all-pass; cycles per sample are bounded and
/// warped as t = tan(1.57 x).
float allPassCoefficient(float cyclesPerSample) {
    const float bounded = std::min(std::max(cyclesPerSample, 0.005f), 0.999f);
    const float t = std::tan(1.57f * bounded);
    return (1 - t) / (1 + t);
}

struct PhaseStage {
    float input = 0, output = 0;  // the previous ones
    float step(float x, float a) {
        output = (output - x) * a + input;
        input = x;
        return output;
    }
};

class StereoEnhancer final : public EffectUnit {
  public:
    StereoEnhancer() : EffectUnit{effect::stereoEnhancer} {}

  private:
    enum { Width, Stage1 = 2, Stages = 5, Trim };
    template <class T>
    using PerStage = std::array<T, stages>;

    // Coefficients.
    PerStage<float> leftPass_{}, rightPass_{};
    float leftGain_ = 1, rightGain_ = 1;
    // State.
    PerStage<PhaseStage> left_, right_;

    void reset() override { left_ = right_ = {}; }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Trim) {
            const float balance = 0.3f * v + 0.35f;
            leftGain_ = 2 - 2 * balance;
            rightGain_ = 2 * balance;
        } else if (changed == Width || (changed >= Stage1 && changed < Stage1 + stages)) {
            const float width = parameter(Width), factor = 9 * (width * width) + 1;
            for (int i = 0; i < stages; ++i) {
                const auto at = static_cast<std::size_t>(i);
                const float cycles = 150 * std::exp(4.6052f * parameter(Stage1 + i)) / rate();
                leftPass_[at] = allPassCoefficient(cycles);
                rightPass_[at] = allPassCoefficient(cycles * factor);
            }
        }
    }
    void render(std::span<StereoFrame> io, double) override {
        switch (activeStages(parameter(Stages))) {
            case 1:
                return run<1>(io);
            case 2:
                return run<2>(io);
            default:
                return run<3>(io);
        }
    }
    template <std::size_t active>
    void run(std::span<StereoFrame> io) {
        const PerStage<float> leftPass = leftPass_, rightPass = rightPass_;
        const float leftGain = leftGain_, rightGain = rightGain_;
        PerStage<PhaseStage> lefts{}, rights{};  // stages left out start afresh
        std::copy_n(left_.begin(), active, lefts.begin());
        std::copy_n(right_.begin(), active, rights.begin());
        for (StereoFrame& f : io) {
            float left = f.left, right = f.right;
            for (std::size_t i = 0; i < active; ++i) {
                left = lefts[i].step(left, leftPass[i]);
                right = rights[i].step(right, rightPass[i]);
            }
            f = {leftGain * left, rightGain * right};
        }
        rights[active - 1].output = zeroWhenTiny(rights[active - 1].output);
        left_ = lefts;
        right_ = rights;
    }
};

void showWidth(TextOut& out, float v, const EffectView&) { out.print("R x %.2f", v * v * 9 + 1); }

void showStage(TextOut& out, float v, const EffectView&) {
    out.print("%.0f Hz", 100 * std::exp(4.6052f * v));
}

void showStages(TextOut& out, float v, const EffectView&) { out.print("%ld", activeStages(v)); }

void showTrim(TextOut& out, float v, const EffectView&) { out.print("%.0f", v * 100 - 50); }

}  // namespace

constinit const EffectType effect::stereoEnhancer{.number = 52,
                                                  .name = "Stereo Enhancer",
                                                  .tail = {.seconds = 0.05f},
                                                  .make = makeEffect<StereoEnhancer>,
                                                  .rows = {{{"Width", 0.5f, showWidth},
                                                            {},
                                                            {"Stage 1", 0.5f, showStage},
                                                            {"Stage 2", 0.5f, showStage},
                                                            {"Stage 3", 0, showStage},
                                                            {"Stages", 0, showStages},
                                                            {"Pan Trim", 0, showTrim}}}};

}  // namespace stratovane
