// Flanger: one swept tap of a stereo line, fed back and subtracted.
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

enum { Mix, Sync, Rate, Depth, Feedback, PreDelay };
constexpr int tickSamples = 256;
constexpr float lineSeconds = 0.025f;
constexpr double depthSeconds = 0.012, preDelaySeconds = 0.012;
constexpr double radiansPerHz = 1608.4955;  // 2 pi * 256, per tick over the sample rate
constexpr float whisper = 1e-8f;            // keeps the loop from denormal numbers

class Flanger final : public EffectUnit {
  public:
    Flanger() : EffectUnit{effect::flanger} {}

  private:
    float dry_ = 1, wet_ = 0;
    double phasePerTick_ = 0;          // radians
    double depth_ = 0, preDelay_ = 0;  // samples
    float feedback_ = 0;               // -0.95..0

    ControlTick tick_;
    double phase_ = 0;  // radians
    GlideReader reader_;
    StereoFrame voice_;  // last output

    StereoLine line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        tick_.reset();
        phase_ = 0;
        reader_.reset(line_.writeIndex());
        voice_ = {};
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = wetGain(v) * 0.5f;
        }
        if (changed == Rate) phasePerTick_ = lfoHz(v) * radiansPerHz / rate();
        if (changed == Depth) depth_ = depthSeconds * v * rate();
        if (changed == Feedback) feedback_ = -0.95f * v;
        if (changed == PreDelay) preDelay_ = preDelaySeconds * v * rate();
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_, feedback = feedback_;
        const int size = line_.size();
        ControlTick tick = tick_;
        GlideReader reader = reader_;
        StereoFrame voice = voice_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                advancePhase(phase_, phasePerTick_, twoPi);
                // Through zero: where the sweep would turn negative it comes back.
                reader.aim(std::fabs(std::sin(phase_) * depth_ + preDelay_), tickSamples,
                           line_.writeIndex(), size);
            }
            line_.write({f.left + feedback * voice.left + whisper,
                         f.right + feedback * voice.right + whisper});
            voice = reader.read(line_);
            f.left = dry * f.left - wet * voice.left;
            f.right = dry * f.right - wet * voice.right;
            reader.move(size);
            line_.step();
        }
        tick_ = tick;
        reader_ = reader;
        voice_ = voice;
    }
};

}  // namespace

constinit const EffectType effect::flanger{.number = 30,
                                           .name = "Flanger",
                                           .make = makeEffect<Flanger>,
                                           .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                     {},
                                                     {"Rate", 0.5f, showEffectRate},
                                                     {"Depth", 0.5f, showEffectPercent},
                                                     {"Feedback", 0.75f, showEffectPercent},
                                                     {"Pre Del", 0.5f, showEffectPercent}}}};

}  // namespace stratovane
