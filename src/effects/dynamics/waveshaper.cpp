// Waveshaper: wraps the signal around, as often as Drive tells and whatever its level.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/dynamics/levels.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mix, Drive = 2, Rate, Out };

class Waveshaper final : public EffectUnit {
  public:
    Waveshaper() : EffectUnit{effect::waveshaper} {}

  private:
    float mix_ = 0, out_ = 0;
    // In double: the slowest follower moves by 1e-10 of its way a sample, and what is wrapped lies
    // a hundred above zero.
    double drive_ = 1;
    double follower_ = 1;  // coefficient
    double envelope_ = 0;

    void reset() override { envelope_ = 0; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Drive:
                drive_ = 33.0 * std::pow(double(v), 3.0) + 0.5;
                break;
            case Rate:
                follower_ = -std::expm1(-std::exp(12.0 - 24.0 * double(v)) / double(rate()));
                break;
            case Out:
                out_ = v * v;
                break;
        }
    }

    /// The remainder of x / 2 with the sign of x, as fmod's, which is exact here as well.
    static double remainder(double x) { return x - 2.0 * std::trunc(x * 0.5); }

    void render(std::span<StereoFrame> io, double) override {
        const float mix = mix_, out = out_;
        if (mix == 0) return;
        const double drive = drive_, follower = follower_;
        double envelope = envelope_;
        for (StereoFrame& f : io) {
            envelope += (double(dynamics::peakOf(f)) + 0.01 - envelope) * follower;
            const double scale = drive / std::max(envelope, 1e-6);
            const auto shape = [=](float x) {
                const double u = remainder(scale * double(x) + 101.0) - 1.0;
                const auto shaped = static_cast<float>((u - u * u * u) * envelope);
                return x + (out * shaped - x) * mix;
            };
            f = {shape(f.left), shape(f.right)};
        }
        envelope_ = envelope;
    }
};

}  // namespace

constinit const EffectType effect::waveshaper{
    .number = 105,
    .name = "Waveshaper",
    .tail = {.seconds = 0.1f},
    .wakes = Waking::never,
    .make = makeEffect<Waveshaper>,
    .rows = {{
        {"Mix", 0.5f},
        {},
        {"Drive", 0.5f},
        {"Rate", 0.5f, showEffectRate},
        {"Out", 0},
    }},
};

}  // namespace stratovane
