// Chorus + Reverb: a two-voice chorus, then a hall.
#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/glide_reader.h"
#include "effects/blocks/line.h"
#include "effects/catalogue.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/sweep.h"

namespace stratovane {

namespace {

enum { Mix, Sync, Rate, Depth, Balance, ReverbTime, PreDelay, Damping, LowCut, HighCut };
constexpr int tickSamples = 256;
constexpr float lineSeconds = 0.05f;
constexpr double chorusDelaySeconds = 0.006;
constexpr double phasePerHz = 256.0;  // per tick, over the sample rate
constexpr int hallNumber = 1, hallMix = 0;
constexpr int hallShift = 3;  // our 5..9 are the hall's 2..6

class ChorusReverb final : public EffectUnit {
  public:
    ChorusReverb() : EffectUnit{effect::chorusReverb}, hall_{makeEffectUnit(hallNumber)} {}

  private:
    float dry_ = 1, wet_ = 0;
    double phasePerTick_ = 0;
    double depth_ = 0, delay_ = 1;  // samples

    ControlTick tick_;
    double phase_ = 0;  // 0..2
    GlideReader left_, right_;

    Line line_;
    std::unique_ptr<EffectUnit> hall_;

    bool prepare() override {
        if (hall_ == nullptr || !line_.resize(static_cast<int>(rate() * lineSeconds))) return false;
        hall_->setSampleRate(rate());
        return true;
    }
    void reset() override {
        line_.clear();
        tick_.reset();
        phase_ = 0;
        left_.reset(line_.writeIndex());
        right_.reset(line_.writeIndex());
        delay_ = rate() * chorusDelaySeconds + 1;
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix || changed == Balance) {
            const float mix = parameter(Mix), balance = parameter(Balance);
            const float share = (1.0f - balance * balance) * mix;
            dry_ = dryGain(share);
            wet_ = wetGain(share) * 0.5f;
            hall_->setParameter(hallMix, mix * balance);
        }
        if (changed == Rate) phasePerTick_ = lfoHz(v) * phasePerHz / rate();
        if (changed == Rate || changed == Depth)
            depth_ = chorusDepth(lfoHz(parameter(Rate)), parameter(Depth), rate(), 0.5);
        if (changed >= ReverbTime && changed <= HighCut)
            hall_->setParameter(changed - hallShift, v);
    }
    void render(std::span<StereoFrame> io, double beat) override {
        const float dry = dry_, wet = wet_;
        const int size = line_.size();
        ControlTick tick = tick_;
        GlideReader left = left_, right = right_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                const double way = triangle(advancePhase(phase_, phasePerTick_, 2)) * depth_;
                left.aim(delay_ + way, tickSamples, line_.writeIndex(), size);
                right.aim(delay_ + depth_ - way, tickSamples, line_.writeIndex(), size);
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
        bool silent = false;  // this unit's tail governs, the hall runs whenever it does
        hall_->process(io, beat, silent);
    }
};

void showReverbTime(TextOut& out, float v, const EffectView&) {
    out.print("%.2f s", v * v * v * 9.5f + 0.5f);
}
void showPreDelay(TextOut& out, float v, const EffectView&) {
    out.print("%.0f ms", v * v * 400.0f);
}

}  // namespace

constinit const EffectType effect::chorusReverb{.number = 19,
                                                .name = "Chorus + Reverb",
                                                .shown = "Cho+Rev",
                                                .wakes = Waking::audible,
                                                .make = makeEffect<ChorusReverb>,
                                                .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                          {},
                                                          {"Rate", 0.5f, showEffectRate},
                                                          {"Depth", 0.5f, showEffectPercent},
                                                          {"Cho<>Rev", 0.5f, showEffectPercent},
                                                          {"Rev Time", 0, showReverbTime},
                                                          {"Pre Del", 0, showPreDelay},
                                                          {"Damping", 0, showInvertedPercent},
                                                          {"Lo Cut", 0, showEffectPercent},
                                                          {"Hi Cut", 0, showInvertedPercent}}}};

}  // namespace stratovane
