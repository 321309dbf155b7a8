// Ensemble: three voices of one mono line, a slow sweep with a shimmer on top, two of them wide.
#include <array>
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

enum { Mix, Sync, Rate, Depth, Shimmer, Width };
constexpr int tickSamples = 32;
constexpr float lineSeconds = 0.05f;
constexpr double radiansPerHz = 32 * twoPi * 0.842152;  // per tick, over the sample rate

struct Voice {
    double offset;   // radians
    double shimmer;  // turns of the shimmer in one of the sweep
    double centre;   // of the sweep, in depths
};
constexpr std::array<Voice, 3> voices{{{0, 9, 1.5}, {2, 8, 1.5}, {4, 7, 1}}};

class Ensemble final : public EffectUnit {
  public:
    Ensemble() : EffectUnit{effect::ensemble} {}

  private:
    float dry_ = 1, wet_ = 0;
    double phasePerTick_ = 0;  // radians
    double depth_ = 0;         // samples
    double shimmer_ = 0;
    float width_ = 0;

    ControlTick tick_;
    double phase_ = 0;  // radians
    std::array<GlideReader, 3> readers_;

    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        tick_.reset();
        phase_ = 0;
        for (GlideReader& reader : readers_) reader.reset(line_.writeIndex());
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) {
            dry_ = dryGain(v);
            wet_ = wetGain(v) * 0.2f;
        }
        if (changed == Rate) phasePerTick_ = lfoHz(v) * radiansPerHz / rate();
        if (changed == Rate || changed == Depth)
            depth_ = chorusDepth(lfoHz(parameter(Rate)), parameter(Depth), rate(), 0.25);
        if (changed == Shimmer) shimmer_ = 0.25 * v * v;
        if (changed == Width) width_ = 1.2f * v;
    }
    double target(const Voice& voice) const {
        const double phase = phase_ + voice.offset;
        return depth_ *
               (std::sin(phase) + (std::sin(voice.shimmer * phase) + 1) * shimmer_ + voice.centre);
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_, width = width_;
        const int size = line_.size();
        ControlTick tick = tick_;
        std::array<GlideReader, 3> readers = readers_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                advancePhase(phase_, phasePerTick_, twoPi);
                for (std::size_t i = 0; i < voices.size(); ++i)
                    readers[i].aim(target(voices[i]), tickSamples, line_.writeIndex(), size);
            }
            line_.write(f.left + f.right);
            const float y1 = readers[0].read(line_), y2 = readers[1].read(line_);
            const float sum = y1 + y2 + readers[2].read(line_), side = width * (y1 - y2);
            f.left = dry * f.left + (sum + side) * wet;
            f.right = dry * f.right + (sum - side) * wet;
            for (GlideReader& reader : readers) reader.move(size);
            line_.step();
        }
        tick_ = tick;
        readers_ = readers;
    }
};

}  // namespace

constinit const EffectType effect::ensemble{.number = 23,
                                            .name = "Ensemble",
                                            .make = makeEffect<Ensemble>,
                                            .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                      {},
                                                      {"Rate", 0.5f, showEffectRate},
                                                      {"Depth", 0.5f, showEffectPercent},
                                                      {"Shimmer", 0, showEffectPercent},
                                                      {"Width", 0, showEffectPercent}}}};

}  // namespace stratovane
