// Step Flanger: a flanger of which a share stands still from step to step, in time with the song.
#include <cmath>

#include "base/tempo_divisions.h"
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

enum { Mix, Sync, Rate, Depth, Feedback, PreDelay, StepRate, StepDepth };
constexpr int tickSamples = 64, fadeSamples = 64;
constexpr float lineSeconds = 0.012f;
constexpr double depthSeconds = 0.004, preDelaySeconds = 0.004;
constexpr double phasePerHz = 256.0;  // per tick, over the sample rate
constexpr float whisper = 1e-8f;      // keeps the loop from denormal numbers

/// "Step Rate" reaches from 3/4 to 1/64.
const TempoDivision& stepDivision(float v) { return tempoDivision(0.25f + 0.75f * v); }

class StepFlanger final : public EffectUnit {
  public:
    StepFlanger() : EffectUnit{effect::stepFlanger} {}

  private:
    float dry_ = 1, wet_ = 0;
    double phasePerTick_ = 0;          // of 4 a cycle
    double depth_ = 0, preDelay_ = 0;  // samples
    float feedback_ = 0;               // -0.95..0
    bool synced_ = false;
    double stepsPerTick_ = 0;  // when free
    double stepsPerBeat_ = 0;
    double held_ = 0;  // share of the sweep that moves in steps

    ControlTick tick_;
    double phase_ = 0;  // 0..4
    double clock_ = 0;  // steps since the last one
    GlideReader reader_;
    int offset_ = 0, lastOffset_ = 0;  // frames behind the reader
    float fade_ = 1;                   // from the last offset to the present one
    StereoFrame voice_;                // last output

    StereoLine line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        tick_.reset();
        phase_ = clock_ = 0;
        reader_.reset(line_.writeIndex());
        offset_ = lastOffset_ = 0;
        fade_ = 1;
        voice_ = {};
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = wetGain(v) * 0.5f;
        }
        if (changed == Sync) synced_ = isOn(v);
        if (changed == Rate) phasePerTick_ = lfoHz(v) * phasePerHz / rate();
        if (changed == Depth) depth_ = depthSeconds * v * rate();
        if (changed == Feedback) feedback_ = -0.95f * v;
        if (changed == PreDelay) preDelay_ = preDelaySeconds * v * rate();
        if (changed == StepRate) {
            stepsPerTick_ = lfoHz(v) * tickSamples / rate();
            stepsPerBeat_ = static_cast<double>(stepDivision(v).perBeat);
        }
        if (changed == StepDepth) held_ = v * (2.0 - v);
    }
    /// Follows the song; a clock that would fall has passed a step, which the next tick takes.
    void followSong(double beat) {
        const double steps = beat * stepsPerBeat_;
        const double fraction = steps - std::floor(steps);
        clock_ = fraction < clock_ ? fraction + 1 : fraction;
    }
    /// Control tick; true when a step is due.
    bool advance(double& target) {
        const double sweep = advancePhase(phase_, phasePerTick_, 4) * 0.5;
        target = std::fabs((2 * triangle(sweep) - 1) * depth_ + preDelay_);
        if (!synced_) clock_ += stepsPerTick_;
        if (clock_ < 1) return false;
        clock_ -= 1;
        return true;
    }
    void render(std::span<StereoFrame> io, double beat) override {
        if (synced_) followSong(beat);
        const float dry = dry_, wet = wet_, feedback = feedback_;
        const int size = line_.size();
        ControlTick tick = tick_;
        GlideReader reader = reader_;
        int offset = offset_, lastOffset = lastOffset_;
        float fade = fade_;
        StereoFrame voice = voice_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                double target = 0;
                if (advance(target)) {
                    lastOffset = offset;
                    offset = static_cast<int>(target * held_);
                    fade = 0;
                }
                reader.aim(target - target * held_, tickSamples, line_.writeIndex(), size);
            }
            line_.write({f.left + feedback * voice.left + whisper,
                         f.right + feedback * voice.right + whisper});
            voice = reader.read(line_, offset);
            if (fade < 1.0f) {
                const StereoFrame last = reader.read(line_, lastOffset);
                voice.left = last.left + (voice.left - last.left) * fade;
                voice.right = last.right + (voice.right - last.right) * fade;
                fade += 1.0f / static_cast<float>(fadeSamples);
            }
            f.left = dry * f.left - wet * voice.left;
            f.right = dry * f.right - wet * voice.right;
            reader.move(size);
            line_.step();
        }
        tick_ = tick;
        reader_ = reader;
        offset_ = offset;
        lastOffset_ = lastOffset;
        fade_ = fade;
        voice_ = voice;
    }
};

void showStepRate(TextOut& out, float v, const EffectView& view) {
    if (isSynced(view)) return out.text(stepDivision(v).name);
    showEffectRate(out, v, view);
}

}  // namespace

constinit const EffectType effect::stepFlanger{.number = 31,
                                               .name = "Step Flanger",
                                               .make = makeEffect<StepFlanger>,
                                               .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                         {"Sync", 0, showEffectSwitch},
                                                         {"Rate", 0.5f, showEffectRate},
                                                         {"Depth", 0.5f, showEffectPercent},
                                                         {"Feedback", 0.75f, showEffectPercent},
                                                         {"Pre Del", 0.5f, showEffectPercent},
                                                         {"Step Rate", 0, showStepRate},
                                                         {"Step Depth", 0, showEffectPercent}}}};

}  // namespace stratovane
