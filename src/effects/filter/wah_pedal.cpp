// Wah Pedal: a resonant lowpass swept by the input's level, a pedal or an LFO.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "base/units.h"
#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/one_pole.h"
#include "effects/blocks/song_lfo.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

constexpr int tickSamples = tickFrames;
constexpr float pi = std::numbers::pi_v<float>;

enum class WahMode { automatic, pedal, modulated };

WahMode wahMode(float v) { return static_cast<WahMode>(choice(v, 2.9f)); }

class WahPedal final : public EffectUnit {
  public:
    WahPedal() : EffectUnit{effect::wahPedal} {}

  private:
    enum { Mix, Sync, Rate, Depth, Pedal, Mode, Resonance, Tracking };
    /// A channel's filter.
    struct State {
        float split = 0;  // one-pole that parts lows from highs
        float low = 0, band = 0;
    };

    // Coefficients.
    float lfoPerTick_ = 0;  // radians
    float depth_ = 0, pedal_ = 0, damping_ = 0.415f;
    float release_ = 0;   // of the envelope, per tick
    float tracking_ = 0;  // of the LFO's speed after the envelope
    float split_ = 0, glide_ = 0;
    // State.
    ControlTick tick_;
    float energy_ = 0;  // of the input since the last tick
    float envelope_ = 0;
    float lfo_ = 0;  // radians
    float frequency_ = 0.1f;
    State left_, right_;

    void reset() override {
        tick_.reset();
        energy_ = envelope_ = lfo_ = 0;
        frequency_ = 0.1f;
        left_ = right_ = {};
        split_ = atMostOne(8000 / rate());
        glide_ = atMostOne(1500 / rate());
    }
    bool isSongLfo() const { return isOn(parameter(Sync)); }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Sync:
            case Rate: {
                const float beatsPerTick = static_cast<float>(beatsPerSample() * tickSamples);
                lfoPerTick_ = isSongLfo()
                                  ? 2 * pi * tempoDivision(parameter(Rate)).perBeat * beatsPerTick
                                  : rateHz(parameter(Rate)) * (64 * pi) / rate();
                break;
            }
            case Depth:
                depth_ = 3 * v - 1.5f;
                break;
            case Pedal:
                pedal_ = v * v;
                break;
            case Resonance:
                damping_ = 0.415f - 0.4f * v;
                break;
            case Mode:
            case Tracking: {
                const float t = parameter(Tracking);
                tracking_ = 3 * t - 1.5f;
                release_ =
                    wahMode(parameter(Mode)) == WahMode::automatic
                        ? onePoleCoefficient(static_cast<double>(4000 * (t * t) + 50), rate())
                        : 150 / rate();
                break;
            }
            default:
                break;
        }
    }

    void tick() {
        constexpr float largestEnergy = 1e30f;  // keeps the logarithm finite
        const float level = std::log(std::min(energy_, largestEnergy) + 0.1f) + 1.3f;
        energy_ = 0;
        envelope_ = level > envelope_ ? level : envelope_ - release_ * envelope_;
        const float speed =
            isSongLfo() ? 1.0f : std::min(std::max(envelope_ * tracking_ + 1, 0.5f), 2.0f);
        lfo_ += lfoPerTick_ * speed;
        if (lfo_ > 64 * pi) lfo_ -= 64 * pi;
        float sweep = pedal_;
        switch (wahMode(parameter(Mode))) {
            case WahMode::automatic:
                sweep += envelope_ * depth_;
                break;
            case WahMode::pedal:
                break;
            case WahMode::modulated:
                sweep += std::min(std::max(-std::cos(lfo_), -0.5f), 0.5f) * depth_;
                break;
        }
        const float target = (1700 + 13200 * std::min(std::max(sweep, 0.0f), 1.0f)) / rate();
        frequency_ = atMostOne(frequency_ + (target - frequency_) * glide_);
    }

    void render(std::span<StereoFrame> io, double beat) override {
        if (isSongLfo()) {
            const double perBeat = static_cast<double>(tempoDivision(parameter(Rate)).perBeat);
            const double turn = 2 * std::numbers::pi;
            lfo_ = songPhase(beat, turn * perBeat, turn) - pi +
                   ((parameter(Tracking) - 0.5f) * (2 * pi) + 4.5f);
        }
        const float mix = parameter(Mix), lows = dryGain(mix);
        const float split = split_, damping = damping_;
        float frequency = frequency_, energy = energy_;
        ControlTick due = tick_;
        State left = left_, right = right_;
        const auto filter = [=](float x, State& s, float f) {
            const float high = x * 0.5f - s.split + 1e-8f;
            s.split += high * split;
            if (s.low > 0) s.low = s.low <= 0.5f ? s.low - s.low * s.low : 0.25f;
            s.low += f * s.band;
            s.band -= (damping * s.band + s.low + high) * f;
            return x + ((4 * s.low + lows * s.split) - x) * mix;
        };
        for (StereoFrame& frame : io) {
            if (due.due(tickSamples)) {
                energy_ = energy;
                tick();
                energy = energy_;
                frequency = frequency_;
            }
            const float sum = frame.left + frame.right;
            energy += sum * sum;
            frame = {filter(frame.left, left, frequency), filter(frame.right, right, frequency)};
        }
        energy_ = energy;
        tick_ = due;
        left_ = left;
        right_ = right;
    }
    void idle(int) override { envelope_ = 0; }
};

void showWide(TextOut& out, float v, const EffectView&) { out.print("%4.0f %%", v * 200 - 100); }

void showMode(TextOut& out, float v, const EffectView&) {
    constexpr std::array<const char*, 3> names{"Auto Wah", "Pedal Wah", "Mod Wah"};
    out.text(names[static_cast<std::size_t>(wahMode(v))]);
}

}  // namespace

constinit const EffectType effect::wahPedal{.number = 71,
                                            .name = "Wah Pedal",
                                            .make = makeEffect<WahPedal>,
                                            .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                      {"Sync", 0, showEffectSwitch},
                                                      {"Rate", 0.5f, showSongLfoRate},
                                                      {"Depth", 0.5f, showWide},
                                                      {"Pedal", 0, showEffectPercent},
                                                      {"Mode", 0, showMode},
                                                      {"Reso", 0, showEffectPercent},
                                                      {"Tracking", 0, showWide}}}};

}  // namespace stratovane
