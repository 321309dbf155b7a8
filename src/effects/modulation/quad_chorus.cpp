// Quad Chorus: four voices of one mono line in two opposed pairs, fed back through a filter.
#include <algorithm>
#include <cmath>

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

enum { Mix, Sync, Rate, Depth, PreDelay, Tone, Feedback };
constexpr int tickSamples = 256;
constexpr float lineSeconds = 0.1f;
constexpr double preDelaySeconds = 0.024;
constexpr double phasePerHz = 108.8;   // per tick, over the sample rate
constexpr double rightSpeed = 1.41;    // of the left LFO
constexpr float deepestLow = -0.215f;  // four voices and the lowpass peak would ring on below it

/// The most negative feedback that four voices and the band output bear. With p the squared sine of
/// half the angle per sample, the reciprocal of the squared band gain is
/// k²/4p + k - 1 + 4p (1 - k)/k², smallest at p = k²/4√(1 - k). Only low sample rates come near.
float deepestBand(float k) {
    const float p = std::min(k * k / (4.0f * std::sqrt(1.0f - k)), 1.0f);
    const float inverse = k * k / (4.0f * p) + k - 1.0f + 4.0f * p * (1.0f - k) / (k * k);
    return -0.99f * 0.25f * std::sqrt(inverse);
}

class QuadChorus final : public EffectUnit {
  public:
    QuadChorus() : EffectUnit{effect::quadChorus} {}

  private:
    float dry_ = 1, wet_ = 0;
    double phasePerTick_ = 0;
    double depth_ = 0, preDelay_ = 1;  // samples
    float k_ = 0;                      // filter coefficient, 0..1
    float feedback_ = 0;               // negative
    bool band_ = false;                // the line takes the band, not the low output

    ControlTick tick_;
    double leftPhase_ = 0, rightPhase_ = 0;  // 0..2
    GlideReader leftA_, leftB_, rightA_, rightB_;
    float voices_ = 0;  // last sum of all four
    float bandState_ = 0, lowState_ = 0;

    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        tick_.reset();
        leftPhase_ = rightPhase_ = 0;
        for (GlideReader* voice : {&leftA_, &leftB_, &rightA_, &rightB_})
            voice->reset(line_.writeIndex());
        voices_ = bandState_ = lowState_ = 0;
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = wetGain(v) * 0.25f;
        }
        if (changed == Rate) phasePerTick_ = lfoHz(v) * phasePerHz / rate();
        if (changed == Rate || changed == Depth)
            depth_ =
                (0.048 - 0.032 * parameter(Rate)) * rate() * parameter(Depth) * parameter(Depth);
        if (changed == PreDelay) preDelay_ = preDelaySeconds * v * rate() + 1;
        if (changed == Tone) {
            band_ = v > 0.5f;
            const float perSecond =
                band_ ? 50.0f + 32000.0f * (v - 0.5f) * (v - 0.5f) : 4000.0f + 160000.0f * v * v;
            k_ = atMostOne(perSecond / rate());
        }
        if (changed == Tone || changed == Feedback) {
            feedback_ = std::max(-0.01f - 0.23f * parameter(Feedback),
                                 band_ ? deepestBand(k_) : deepestLow);
        }
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_, k = k_, feedback = feedback_;
        const bool takeBand = band_;
        const int size = line_.size();
        ControlTick tick = tick_;
        GlideReader leftA = leftA_, leftB = leftB_, rightA = rightA_, rightB = rightB_;
        float voices = voices_, band = bandState_, low = lowState_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                const int write = line_.writeIndex();
                const double left = triangle(advancePhase(leftPhase_, phasePerTick_, 2)) * depth_;
                const double right =
                    triangle(advancePhase(rightPhase_, rightSpeed * phasePerTick_, 2)) * depth_;
                leftA.aim(preDelay_ + left, tickSamples, write, size);
                leftB.aim(preDelay_ + depth_ - left, tickSamples, write, size);
                rightA.aim(preDelay_ + right, tickSamples, write, size);
                rightB.aim(preDelay_ + depth_ - right, tickSamples, write, size);
            }
            band += (feedback * voices + f.left + f.right - low - band) * k;
            low += band * k;
            line_.write(takeBand ? band : low);
            const float left = leftA.read(line_) + leftB.read(line_);
            const float right = rightA.read(line_) + rightB.read(line_);
            voices = left + right;
            f.left = dry * f.left + wet * left;
            f.right = dry * f.right + wet * right;
            leftA.move(size);
            leftB.move(size);
            rightA.move(size);
            rightB.move(size);
            line_.step();
        }
        tick_ = tick;
        leftA_ = leftA;
        leftB_ = leftB;
        rightA_ = rightA;
        rightB_ = rightB;
        voices_ = voices;
        bandState_ = band;
        lowState_ = low;
    }
};

}  // namespace

constinit const EffectType effect::quadChorus{.number = 21,
                                              .name = "Quad Chorus",
                                              .make = makeEffect<QuadChorus>,
                                              .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                        {},
                                                        {"Rate", 0.5f, showEffectRate},
                                                        {"Depth", 0.5f, showEffectPercent},
                                                        {"Pre Del", 0, showEffectPercent},
                                                        {"Tone", 0, showEffectPercent},
                                                        {"Feedback", 0, showEffectPercent}}}};

}  // namespace stratovane
