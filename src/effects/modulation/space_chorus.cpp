// Space Chorus: the highs of each side are swept against each other and cross over, lows stay.
#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/glide_reader.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/sweep.h"

namespace stratovane {

namespace {

enum { Mix, Sync, Rate, Depth, PreDelay, Crossover };
constexpr int tickSamples = 256;
constexpr float lineSeconds = 0.1f;
constexpr double preDelaySeconds = 0.024;
constexpr double phasePerHz = 116.352;  // per tick, over the sample rate

/// State-variable crossover of one channel.
struct Split {
    float band = 0, low = 0;
    /// Returns the high output.
    float step(float x, float k) {
        const float high = x - low - band;
        band += high * k;
        low += band * k;
        return high;
    }
};

class SpaceChorus final : public EffectUnit {
  public:
    SpaceChorus() : EffectUnit{effect::spaceChorus} {}

  private:
    float dry_ = 1, wet_ = 0;
    double phasePerTick_ = 0;
    double depth_ = 0, preDelay_ = 1;  // samples
    float k_ = 0;                      // crossover coefficient, 0..1

    ControlTick tick_;
    double phase_ = 0;  // 0..2
    GlideReader left_, right_;
    Split leftSplit_, rightSplit_;

    Line leftLine_, rightLine_;

    bool prepare() override {
        const int samples = static_cast<int>(rate() * lineSeconds);
        return leftLine_.resize(samples) && rightLine_.resize(samples);
    }
    void reset() override {
        leftLine_.clear();
        rightLine_.clear();
        tick_.reset();
        phase_ = 0;
        left_.reset(leftLine_.writeIndex());
        right_.reset(rightLine_.writeIndex());
        leftSplit_ = rightSplit_ = {};
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = v;
        }
        if (changed == Rate) phasePerTick_ = lfoHz(v) * phasePerHz / rate();
        if (changed == Rate || changed == Depth)
            depth_ =
                (0.048 - 0.032 * parameter(Rate)) * rate() * parameter(Depth) * parameter(Depth);
        if (changed == PreDelay) preDelay_ = preDelaySeconds * v * rate() + 1;
        if (changed == Crossover) k_ = atMostOne((50.0f + 10000.0f * v * v) / rate());
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_, k = k_;
        const int size = leftLine_.size();
        ControlTick tick = tick_;
        GlideReader left = left_, right = right_;
        Split leftSplit = leftSplit_, rightSplit = rightSplit_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                const double way = triangle(advancePhase(phase_, phasePerTick_, 2)) * depth_;
                left.aim(preDelay_ + way, tickSamples, leftLine_.writeIndex(), size);
                right.aim(preDelay_ + depth_ - way, tickSamples, rightLine_.writeIndex(), size);
            }
            leftLine_.write(leftSplit.step(f.left, k));
            rightLine_.write(rightSplit.step(f.right, k));
            const float l = left.read(leftLine_), r = right.read(rightLine_);
            f.left = dry * f.left + wet * ((r - l) + leftSplit.low);
            f.right = dry * f.right + wet * ((l - r) + rightSplit.low);
            left.move(size);
            right.move(size);
            leftLine_.step();
            rightLine_.step();
        }
        tick_ = tick;
        left_ = left;
        right_ = right;
        leftSplit_ = leftSplit;
        rightSplit_ = rightSplit;
    }
};

}  // namespace

constinit const EffectType effect::spaceChorus{.number = 22,
                                               .name = "Space Chorus",
                                               .make = makeEffect<SpaceChorus>,
                                               .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                         {},
                                                         {"Rate", 0.5f, showEffectRate},
                                                         {"Depth", 0.5f, showEffectPercent},
                                                         {"Pre Del", 0, showEffectPercent},
                                                         {"Crossover", 0, showEffectPercent}}}};

}  // namespace stratovane
