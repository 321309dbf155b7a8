// Chorus: two voices of one mono line, each swept by a sine of its own speed.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/glide_reader.h"
#include "effects/blocks/line.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/sweep.h"

namespace stratovane {

namespace {

enum { Mix, Sync, Rate, Depth, PreDelay };
constexpr int tickSamples = 256;
constexpr float lineSeconds = 0.05f;
constexpr double preDelaySeconds = 0.024;
constexpr double radiansPerHz = 677.2988;  // per tick, over the sample rate: 0.42 turns a cycle
constexpr double rightSpeed = 1.41;        // of the left LFO

class Chorus final : public EffectUnit {
  public:
    Chorus() : EffectUnit{effect::chorus} {}

  private:
    float dry_ = 1, wet_ = 0;
    double phasePerTick_ = 0;          // radians
    double depth_ = 0, preDelay_ = 1;  // samples

    ControlTick tick_;
    double leftPhase_ = 0, rightPhase_ = 0;  // radians
    GlideReader left_, right_;

    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        tick_.reset();
        leftPhase_ = rightPhase_ = 0;
        left_.reset(line_.writeIndex());
        right_.reset(line_.writeIndex());
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = wetGain(v) * 0.5f;
        }
        if (changed == Rate) phasePerTick_ = lfoHz(v) * radiansPerHz / rate();
        if (changed == Rate || changed == Depth)
            depth_ = chorusDepth(lfoHz(parameter(Rate)), parameter(Depth), rate(), 0.5);
        if (changed == PreDelay) preDelay_ = preDelaySeconds * v * rate() + 1;
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_;
        const int size = line_.size();
        ControlTick tick = tick_;
        GlideReader left = left_, right = right_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                advancePhase(leftPhase_, phasePerTick_, twoPi);
                advancePhase(rightPhase_, rightSpeed * phasePerTick_, twoPi);
                left.aim(preDelay_ + depth_ * (std::sin(leftPhase_) + 1), tickSamples,
                         line_.writeIndex(), size);
                right.aim(preDelay_ + depth_ * (std::cos(rightPhase_) + 1), tickSamples,
                          line_.writeIndex(), size);
            }
            line_.write(f.left + f.right);
            f.left = dry * f.left + wet * left.read(line_);
            f.right = dry * f.right + wet * right.read(line_);
            left.move(size);
            right.move(size);
            line_.step();
        }
        tick_ = tick;
        left_ = left;
        right_ = right;
    }
};

}  // namespace

constinit const EffectType effect::chorus{.number = 20,
                                          .name = "Chorus",
                                          .make = makeEffect<Chorus>,
                                          .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                    {},
                                                    {"Rate", 0.5f, showEffectRate},
                                                    {"Depth", 0.5f, showEffectPercent},
                                                    {"Pre Del", 0, showEffectPercent}}}};

}  // namespace stratovane
