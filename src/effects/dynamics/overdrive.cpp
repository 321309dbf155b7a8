// Overdrive: a biased square that saturates, and a blocker for the offset it makes.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mix, Drive = 2, Bias, Out };

/// u^2 - 1/2, bent to be flat from |u| = 1 on.
float bentSquare(float u) {
    const float s = u * u - 0.5f;
    if (s <= 0) return s;
    return s <= 0.5f ? s - s * s : 0.25f;
}

class Overdrive final : public EffectUnit {
  public:
    Overdrive() : EffectUnit{effect::overdrive} {}

  private:
    float mix_ = 0, drive_ = 1, out_ = 0, bias_ = 0;
    float rest_ = 0;              // what the shaper gives for silence
    float blocker_ = 1;           // coefficient of the offset's follower
    float left_ = 0, right_ = 0;  // offset states

    void reset() override {
        blocker_ = onePoleCoefficient(300.0, rate());
        left_ = right_ = 0;
    }
    bool begin(bool&) override { return mix_ != 0; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Drive:
                drive_ = std::exp(3.5f * v);
                break;
            case Bias:
                bias_ = v;
                rest_ = bentSquare(v);
                break;
            case Out:
                out_ = v * v;
                break;
        }
    }

    void render(std::span<StereoFrame> io, double) override {
        const float mix = mix_, drive = drive_, out = out_, bias = bias_, rest = rest_;
        const float blocker = blocker_;
        const auto shape = [=](float x, float& state) {
            const float y = bentSquare(drive * x + bias) - (rest + state);
            state += y * blocker;
            return x + (out * y - x) * mix;
        };
        float left = left_, right = right_;
        for (StereoFrame& f : io) f = {shape(f.left, left), shape(f.right, right)};
        left_ = left;
        right_ = right;
    }
};

}  // namespace

constinit const EffectType effect::overdrive{
    .number = 101,
    .name = "Overdrive",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<Overdrive>,
    .rows = {{
        {"Mix", 0.5f},
        {},
        {"Drive", 0.5f},
        {"Bias", 0.5f, dynamics::showSigned},
        {"Out", 0},
    }},
};

}  // namespace stratovane
