// Ducking Delay: a delay whose echoes are opened or pushed down by what comes in.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/line.h"
#include "effects/blocks/tiny.h"
#include "effects/delay/echo_unit.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 1.51f;

// Up to here Depth gates, above it ducks; Thresh below its limit follows the keys.
constexpr float gateLimit = 0.498f, autoLimit = 0.01f;

class DuckingDelay final : public EchoUnit {
  public:
    DuckingDelay() : EchoUnit{effect::duckingDelay} {}

  private:
    enum { LowDamp = Balance + 1, Damp, Depth, Threshold, Attack, Release };

    // Coefficients.
    float feedback_ = 0, lowCut_ = 0, lowCorner_ = 0;
    float base_ = 0;    // gain of the echoes at rest
    float target_ = 0;  // what input adds to it
    float threshold_ = 0, attack_ = 0, release_ = 0;
    // State.
    double envelope_ = 0;  // slow ones gather steps too small for a float
    float damped_ = 0, low_ = 0;
    // Lines.
    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        envelope_ = 0;
        damped_ = low_ = 0;
        setEchoTail(line_.size());
    }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Feedback:
                feedback_ = 0.999f * v;
                break;
            case LowDamp:
                lowCut_ = v;
                lowCorner_ = (v + 1) * 2500 / rate();
                break;
            case Depth:
                base_ = v <= gateLimit ? 2 * v : 1.0f;
                target_ = v <= gateLimit ? 1 - 2 * v : std::min(1 - 2 * v, 0.0f);
                break;
            case Threshold:
                threshold_ = v < autoLimit ? 0.01f : v * v * v;
                break;
            case Attack:
                attack_ = envelopeCoefficient(5 - 4 * v);
                break;
            case Release:
                release_ = envelopeCoefficient(4 - 4 * v);
                break;
            default:
                updateEcho(changed, line_.size(), Damp);
        }
    }
    float envelopeCoefficient(float logPerSecond) const {
        return onePoleCoefficient(static_cast<double>(std::exp(logPerSecond)), rate());
    }
    /// With keys to follow, "Auto" opens while one is held and closes after the last.
    float thresholdNow() const {
        if (keys() == nullptr || parameter(Threshold) >= autoLimit) return threshold_;
        return threshold_ * (keys()->pitch <= KeySource::noKey ? 10.0f : 0.1f);
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_ * 0.5f, feedback = feedback_, damping = damping_;
        const float lowCut = lowCut_, lowCorner = lowCorner_, base = base_, target = target_;
        const float threshold = thresholdNow(), attack = attack_, release = release_;
        const EchoTaps taps = taps_;
        const bool leftIsLonger = taps.left > taps.right;
        // An envelope left over from another Depth must not lift the loop above unity.
        double envelope = std::min(envelope_, 1.0 - base + 1e-8);
        float damped = damped_, low = low_;
        for (StereoFrame& f : io) {
            const auto gain = static_cast<float>(envelope + base);
            const float left = line_.tap(taps.left) * gain, right = line_.tap(taps.right) * gain;
            const float in = f.left + f.right;
            f.left = dry * f.left + wet * left;
            f.right = dry * f.right + wet * right;
            if (std::fabs(in) <= threshold)
                envelope += (1e-8 - envelope) * release;
            else
                envelope += (target - envelope) * attack;
            lowpass(damped, feedback * (leftIsLonger ? left : right) + in, damping);
            lowpass(low, damped, lowCorner);
            line_.write(damped - lowCut * low);
            line_.step();
        }
        envelope_ = envelope;
        damped_ = zeroWhenTiny(damped);
        low_ = zeroWhenTiny(low);
    }
};

void showDepth(TextOut& out, float v, const EffectView&) {
    out.print("%s%.0f%%", v <= gateLimit ? "Gate" : "Duck", std::fabs(v - 0.5f) * 199.8f);
}

void showThreshold(TextOut& out, float v, const EffectView&) {
    if (v < autoLimit) return out.text("Auto");
    out.print("%.1f dB", 20 * std::log10(v * v * v));
}

}  // namespace

constinit const EffectType effect::duckingDelay{
    .number = 14,
    .name = "Ducking Delay",
    .wakes = Waking::audible,
    .make = makeEffect<DuckingDelay>,
    .rows = {{{"Mix", 0.5f, showEffectPercent},
              {"Sync", 0, showEffectSwitch},
              {"Delay", 0.5f, showEchoTime<lineSeconds>},
              {"Feedback", 0.5f, showEffectPercent},
              {"Balance", 0.5f, showBalance},
              {"Lo Damp", 0, showEffectPercent},
              {"HF Damp", 1, showInvertedPercent},
              {"Depth", 0, showDepth},
              {"Thresh", 0, showThreshold},
              {"Attack", 0, showEffectPercent},
              {"Release", 0, showEffectPercent}}}};

}  // namespace stratovane
