// Parametric EQ: two peaking bands, each a state-variable filter whose band-pass is added to the
// signal.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/units.h"
#include "effects/all_types.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

/// Hertz of a "Freq" value: nine octaves from 31.25 Hz.
float bandHz(float v) { return std::exp(6.2383f * v + 3.442f); }

/// Frequency coefficients that put the peak where it belongs, fitted for columns of 20 F / sr and
/// rows of width and sign: rows 0..3 serve boosts, 3..6 cuts, each from narrow to wide.
constexpr std::array<std::array<float, 9>, 7> tunings{{
    {0, 0.312f, 0.609f, 0.892f, 1.151f, 1.388f, 1.583f, 1.73f, 1.849f},
    {0, 0.31f, 0.603f, 0.885f, 1.132f, 1.355f, 1.545f, 1.686f, 1.795f},
    {0, 0.308f, 0.591f, 0.86f, 1.092f, 1.301f, 1.472f, 1.597f, 1.691f},
    {0, 0.3f, 0.568f, 0.817f, 1.016f, 1.192f, 1.327f, 1.426f, 1.508f},
    {0, 0.292f, 0.527f, 0.727f, 0.878f, 1.003f, 1.095f, 1.158f, 1.201f},
    {0, 0.269f, 0.455f, 0.587f, 0.672f, 0.734f, 0.772f, 0.8f, 0.81f},
    {0, 0.23f, 0.343f, 0.402f, 0.433f, 0.45f, 0.459f, 0.465f, 0.46f},
}};

/// `width` 0..1, `column` 0..8.
float tuning(bool cuts, float width, float column) {
    const float row = 3 * width;
    const int r = static_cast<int>(row), c = static_cast<int>(column);
    const auto upper = static_cast<std::size_t>(r + (cuts ? 3 : 0));
    const auto lower = std::min(upper + 1, tunings.size() - 1);
    const auto left = static_cast<std::size_t>(c), right = std::min(left + 1, std::size_t{8});
    const float x = column - static_cast<float>(c), y = row - static_cast<float>(r);
    const float above = tunings[upper][left] + (tunings[upper][right] - tunings[upper][left]) * x;
    const float below = tunings[lower][left] + (tunings[lower][right] - tunings[lower][left]) * x;
    return above + (below - above) * y;
}

class Band {
  public:
    /// Gain, frequency and width as their parameters tell them.
    void tune(float gain, float frequency, float width, float rate) {
        target_ = -0.5f * (std::exp(4.6052f * gain - 2.3026f) - 1);
        const bool cuts = target_ >= 0;
        damping_ = std::exp(2.07944f * width - (cuts ? 0.69315f : 2.7726f));
        frequency_ = tuning(cuts, width, std::min(bandHz(frequency) * 20 / rate, 8.0f));
    }
    void reset() {
        amount_ = 0;
        running_ = false;
        left_ = right_ = {};
    }
    /// Once a block: the amount glides, so that a turned gain does not crackle. A band turned to
    /// nothing runs until it has arrived; one at next to nothing does not start.
    void glide() {
        amount_ += (target_ - amount_) * 0.1f;
        if (std::fabs(target_ - amount_) < 0.001f) amount_ = target_;
        running_ = std::fabs(target_) > 0.01f || (running_ && amount_ != target_);
        if (!running_) left_ = right_ = {};
    }
    void render(std::span<StereoFrame> io) {
        if (!running_) return;
        const float q = damping_, f = frequency_, amount = amount_;
        State left = left_, right = right_;
        const auto peak = [=](float x, State& s) {
            s.band -= ((s.band + s.input + x) * q + s.low) * f;
            s.low += s.band * f;
            s.input = x;
            return x + amount * s.band;
        };
        for (StereoFrame& frame : io) frame = {peak(frame.left, left), peak(frame.right, right)};
        left_ = left;
        right_ = right;
    }

  private:
    struct State {
        float low = 0, band = 0;
        float input = 0;  // the previous one
    };
    // Coefficients.
    float target_ = 0;  // of the band-pass, -4.5 (+20 dB) .. 0.45 (-20 dB)
    float damping_ = 1, frequency_ = 0;
    // State.
    float amount_ = 0;
    bool running_ = false;
    State left_, right_;
};

class ParametricEq final : public EffectUnit {
  public:
    ParametricEq() : EffectUnit{effect::parametricEq} {}

  private:
    enum { Output, Gain1 = 2, Frequency1, Width1, Gain2, Frequency2, Width2 };

    // Coefficients.
    float output_ = 1;
    bool stale_ = true;  // bands are tuned at the start of the next block
    // State.
    std::array<Band, 2> bands_;

    void reset() override {
        for (Band& band : bands_) band.reset();
    }
    void update(int changed) override {
        if (changed == Output) output_ = std::pow(10.0f, (40 * parameter(Output) - 20) / 20);
        stale_ = true;
    }
    void render(std::span<StereoFrame> io, double) override {
        if (stale_) {
            bands_[0].tune(parameter(Gain1), parameter(Frequency1), parameter(Width1), rate());
            bands_[1].tune(parameter(Gain2), parameter(Frequency2), parameter(Width2), rate());
            stale_ = false;
        }
        for (Band& band : bands_) {
            band.glide();
            band.render(io);
        }
        const float output = output_;
        for (StereoFrame& f : io) f = {f.left * output, f.right * output};
    }
};

void showFrequency(TextOut& out, float v, const EffectView&) {
    const float hz = bandHz(v);
    if (hz <= 1000) return out.print("%.0f Hz", hz);
    out.print("%.2f kHz", hz / 1000);
}

void showWidth(TextOut& out, float v, const EffectView&) {
    out.print("%.2f oct", std::exp(2.0794f * v - 1.3863f));
}

}  // namespace

constinit const EffectType effect::parametricEq{.number = 81,
                                                .name = "Parametric EQ",
                                                .tail = {.seconds = 0.5f},
                                                .make = makeEffect<ParametricEq>,
                                                .rows = {{{"Output", 0.5f, showDecibels40},
                                                          {},
                                                          {"Gain 1", 0.5f, showDecibels40},
                                                          {"Freq 1", 0.5f, showFrequency},
                                                          {"Width 1", 0, showWidth},
                                                          {"Gain 2", 0, showDecibels40},
                                                          {"Freq 2", 0, showFrequency},
                                                          {"Width 2", 0, showWidth}}}};

}  // namespace stratovane
