// Tuned Resonators: up to seven combs on the notes of a chord, spread over the stereo field.
#include <algorithm>
#include <cmath>

#include "base/displays.h"
#include "effects/all_types.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/mix.h"

namespace stratovane {

namespace {

enum {
    Mix = 0,
    Bands = 2,
    Root = 3,
    Detune = 4,
    Spacing = 5,
    Decay = 6,
    LowEq = 7,
    HfDamp = 8,
    Width = 9,
    KeyRelease = 10
};

constexpr std::size_t mostBands = 7;

constexpr float widestSpacing = 0.9f;  // 200 cents; above it the steps make a scale
constexpr float highestMinor = 0.95f;

// Steps of a scale that are a semitone instead of a tone, from the lowest bit upwards.
unsigned semitoneSteps(float spacing) {
    return spacing <= widestSpacing ? 0u : spacing <= highestMinor ? 0b010010u : 0b000100u;
}
int rootStep(float v) { return choice(v, 72.9f); }
std::size_t bandCount(float v) { return static_cast<std::size_t>(1 + choice(v, 6.9f)); }
float decayDbPerSecond(float v) { return std::exp(6.9f - 9.2f * v); }
bool tracksKey(float v) { return v > 0.505f; }

class TunedResonators final : public EffectUnit {
  public:
    TunedResonators() : EffectUnit{effect::tunedResonators} {}

  private:
    float mix_ = 0, gain_ = 0, damp_ = 1, lowCut_ = 0;  // coefficients
    std::size_t bands_ = 1;
    std::array<float, mostBands> periods_{};  // samples, before the key scales them
    float decay_ = 0;                         // ln of the gain per sample
    float release_ = 0;                       // what decay_ is lowered by while no key is held
    std::array<float, mostBands> pan_{};      // 1 is left
    float keyScale_ = 1;                      // state: of the periods
    float belowHighpass_ = 0;
    std::array<float, mostBands> damped_{};
    CircularLine<std::array<float, mostBands>> lines_;  // lines

    int lineSamples() const { return static_cast<int>(rate() * 0.032f); }

    /// One entry more than the longest delay.
    bool prepare() override { return lines_.resize(lineSamples() + 1); }

    void reset() override {
        keyScale_ = 1;
        belowHighpass_ = 0;
        damped_ = {};
        lines_.clear();
    }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Bands:
                bands_ = bandCount(v);
                spread();
                break;
            case Root:
            case Detune:
            case Spacing:
                tune();
                break;
            case Decay:
                decay_ = -0.05f * 2.3025851f * decayDbPerSecond(v) / rate();
                gain_ = std::exp(-1.693f - 2.2f * v);
                break;
            case LowEq:
                lowCut_ = atMostOne(v * v * 12000.0f / rate());
                break;
            case HfDamp:
                damp_ = onePoleCoefficient(10000.0f + 300000.0f * v * v * v, rate());
                break;
            case Width:
                spread();
                break;
            case KeyRelease: {
                const float way = (v - 0.5f) * (v - 0.5f);
                release_ = 0.04f * way * way * (44100.0f / rate());
                break;
            }
        }
    }

    void spread() {
        const float width = parameter(Width);
        const bool single = bands_ == 1;
        const float step = single ? 0.0f : width / static_cast<float>(bands_ - 1);
        for (std::size_t i = 0; i < mostBands; ++i)
            pan_[i] = single ? 0.5f : 0.5f - 0.5f * width + step * static_cast<float>(i);
    }

    void tune() {
        const float semitones =
            static_cast<float>(rootStep(parameter(Root))) + parameter(Detune) - 45.5f;
        const float spacing = parameter(Spacing);
        const float interval = std::exp(-0.12836047f * std::min(spacing, widestSpacing));
        unsigned semitone = semitoneSteps(spacing);
        float period = rate() / (440.0f * std::exp2(semitones / 12.0f));
        periods_[0] = period;
        for (std::size_t i = 1; i < mostBands; ++i, semitone >>= 1) {
            period *= interval;
            if ((semitone & 1u) != 0) period *= 1.059463f;
            periods_[i] = period;
        }
    }

    /// Octaves are added or taken until all bands fit their lines.
    void followKey(bool keyHeld) {
        if (!tracksKey(parameter(KeyRelease))) {
            keyScale_ = 1;
            return;
        }
        if (keyHeld) keyScale_ = 32.0f * std::exp(-keys()->pitch);
        constexpr int mostOctaves = 40;
        const float longest = static_cast<float>(lineSamples());
        for (int i = 0; i < mostOctaves && keyScale_ * periods_.back() < 2.0f; ++i) keyScale_ *= 2;
        for (int i = 0; i < mostOctaves && keyScale_ * periods_[0] > longest; ++i)
            keyScale_ *= 0.5f;
    }

    void render(std::span<StereoFrame> io, double) override {
        const bool keyHeld = keys() != nullptr && keys()->pitch > KeySource::noKey;
        followKey(keyHeld);
        const float decay = keys() != nullptr && !keyHeld ? decay_ - release_ : decay_;
        const std::size_t bands = bands_;
        std::array<int, mostBands> delays{};
        std::array<float, mostBands> loss{};  // 1 - feedback: a float near 1 would bend long decays
        for (std::size_t i = 0; i < bands; ++i) {
            const float period = periods_[i] * keyScale_;
            delays[i] = std::clamp(static_cast<int>(0.5f + period), 0, lineSamples());
            loss[i] = oneMinusExp(-static_cast<double>(period * decay));
        }
        const float mix = mix_, gain = gain_, damp = damp_, lowCut = lowCut_;
        const auto pan = pan_;
        float belowHighpass = belowHighpass_;
        auto y = damped_;
        for (StereoFrame& f : io) {
            float x = highpass(belowHighpass, (f.left + f.right) * gain, lowCut) + 1e-8f;
            StereoFrame wet;
            std::array<float, mostBands> in{};  // bands that rest are written with silence
            for (std::size_t i = 0; i < bands; ++i, x = -x) {
                lowpass(y[i], lines_.tap(delays[i])[i], damp);
                in[i] = y[i] - y[i] * loss[i] + x;
                wet.left += y[i] * pan[i];
                wet.right += y[i] * (1.0f - pan[i]);
            }
            lines_.write(in);
            lines_.step();
            f = crossfade(f, wet, mix);
        }
        belowHighpass_ = belowHighpass;
        damped_ = y;
    }
};

void showBands(TextOut& out, float v, const EffectView&) {
    out.print("%ld", static_cast<int>(bandCount(v)));
}
void showRoot(TextOut& out, float v, const EffectView&) { showNote(out, 24 + rootStep(v)); }
void showDetune(TextOut& out, float v, const EffectView&) {
    out.print("%+.0f cent", v * 100.0f - 50.0f);
}
void showSpacing(TextOut& out, float v, const EffectView&) {
    if (v <= widestSpacing) return out.print("%.0f cent", v * 222.22f);
    out.text(v <= highestMinor ? "Minor" : "Major");
}
void showDbPerSecond(TextOut& out, float v, const EffectView&) {
    out.print("%.1f dB/s", decayDbPerSecond(v));
}
void showKeyRelease(TextOut& out, float v, const EffectView&) {
    out.print("%.0f %s", std::fabs(v - 0.5f) * 199.8f, tracksKey(v) ? "Trk" : "Fix");
}

}  // namespace

constinit const EffectType effect::tunedResonators{.number = 7,
                                                   .name = "Tuned Resonators",
                                                   .wakes = Waking::audible,
                                                   .make = makeEffect<TunedResonators>,
                                                   .rows = {{{"Mix", 0.5f},
                                                             {},
                                                             {"Bands", 0.5f, showBands},
                                                             {"Root", 0.5f, showRoot},
                                                             {"Detune", 0.0f, showDetune},
                                                             {"Spacing", 0.0f, showSpacing},
                                                             {"Decay", 0.0f, showDbPerSecond},
                                                             {"Low EQ", 0.0f},
                                                             {"HF Damp", 0.0f, showInvertedPercent},
                                                             {"Width", 0.0f},
                                                             {"Key/Rel", 0.0f, showKeyRelease}}}};

}  // namespace stratovane
