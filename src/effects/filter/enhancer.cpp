// Enhancer: a tuned treble of each channel and a bass of both, laid over the signal.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

class Enhancer final : public EffectUnit {
  public:
    Enhancer() : EffectUnit{effect::enhancer} {}

  private:
    enum { HighDepth, HighTune = 2, LowDepth, LowTune };
    struct State {
        float band = 0, low = 0;
        float input = 0;  // the previous one
    };

    // Coefficients.
    float high_ = 0, low_ = 0;  // gains
    float tune_ = 0;
    float frequency_ = 0, damping_ = 1;  // of the high band's state-variable filter
    float lowCorner_ = 0;
    // State.
    State left_, right_;
    float bass1_ = 0, bass2_ = 0;  // two lowpasses in series

    void reset() override {
        left_ = right_ = {};
        bass1_ = bass2_ = 0;
    }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case HighDepth:
                high_ = std::exp(v) - 1;
                break;
            case HighTune: {
                tune_ = v;
                damping_ = (1 - 2 * v + v * v) * 1.2f + 0.6f;
                // Beyond this the filter would not be stable, which it reaches at low rates alone.
                const float bound = 0.98f * (std::sqrt(damping_ * damping_ + 4) - damping_);
                frequency_ = std::min((15000 + 45000 * v) / rate(), bound);
                break;
            }
            case LowDepth:
                low_ = std::exp(1.6f * v) - 1;
                break;
            case LowTune:
                lowCorner_ = (400 + 1600 * (v * v)) / rate();
                break;
            default:
                break;
        }
    }
    void render(std::span<StereoFrame> io, double) override {
        const float highGain = high_, lowGain = low_, weight = 1 - tune_;
        const float frequency = frequency_, damping = damping_, lowCorner = lowCorner_;
        State left = left_, right = right_;
        float bass1 = bass1_, bass2 = bass2_;
        const auto brighten = [=](float x, State& s) {
            const float h = (x + s.input) - s.low - damping * s.band + 1e-8f;
            s.band += h * frequency;
            s.low += s.band * frequency;
            s.input = x;
            return highGain * (h + weight * ((2 * x - s.low) - h - 2 * s.band));
        };
        for (StereoFrame& f : io) {
            const float bass = (bass2 - 0.15f * bass1) * lowGain;
            const float sum = f.left + f.right;
            f = {f.left + bass + brighten(f.left, left), f.right + bass + brighten(f.right, right)};
            lowpass(bass1, sum, lowCorner);
            lowpass(bass2, bass1, lowCorner);
        }
        left_ = left;
        right_ = right;
        bass1_ = bass1;
        bass2_ = bass2;
    }
};

void showDepth(TextOut& out, float v, const EffectView&) { out.print("%+.1f dB", v * 18); }
void showHighTune(TextOut& out, float v, const EffectView&) { out.print("%.0f kHz", v * 10 + 2); }
void showLowTune(TextOut& out, float v, const EffectView&) { out.print("%.0f Hz", v * 80 + 40); }

}  // namespace

constinit const EffectType effect::enhancer{.number = 85,
                                            .name = "Enhancer",
                                            .tail = {.seconds = 0.5f},
                                            .make = makeEffect<Enhancer>,
                                            .rows = {{{"Hi Depth", 0.5f, showDepth},
                                                      {},
                                                      {"Hi Tune", 0.5f, showHighTune},
                                                      {"Lo Depth", 0.5f, showDepth},
                                                      {"Lo Tune", 0, showLowTune}}}};

}  // namespace stratovane
