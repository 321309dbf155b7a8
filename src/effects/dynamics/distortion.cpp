// Distortion: clipping, then a mix of line and cube, behind a tone filter.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mix, Drive = 2, Bias, Out, Tone };

class Distortion final : public EffectUnit {
  public:
    Distortion() : EffectUnit{effect::distortion} {}

  private:
    float mix_ = 0, drive_ = 1, out_ = 0;
    float line_ = 0;              // share of the line against the cube, -1..3
    float tone_ = 1;              // coefficient of the lowpass; 1: flat
    bool fromBelow_ = false;      // the shaper takes lowpass minus input
    float left_ = 0, right_ = 0;  // lowpass states

    void reset() override { left_ = right_ = 0; }
    bool begin(bool&) override { return mix_ != 0; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Drive:
                drive_ = std::exp(6.9f * v);
                break;
            case Bias:
                line_ = 4.0f * v - 1.0f;
                break;
            case Out:
                out_ = 0.5f * v * v;
                break;
            case Tone:
                setTone(v);
                break;
        }
    }

    void setTone(float v) {
        const float above = v - 0.51f;
        fromBelow_ = v > 0.51f;
        if (v < 0.49f)
            tone_ = onePoleCoefficient(300000.0f * v * v * v + 500.0f, rate());
        else if (fromBelow_)
            tone_ = onePoleCoefficient(50000.0f * above * above * above + 50.0f, rate());
        else
            tone_ = 1.0f;
    }

    void render(std::span<StereoFrame> io, double) override {
        const float mix = mix_, drive = drive_, out = out_, line = line_, tone = tone_;
        const float direct = fromBelow_ ? 1.0f : 0.0f;
        const auto shape = [=](float in, float& state) {
            const float x = in + 1e-8f;
            lowpass(state, x, tone);
            const float y = std::clamp((state - direct * x) * drive, -1.0f, 1.0f);
            const float cube = y * y * y;
            return x + (((y - cube) * line + cube) * out - x) * mix;
        };
        float left = left_, right = right_;
        for (StereoFrame& f : io) f = {shape(f.left, left), shape(f.right, right)};
        left_ = left;
        right_ = right;
    }
};

}  // namespace

constinit const EffectType effect::distortion{
    .number = 100,
    .name = "Distortion",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<Distortion>,
    .rows = {{
        {"Mix", 0.5f},
        {},
        {"Drive", 0.5f},
        {"Bias", 0.5f, dynamics::showSigned},
        {"Out", 0},
        {"Tone", 0, dynamics::showSigned},
    }},
};

}  // namespace stratovane
