// Punch: a feed-forward compressor whose gain above the threshold is a hyperbola of the peak.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/dynamics/displays.h"
#include "effects/dynamics/levels.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Output, Drive = 2, Ratio, Attack, Release };

float attackMs(float v) { return std::pow(1000.99f, v) - 0.99f; }
float releaseMs(float v) { return std::pow(10000.0f, v); }

class Punch final : public EffectUnit {
  public:
    Punch() : EffectUnit{effect::punch} {}

  private:
    float output_ = 1;
    float threshold_ = 1;             // of the peak
    float curve_ = 0, offset_ = 1;    // gain above the threshold: curve / peak + offset
    float attack_ = 1, release_ = 1;  // coefficients of the gain, falling and rising
    float decay_ = 1;                 // of the peak, per sample
    float peak_ = 0, gain_ = 1;

    void reset() override {
        decay_ = 1.0f - 440.0f / rate();
        peak_ = 0;
        gain_ = 1;
    }

    /// Coefficient of a glide that takes about `ms`.
    float coefficient(float ms) const { return std::min(0.99f, 2200.0f / (ms * rate())); }

    void update(int changed) override {
        switch (changed) {
            case Attack:
                attack_ = coefficient(attackMs(parameter(Attack)));
                break;
            case Release:
                release_ = coefficient(releaseMs(parameter(Release)));
                break;
            case Output:
            case Drive:
            case Ratio:
                shape();
                break;
        }
    }

    // In double: with much drive and ratio curve + offset is a small difference.
    void shape() {
        constexpr double deepest = -6.90775527898214;  // ln of 60 dB
        const double depth = std::min(deepest * double(parameter(Drive)), -0.0001);
        const double threshold = 0.25 * std::exp(depth);
        const double fullScale = std::exp(0.95 * double(parameter(Ratio)) * depth);
        const double k = (1.0 - fullScale) / (1.0 - threshold);
        threshold_ = static_cast<float>(threshold);
        curve_ = static_cast<float>(threshold * k);
        offset_ = static_cast<float>(1.0 - k);
        const double level = std::exp(4.60517 * (double(parameter(Output)) - 0.5));
        output_ = static_cast<float>(level / (threshold * k + (1.0 - k)));
    }

    void render(std::span<StereoFrame> io, double) override {
        const float output = output_, threshold = threshold_, curve = curve_, offset = offset_;
        const float attack = attack_, release = release_, decay = decay_;
        float peak = peak_, gain = gain_;
        for (StereoFrame& f : io) {
            const float level = dynamics::peakOf(f);
            peak = level > peak ? level : peak * decay;
            const float target = peak >= threshold ? curve / peak + offset : 1.0f;
            gain += (target - gain) * (target <= gain ? attack : release);
            f = {f.left * (gain * output), f.right * (gain * output)};
        }
        constexpr float nothing = 1e-8f;
        peak_ = peak < nothing ? 0 : peak;
        gain_ = gain < nothing ? 0 : gain;
    }
};

}  // namespace

constinit const EffectType effect::punch{
    .number = 93,
    .name = "Punch",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<Punch>,
    .rows = {{
        {"Output", 0.5f, showDecibels40},
        {},
        {"Drive", 0.5f, dynamics::showDecibels<60, 0>},
        {"Ratio", 0.5f,
         [](TextOut& out, float v, const EffectView&) {
             out.print("%1.1f : 1", 1.0f / (1.0f - 0.95f * v));
         }},
        {"Attack", 0,
         [](TextOut& out, float v, const EffectView&) { out.print("%1.2f ms", attackMs(v)); }},
        {"Release", 0,
         [](TextOut& out, float v, const EffectView&) {
             out.print("%1.2f ms", releaseMs(v) - 0.99f);
         }},
    }},
};

}  // namespace stratovane
