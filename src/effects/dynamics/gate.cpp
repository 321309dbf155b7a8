// Gate: closes below the threshold, after a hold of 50 ms and with hysteresis.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/displays.h"
#include "effects/dynamics/levels.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Output, Threshold = 2, Range, Attack, Release };

constexpr float holdSeconds = 0.05f;
constexpr float hysteresis = 0.7f;  // of the threshold

class Gate final : public EffectUnit {
  public:
    Gate() : EffectUnit{effect::gate} {}

  private:
    float open_ = 1, closed_ = 0;     // gains
    float threshold_ = 1;             // of the peak
    float attack_ = 1, release_ = 1;  // coefficients of the gain
    int holdSamples_ = 0;
    float peak_ = 0, gain_ = 0;
    int hold_ = 0;  // samples left open; 0: closed

    void reset() override {
        holdSamples_ = static_cast<int>(rate() * holdSeconds);
        peak_ = gain_ = 0;
        hold_ = 0;
    }
    void idle(int) override { peak_ = 0; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Output:
                open_ = std::exp(4.6f * v - 2.3f);
                break;
            case Threshold:
                threshold_ = std::exp(4.6f * v - 4.6f);
                return;
            case Range:
                break;
            case Attack:
                attack_ = onePoleCoefficient(std::exp(8.0f - 7.0f * v), rate());
                return;
            case Release:
                release_ = onePoleCoefficient(std::exp(7.0f - 8.0f * v), rate());
                return;
            default:
                return;
        }
        closed_ = open_ - open_ * parameter(Range) + 1e-10f;
    }

    void render(std::span<StereoFrame> io, double) override {
        const float open = open_, closed = closed_, attack = attack_, release = release_;
        const float opensAbove = threshold_, closesBelow = hysteresis * threshold_;
        const float fall = 0.2f * release_;  // of the peak, per sample
        const int holdSamples = holdSamples_;
        float peak = peak_, gain = gain_;
        int hold = hold_;
        for (StereoFrame& f : io) {
            const float level = dynamics::peakOf(f);
            peak = level > peak ? level : peak - peak * fall;
            if (peak > opensAbove)
                hold = holdSamples;
            else if (peak < closesBelow && hold > 0)
                --hold;
            if (hold != 0)
                gain += (open - gain) * attack;
            else
                gain += (closed - gain) * release;
            f = {f.left * gain, f.right * gain};
        }
        peak_ = peak;
        gain_ = gain;
        hold_ = hold;
    }
};

}  // namespace

constinit const EffectType effect::gate{
    .number = 95,
    .name = "Gate",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<Gate>,
    .rows = {{
        {"Output", 0.5f, showDecibels40},
        {},
        {"Thresh", 0.5f, dynamics::showDecibels<40, -40>},
        {"Range", 0.5f},
        {"Attack", 0},
        {"Release", 0},
    }},
};

}  // namespace stratovane
