// Tube Drive: biased clipping whose distortion alone is freed of its lows.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mix, Drive = 2, Clip, Bias, HighCut, LowCut, Mode };

class TubeDrive final : public EffectUnit {
  public:
    TubeDrive() : EffectUnit{effect::tubeDrive} {}

  private:
    float mix_ = 1, bias_ = 0;
    double target_ = 8;  // drive gain aimed at
    bool soft_ = false, stereo_ = false;
    float highCut_ = 1, lowCut_ = 1;  // coefficients
    double drive_ = 8;                // gain in use; a float would stop short of its target
    struct Channel {
        float added = 0;  // lowpass of what the shaper added
        float high = 0;   // high-cut state
    } left_, right_;

    void reset() override {
        update(Drive);
        update(Bias);
        drive_ = target_;
        left_ = right_ = {.added = bias_ * 0.25f};
    }
    void idle(int) override { drive_ = target_; }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Drive:
                target_ = double(100.0f * v * v * v + 8.0f);
                break;
            case Clip:
                soft_ = isOn(v);
                break;
            case Bias:
                bias_ = -2.0f * v;
                break;
            case HighCut:
                highCut_ = atMostOne((34000.0f * v + 10000.0f) / rate());
                break;
            case LowCut:
                lowCut_ = atMostOne((10000.0f * v * v + 20.0f) / rate());
                break;
            case Mode:
                stereo_ = isOn(v);
                break;
        }
    }

    template <bool soft>
    float shape(float x, float drive, Channel& c) const {
        const float u = std::clamp(drive * x + bias_, -2.0f, 2.0f);
        const float y = soft ? (u - u * u * u * 0.083333336f) * 0.1875f : u * 0.125f;
        lowpass(c.added, y - x, lowCut_);
        lowpass(c.high, y - c.added, highCut_);
        return x + (c.high - x) * mix_;
    }

    template <bool soft, bool stereo>
    void run(std::span<StereoFrame> io, double perFrame) {
        double drive = drive_;
        Channel left = left_, right = right_;
        for (StereoFrame& f : io) {
            const auto gain = static_cast<float>(drive);
            f.left = shape<soft>(f.left, gain, left);
            f.right = stereo ? shape<soft>(f.right, gain, right) : f.left;
            drive += perFrame;
        }
        drive_ = drive;
        left_ = left;
        right_ = right;
    }

    void render(std::span<StereoFrame> io, double) override {
        // Longer blocks would overshoot.
        constexpr std::size_t longest = 1250;
        constexpr double pace = 0.0008;
        const double part = io.size() <= longest ? pace : 1.0 / static_cast<double>(io.size());
        const double perFrame = (target_ - drive_) * part;
        if (stereo_)
            soft_ ? run<true, true>(io, perFrame) : run<false, true>(io, perFrame);
        else
            soft_ ? run<true, false>(io, perFrame) : run<false, false>(io, perFrame);
        if (std::fabs(target_ - drive_) <= 1e-5) drive_ = target_;
        constexpr float nothing = 1e-8f;
        if (std::fabs(left_.added) < nothing) left_.added = 0;
        if (std::fabs(left_.high) < nothing) left_.high = 0;
    }
};

}  // namespace

constinit const EffectType effect::tubeDrive{
    .number = 104,
    .name = "Tube Drive",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<TubeDrive>,
    .rows = {{
        {"Mix", 1},
        {},
        {"Drive", 0},
        {"Clip", 0,
         [](TextOut& out, float v, const EffectView&) { out.text(isOn(v) ? "Soft" : "Hard"); }},
        {"Bias", 0.5f},
        {"Hi Cut", 0.5f},
        {"Lo Cut", 0.5f},
        {"Mode", 0, dynamics::showChannels},
    }},
};

}  // namespace stratovane
