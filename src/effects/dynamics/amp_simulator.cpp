// Amp Simulator: drive into a cabinet of two taps and filters, and a string that feeds back.
//
//   in ---> + ---> clip ---> highpass ---> taps ---> lowpasses ---+---> out
//           ^                                                     |
//           +-------- resonator line, tuned to the key <----------+
#include <algorithm>
#include <array>
#include <cmath>

#include "base/units.h"
#include "effects/all_types.h"
#include "effects/blocks/line.h"
#include "effects/dynamics/displays.h"
#include "effects/dynamics/state_variable.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mix, Model = 2, Drive, Feedback, Treble, Mode };

struct Cabinet {
    std::string_view name;
    float lowpassHz, lowpassQ;  // q here is a damping
    float second;               // coefficient of the second lowpass
    float highpassHz, highpassQ;
    std::array<float, 2> tapSeconds, tapGains;
};

constexpr std::array<Cabinet, 8> cabinets{{
    {"AC", 22000, 0.8f, 0.5f, 628, 1, {0.00034f, 0.00056f}, {1.41f, 1.03f}},
    {"Vint", 17200, 0.84f, 1, 208, 0.38f, {0.0004f, 0.00036f}, {1.57f, -0.18f}},
    {"2x12", 22000, 0.48f, 0.42f, 424, 0.55f, {0.0004f, 0.00036f}, {0.952f, 0.952f}},
    {"4x12", 22000, 0.5f, 0.5f, 126, 0.28f, {0.00088f, 0.00048f}, {0.76f, 1.41f}},
    {"Axis", 15000, 0.43f, 1, 628, 0.22f, {0.0018f, 0.001f}, {0.8f, 0.4f}},
    {"Dark1", 20200, 0.53f, 0.25f, 1500, 0.83f, {0, 0}, {1.52f, 0}},
    {"Dark2", 22000, 0.73f, 0.33f, 733, 0.44f, {0.0011f, 0.00008f}, {0.8f, 1}},
    {"Radio", 17200, 0.74f, 1, 5600, 0.54f, {0.00072f, 0.00048f}, {0, -1}},
}};

const Cabinet& cabinet(float v) { return cabinets[static_cast<std::size_t>(choice(v, 7.9f))]; }

struct Coefficients {
    float drive = 1;
    float highpass = 0, highpassQ = 1;
    std::array<int, 2> taps{};  // samples
    std::array<float, 2> tapGains{};
    float lowpass = 0, lowpassBand = 0, lowpassQ = 1;
    float second = 0;
    float treble = 0;  // of the unfiltered signal, negative: inverted
};

/// The state of one channel's way, beside its cabinet line.
struct Chain {
    float highBand = 0, highLow = 0;
    float lastTapped = 0;
    float band = 0, low = 0;
    dynamics::StateVariable second;

    float pass(float x, const Coefficients& c, Line& line) {
        const float clipped = std::clamp(x * c.drive, -0.3f, 0.6f);
        const float u = x + clipped - highLow - c.highpassQ * highBand;
        highBand += u * c.highpass;
        highLow += highBand * c.highpass;

        line.write(u);
        const float tapped =
            u + c.tapGains[0] * line.tap(c.taps[0]) + c.tapGains[1] * line.tap(c.taps[1]);
        line.step();

        const float z = c.lowpassQ * band + lastTapped + low + tapped;
        lastTapped = tapped;
        band -= z * c.lowpassBand;
        low += band * c.lowpass;
        second.feed(low, c.second, 1.0f);
        return 0.05f * second.low - c.treble * z;
    }
};

class AmpSimulator final : public EffectUnit {
  public:
    AmpSimulator() : EffectUnit{effect::ampSimulator} {}

  private:
    float mix_ = 0;
    float feedback_ = 0;  // into the resonator while a key is held
    float smoothing_ = 0;
    bool stereo_ = false;
    Coefficients coefficients_;

    float pitch_ = -10;        // of the key last seen, relative to note 0
    float recirculation_ = 0;  // 0: no key
    int period_ = 0;           // of the resonator: whole samples
    float fraction_ = 0;       // and the rest
    float smoothed_ = 0;
    std::array<Chain, 2> chains_;

    std::array<Line, 2> cabinetLines_;
    Line resonator_;

    bool prepare() override {
        const int samples = static_cast<int>(rate() * 0.005f);
        return cabinetLines_[0].resize(samples) && cabinetLines_[1].resize(samples) &&
               resonator_.resize(static_cast<int>(rate() * 0.05f));
    }

    void reset() override {
        smoothing_ = 2000.0f / rate();
        pitch_ = -10;
        recirculation_ = fraction_ = smoothed_ = 0;
        period_ = 0;
        chains_ = {};
    }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Drive:
                coefficients_.drive = std::exp(6.0f * v);
                break;
            case Feedback:
                feedback_ = 0.06f * v * v;
                break;
            case Treble:
                coefficients_.treble = std::fabs(v - 0.5f) * (v - 0.5f) * 0.1f;
                break;
            case Model:
            case Mode:
                build();
                break;
        }
    }

    /// Just inside the stability bound of a state-variable filter with damping q.
    float filterCoefficient(float hz, float q) const {
        return std::min(hz / rate(), 0.98f * (std::sqrt(q * q + 4.0f) - q));
    }

    void build() {
        const Cabinet& from = cabinet(parameter(Model));
        Coefficients& c = coefficients_;
        stereo_ = isOn(parameter(Mode));
        c.highpassQ = from.highpassQ;
        c.highpass = filterCoefficient(from.highpassHz, from.highpassQ);
        c.lowpassQ = from.lowpassQ;
        c.lowpass = filterCoefficient(from.lowpassHz, from.lowpassQ);
        // Stereo leaves the factor out at the band state, which makes this mode brighter.
        c.lowpassBand = stereo_ ? 1.0f : c.lowpass;
        c.second = from.second;
        c.tapGains = from.tapGains;
        for (std::size_t t = 0; t < c.taps.size(); ++t)
            c.taps[t] = static_cast<int>(rate() * from.tapSeconds[t]);
    }

    /// Takes up the key; a new one starts the resonator, in silence as well.
    bool begin(bool& silent) override {
        if (mix_ == 0) return false;
        const float pitch = keys() == nullptr ? -10.0f : keys()->pitch;
        if (pitch == pitch_) return true;
        pitch_ = pitch;
        if (!(pitch > KeySource::noKey)) {
            recirculation_ = 0;
            return true;
        }
        constexpr double note0Hz = 16.351599;
        const double period = double(rate()) / (std::exp(double(pitch)) * note0Hz);
        const double whole = std::trunc(period);
        fraction_ = static_cast<float>(period - whole);
        period_ = static_cast<int>(std::min(whole, double(resonator_.size())));
        recirculation_ = 0.99f;
        silent = false;
        return true;
    }

    void render(std::span<StereoFrame> io, double) override {
        stereo_ ? run<true>(io) : run<false>(io);
    }

    template <bool stereo>
    void run(std::span<StereoFrame> io) {
        const Coefficients c = coefficients_;
        const float mix = mix_, smoothing = smoothing_, fraction = fraction_;
        const float recirculation = recirculation_,
                    feedback = pitch_ > KeySource::noKey ? feedback_ : 0;
        // Read before it is written, the place at the write index is a whole line old.
        const int near = period_ == resonator_.size() ? 0 : period_;
        float smoothed = smoothed_;
        Chain left = chains_[0], right = chains_[1];
        for (StereoFrame& f : io) {
            const float here = resonator_.tap(near);
            const float string = here + (resonator_.tap(near + 1) - here) * fraction;
            float heard = 0;
            if constexpr (stereo) {
                const float l = left.pass(2.0f * f.left + string, c, cabinetLines_[0]);
                const float r = right.pass(2.0f * f.right + string, c, cabinetLines_[1]);
                heard = 0.5f * (l + r);
                f = {f.left + (l - f.left) * mix, f.right + (r - f.right) * mix};
            } else {
                heard = left.pass(f.left + f.right + string, c, cabinetLines_[0]);
                f = {f.left + (heard - f.left) * mix, f.right + (heard - f.right) * mix};
            }
            smoothed += (heard - smoothed) * smoothing;
            constexpr float most = 4.0f;
            resonator_.write(std::clamp(smoothed * feedback - string * recirculation, -most, most));
            resonator_.step();
        }
        smoothed_ = smoothed;
        chains_ = {left, right};
    }
};

}  // namespace

constinit const EffectType effect::ampSimulator{
    .number = 103,
    .name = "Amp Simulator",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<AmpSimulator>,
    .rows = {{
        {"Mix", 0.5f},
        {},
        {"Model", 0.5f,
         [](TextOut& out, float v, const EffectView&) { out.text(cabinet(v).name); }},
        {"Drive", 0.5f},
        {"Feedback", 0},
        {"Treble", 0,
         [](TextOut& out, float v, const EffectView&) {
             if (v > 0.5f) return out.print("%.0f %%", v * 200.0f - 100.0f);
             out.print("Inv %.0f %%", 100.0f - v * 200.0f);
         }},
        {"Mode", 0, dynamics::showChannels},
    }},
};

}  // namespace stratovane
