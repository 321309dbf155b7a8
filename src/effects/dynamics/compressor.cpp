// Compressor: above the threshold the level is divided by a line of the level itself.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/displays.h"
#include "effects/dynamics/levels.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Output, Threshold = 2, Ratio, Attack, Release };

class Compressor final : public EffectUnit {
  public:
    Compressor() : EffectUnit{effect::compressor} {}

  private:
    float output_ = 1, threshold_ = 1;  // gain, level
    float ratio_ = 0;                   // share of the level above the threshold, 0..1.2
    float attack_ = 1;                  // follower coefficient
    // The decay per sample glides from 1 by steps far below a float's resolution there: with floats
    // long releases would never begin.
    double decay_ = 0, decayGlide_ = 1;  // target e^-x and coefficient 1 - e^-x
    double envelope_ = 0, decayNow_ = 1;

    void reset() override {
        envelope_ = 0;
        decayNow_ = 1;
    }
    void idle(int) override { envelope_ = 0; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Output:
                output_ = std::exp(4.6f * v - 2.3f);
                break;
            case Threshold:
                threshold_ = std::exp(4.6f * v - 3.5f);
                break;
            case Ratio:
                ratio_ = 1.2f * v * v * v;
                break;
            case Attack:
                attack_ = onePoleCoefficient(std::exp(9.0f - 4.0f * v), rate());
                break;
            case Release: {
                const double x = double(std::exp(3.6f - 2.6f * v)) / double(rate());
                decay_ = std::exp(-x);
                decayGlide_ = -std::expm1(-x);
                break;
            }
        }
    }

    void render(std::span<StereoFrame> io, double) override {
        const float output = output_, threshold = threshold_;
        const float slope = ratio_ / threshold, rest = 1.0f - ratio_;
        const double attack = double(attack_), decay = decay_, glide = decayGlide_;
        double envelope = envelope_, decayNow = decayNow_;
        for (StereoFrame& f : io) {
            const double peak = double(dynamics::peakOf(f));
            if (peak <= envelope) {
                envelope *= decayNow;
                decayNow += (decay - decayNow) * glide;
            } else {
                decayNow = 1;
                envelope += (peak - envelope) * attack;
            }
            const float level = static_cast<float>(envelope);
            const float gain = level <= threshold ? output : output / (level * slope + rest);
            f = {f.left * gain, f.right * gain};
        }
        envelope_ = envelope;
        decayNow_ = decayNow;
    }
};

}  // namespace

constinit const EffectType effect::compressor{
    .number = 91,
    .name = "Compressor",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<Compressor>,
    .rows = {{
        {"Output", 0.5f, showDecibels40},
        {},
        {"Thresh", 0.5f, dynamics::showDecibels<40, -30>},
        {"Ratio", 0.5f,
         [](TextOut& out, float v, const EffectView&) {
             out.print("%.1f : 1", v * v * 19.0f + 1.0f);
         }},
        {"Attack", 0},
        {"Release", 0},
    }},
};

}  // namespace stratovane
