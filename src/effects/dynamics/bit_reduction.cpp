// Bit Reduction: clears low bits of the float itself, holds, and slews to the next value.
#include <algorithm>
#include <bit>
#include <cmath>

#include "base/units.h"
#include "effects/all_types.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mix, Rate = 2, Depth, Slew, Mode };

int holdSamples(float v, float rate) {
    return static_cast<int>(rate / (48000.0f * v * v * v + 1000.0f)) + 1;
}

float masked(float x, std::uint32_t mask) {
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(x) & mask);
}

class BitReduction final : public EffectUnit {
  public:
    BitReduction() : EffectUnit{effect::bitReduction} {}

  private:
    float mix_ = 0;
    int hold_ = 1;          // samples
    float stepFactor_ = 1;  // per sample
    float slew_ = 10;       // largest step per sample
    bool linear_ = true;
    std::uint32_t mask_ = ~0u;
    int untilNext_ = 1;  // samples; goes on through rate changes
    StereoFrame level_{}, step_{};

    void reset() override { level_ = step_ = {}; }
    bool begin(bool&) override { return mix_ != 0; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Rate:
                hold_ = holdSamples(v, rate());
                stepFactor_ = 1.5f / static_cast<float>(hold_);
                break;
            case Depth:
            case Mode:
                setMask();
                break;
            case Slew:
                slew_ = v > 0.95f ? 10.0f : (19800.0f * v * v * v + 200.0f) / rate();
                break;
        }
    }

    void setMask() {
        const float depth = parameter(Depth);
        linear_ = !isOn(parameter(Mode));
        const int bits = depth > 0.1f ? (linear_ ? 6 : 14) + choice(depth, 10.9f) : 0;
        mask_ = ~((1u << bits) - 1u);
    }

    float quantised(float x) const {
        // Pushed into 8..16, all samples share one exponent: the steps are uniform.
        constexpr float push = 12.500100135803223f, back = 12.5f;
        return linear_ ? masked(x + push, mask_) - back : masked(x, mask_);
    }
    float stepTo(float x, float level) const {
        const float step = std::clamp((quantised(x) - level) * stepFactor_, -slew_, slew_);
        return std::fabs(step) < 1e-8f ? 0.0f : step;
    }

    void render(std::span<StereoFrame> io, double) override {
        const float mix = mix_;
        StereoFrame level = level_, step = step_;
        int untilNext = untilNext_;
        for (StereoFrame& f : io) {
            if (--untilNext <= 0) {
                untilNext = hold_;
                step = {stepTo(f.left, level.left), stepTo(f.right, level.right)};
            }
            level.left += step.left;
            level.right += step.right;
            f = {f.left + (level.left - f.left) * mix, f.right + (level.right - f.right) * mix};
        }
        level_ = level;
        step_ = step;
        untilNext_ = untilNext;
    }
};

}  // namespace

constinit const EffectType effect::bitReduction{
    .number = 102,
    .name = "Bit Reduction",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<BitReduction>,
    .rows = {{
        {"Mix", 0.5f},
        {},
        {"Rate", 0.5f,
         [](TextOut& out, float v, const EffectView& view) {
             const auto hold = static_cast<float>(holdSamples(v, view.sampleRate));
             out.print("%.0f Hz", 1.5f * view.sampleRate / hold);
         }},
        {"Depth", 0.5f,
         [](TextOut& out, float v, const EffectView&) {
             out.print("%ld bit", 16 - choice(v, 10.9f));
         }},
        {"Slew Rate", 0,
         [](TextOut& out, float v, const EffectView&) {
             const float slow = 1.0f - v;
             out.print("%.3f ms", slow * slow * slow * 4.95f + 0.05f);
         }},
        {"Mode", 0,
         [](TextOut& out, float v, const EffectView&) {
             out.text(isOn(v) ? "Compand" : "Linear");
         }},
    }},
};

}  // namespace stratovane
