// Multiband: three bands of two one-pole splits, each compressed by its own level.
#include <array>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/displays.h"
#include "effects/dynamics/levels.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Output, Drive = 2, Balance, Mid, Attack, Release };
enum Band { low, mid, high, bands };

/// What one channel splits into.
struct Splitter {
    float upper = 0, lower = 0;  // lowpass states at the upper and the lower crossover

    std::array<float, bands> split(float x, float upperCoefficient, float lowerCoefficient) {
        constexpr float offset = 1e-8f;
        upper += (x + offset - upper) * upperCoefficient;
        lower += (upper - lower) * lowerCoefficient;
        return {lower, upper - lower, x - upper};
    }
};

class Multiband final : public EffectUnit {
  public:
    Multiband() : EffectUnit{effect::multiband} {}

  private:
    float upper_ = 1, lower_ = 1;       // crossover coefficients
    float attack_ = 1, release_ = 1;    // follower coefficients
    float compression_ = 0;             // 0..30
    std::array<float, bands> gains_{};  // of the uncompressed bands
    std::array<float, bands> envelopes_{};
    Splitter left_, right_;

    void reset() override {
        upper_ = atMostOne(18000.0f / rate());
        lower_ = 250.0f / rate();
        envelopes_ = {};
        left_ = right_ = {};
    }
    void idle(int) override { envelopes_ = {}; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Attack:
                attack_ = onePoleCoefficient(std::exp(9.0f - 4.0f * v), rate());
                return;
            case Release:
                release_ = onePoleCoefficient(std::exp(3.6f - 2.6f * v), rate());
                return;
            case Output:
            case Drive:
            case Balance:
            case Mid:
                break;
            default:
                return;
        }
        const float drive = parameter(Drive);
        const float gain = std::exp(4.6f * parameter(Output) + 2.4f * drive - 2.3f);
        compression_ = 30.0f * drive * drive * drive;
        gains_[high] = 2.0f * gain * parameter(Balance);
        gains_[mid] = gain * parameter(Mid);
        gains_[low] = 2.0f * gain - gains_[high];
    }

    void render(std::span<StereoFrame> io, double) override {
        const float upper = upper_, lower = lower_, attack = attack_, release = release_;
        const float compression = compression_;
        const std::array<float, bands> gains = gains_;
        std::array<float, bands> envelopes = envelopes_;
        Splitter left = left_, right = right_;
        for (StereoFrame& f : io) {
            const auto l = left.split(f.left, upper, lower);
            const auto r = right.split(f.right, upper, lower);
            f = {};
            for (std::size_t b = 0; b < bands; ++b) {
                const float level = std::fabs(l[b] + r[b]);
                dynamics::follow(envelopes[b], level, attack, release);
                const float gain = gains[b] / (envelopes[b] * compression + 1.0f);
                f.left += gain * l[b];
                f.right += gain * r[b];
            }
        }
        envelopes_ = envelopes;
        left_ = left;
        right_ = right;
    }
};

}  // namespace

constinit const EffectType effect::multiband{
    .number = 92,
    .name = "Multiband",
    .shown = "Multiband Comp",
    .tail = {.seconds = 0.5f},
    .make = makeEffect<Multiband>,
    .rows = {{
        {"Output", 0.5f, showDecibels40},
        {},
        {"Drive", 0.5f, dynamics::showDecibels<30, 0>},
        {"Lo/Hi", 0.5f,
         [](TextOut& out, float v, const EffectView&) {
             out.print("%.0f : %.0f", 100.0f - v * 100.0f, v * 100.0f);
         }},
        {"Mid", 0},
        {"Attack", 0},
        {"Release", 0},
    }},
};

}  // namespace stratovane
