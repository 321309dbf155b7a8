// Pan / Tremolo: the gain of each side follows a triangle of its own phase.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/ramp.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/sweep.h"

namespace stratovane {

namespace {

enum { Mix, Sync, Rate, Phase, Shape };
constexpr int tickSamples = 256;
constexpr double phasePerHz = 512;  // per tick, over the sample rate

class PanTremolo final : public EffectUnit {
  public:
    PanTremolo() : EffectUnit{effect::panTremolo} {}

  private:
    float amount_ = 0;
    double phasePerTick_ = 0;
    double rightOffset_ = 0;                      // 0..2, a whole turn
    double slope_ = 3, floor_ = 0, ceiling_ = 1;  // of the clipped triangle

    ControlTick tick_;
    double phase_ = 0;  // 0..2
    Ramp left_, right_;

    void reset() override {
        tick_.reset();
        phase_ = 0;
        left_.reset(1);
        right_.reset(1);
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) amount_ = v;
        if (changed == Rate) phasePerTick_ = lfoHz(v) * phasePerHz / rate();
        if (changed == Phase) rightOffset_ = 2.0 * v;
        if (changed == Shape) {
            const double shape = (v - 0.25) * 6;
            slope_ = std::fabs(shape) + 3;
            floor_ = std::max(shape, 0.0);
            ceiling_ = 1.5 + shape * 0.125;
        }
    }
    double gain(double phase) const {
        const double y = std::clamp(triangle(phase) * slope_ - floor_, 0.0, ceiling_);
        return (y - 1) * amount_ + 1;
    }
    void render(std::span<StereoFrame> io, double) override {
        ControlTick tick = tick_;
        Ramp left = left_, right = right_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                double shifted = advancePhase(phase_, phasePerTick_, 2);
                left.aim(gain(phase_), tickSamples);
                right.aim(gain(advancePhase(shifted, rightOffset_, 2)), tickSamples);
            }
            f.left *= static_cast<float>(left.value);
            f.right *= static_cast<float>(right.value);
            left.advance();
            right.advance();
        }
        tick_ = tick;
        left_ = left;
        right_ = right;
    }
};

void showPhase(TextOut& out, float v, const EffectView&) { out.print("%.0f deg", v * 360.0f); }
void showShape(TextOut& out, float v, const EffectView&) {
    out.print("%.0f %%", v * 200.0f - 100.0f);
}

}  // namespace

constinit const EffectType effect::panTremolo{.number = 50,
                                              .name = "Pan / Tremolo",
                                              .tail = {.seconds = 0.05f},
                                              .make = makeEffect<PanTremolo>,
                                              .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                        {},
                                                        {"Rate", 0.5f, showEffectRate},
                                                        {"Phase", 0.5f, showPhase},
                                                        {"Shape", 0, showShape}}}};

}  // namespace stratovane
