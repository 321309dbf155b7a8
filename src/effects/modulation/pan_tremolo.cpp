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
constexpr float phasePerHz = 512.0f;  // per tick, over the sample rate

class PanTremolo final : public EffectUnit {
  public:
    PanTremolo() : EffectUnit{effect::panTremolo} {}

  private:
    float amount_ = 0;
    float phasePerTick_ = 0;
    float rightOffset_ = 0;                      // 0..2, a whole turn
    float slope_ = 3, floor_ = 0, ceiling_ = 1;  // of the clipped triangle

    ControlTick tick_;
    float phase_ = 0;  // 0..2
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
        if (changed == Rate) phasePerTick_ = rateHz(v) * phasePerHz / rate();
        if (changed == Phase) rightOffset_ = 2.0f * v;
        if (changed == Shape) {
            const float shape = (v - 0.25f) * 6.0f;
            slope_ = std::fabs(shape) + 3.0f;
            floor_ = std::max(shape, 0.0f);
            ceiling_ = 1.5f + shape * 0.125f;
        }
    }
    float gain(float phase) const {
        const float y = std::clamp(triangle(phase) * slope_ - floor_, 0.0f, ceiling_);
        return (y - 1.0f) * amount_ + 1.0f;
    }
    void render(std::span<StereoFrame> io, double) override {
        ControlTick tick = tick_;
        Ramp left = left_, right = right_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                float shifted = advancePhase(phase_, phasePerTick_, 2.0f);
                left.aim(gain(phase_), tickSamples);
                right.aim(gain(advancePhase(shifted, rightOffset_, 2.0f)), tickSamples);
            }
            f.left *= left.value;
            f.right *= right.value;
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
