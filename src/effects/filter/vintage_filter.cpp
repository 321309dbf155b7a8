// Vintage Filter: a resonant transistor ladder, swept by an LFO and by the input or the keys.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "base/units.h"
#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

constexpr int tickSamples = 16;
constexpr float twoPi = 2 * std::numbers::pi_v<float>;
constexpr float radiansPerTick = 100.53097f;  // of one cycle per sample: 2 pi 16

/// Natural logarithm of the cutoff in hertz.
float logCutoff(float v) { return 6.9f * v + 4; }

float lfoHz(float v) { return std::exp(8.29832f * v - 3); }

/// -4..4, fine around the middle.
float depth(float v) { return 32 * ((v - 0.5f) * (v - 0.5f) * (v - 0.5f)); }

enum class EnvelopeMode { follow, attackRelease, attackSustainRelease, lfoRate, lfoAndEnvelope };

EnvelopeMode envelopeMode(float v) { return static_cast<EnvelopeMode>(choice(v, 4.9f)); }

/// What of the input u and the stages s1..s4 a mode sends out.
struct Taps {
    const char* name;
    float u, s1, s2, s3, s4;
};
constexpr std::array<Taps, 6> modes{{
    {"LP24", 0, 0, 0, 0, 1},
    {"LP18", 0, 0, 0, 1, 0},
    {"LP12", 0, 0, 1, 0, 0},
    {"LP6 ", 0, 1, 0, 0, 0},
    {"BP12", 0, 0, -1, 0, 1},
    {"HP12", -1, 1, 0, 0, 0},
}};

const Taps& mode(float v) { return modes[static_cast<std::size_t>(choice(v, 5.9f))]; }

/// Four one-poles, each with a zero at half the rate, in a loop that saturates like a cubic.
struct Ladder {
    float s1 = 0, s2 = 0, s3 = 0, s4 = 0;
    float input = 0;  // the previous one

    void step(float x, float g, float resonance) {
        const float y = std::min(std::max(s4 + 1e-8f, -2.0f), 2.0f);
        // s += ((new + old input) - 2 s) g for each stage; the old states' share does not wait for
        // the stage before.
        const float rest1 = s1 + (input - 2 * s1) * g, rest2 = s2 + (s1 - 2 * s2) * g;
        const float rest3 = s3 + (s2 - 2 * s3) * g, rest4 = s4 + (s3 - 2 * s4) * g;
        const float u = x - (y - 0.083333f * (y * y * y)) * resonance;
        s1 = rest1 + u * g;
        s2 = rest2 + s1 * g;
        s3 = rest3 + s2 * g;
        s4 = rest4 + s3 * g;
        input = u;
    }
    float out(const Taps& taps) const {
        return taps.u * input + taps.s1 * s1 + taps.s2 * s2 + taps.s3 * s3 + taps.s4 * s4;
    }
};

class VintageFilter final : public EffectUnit {
  public:
    VintageFilter() : EffectUnit{effect::vintageFilter} {}

  private:
    enum {
        Mix,
        Cutoff = 2,
        Resonance,
        Mode,
        LfoRate,
        LfoDepth,
        EnvelopeDepth,
        EnvelopeModes,
        Attack,
        Release,
        Channels
    };
    enum class Phase { attack, decay, release };

    // Coefficients.
    float targetCutoff_ = 0;  // natural logarithm of hertz per rate (twice that in stereo)
    float resonance_ = 0;
    float lfoPerTick_ = 0;  // radians
    float lfoDepth_ = 0, envelopeDepth_ = 0;
    float attack_ = 0, release_ = 0;  // per tick
    // State.
    ControlTick tick_;
    float cutoff_ = 0;  // glides to its target, where it begins
    bool begins_ = true;
    float g_ = 0;       // of the ladder's one-poles
    float loop_ = 0;    // gain of its loop
    float energy_ = 0;  // of the input since the last tick
    float envelope_ = 0;
    Phase phase_ = Phase::decay;
    float lfo_ = 0;   // radians
    float held_ = 0;  // sample and hold
    Ladder left_, right_;

    bool isStereo() const { return isOn(parameter(Channels)); }
    float cutoffTarget() const {
        return logCutoff(parameter(Cutoff)) - std::log(rate()) + (isStereo() ? octavePitch : 0.0f);
    }
    void reset() override {
        tick_.reset();
        begins_ = true;
        cutoff_ = g_ = loop_ = energy_ = envelope_ = lfo_ = held_ = 0;
        phase_ = Phase::decay;
        left_ = right_ = {};
    }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Cutoff:
            case Channels:
                targetCutoff_ = cutoffTarget();
                break;
            case Resonance:
                resonance_ = 0.988f * v;
                break;
            case LfoRate:
                lfoPerTick_ = lfoHz(v) * radiansPerTick / rate();
                break;
            case LfoDepth:
                lfoDepth_ = depth(v);
                break;
            case EnvelopeDepth:
                envelopeDepth_ = depth(v);
                break;
            case Attack:
                attack_ = envelopeCoefficient(7.5f - 6 * v);
                break;
            case Release:
                release_ = envelopeCoefficient(7 - 6 * v);
                break;
            default:
                break;
        }
    }
    float envelopeCoefficient(float logPerSecond) const {
        return onePoleCoefficient(static_cast<double>(std::exp(logPerSecond)), rate());
    }

    void followKeys() {
        if (keys() == nullptr) return;
        if (keys()->pitch <= KeySource::noKey)
            phase_ = Phase::release;
        else if (phase_ == Phase::release)
            phase_ = Phase::attack;
    }
    void advanceEnvelope(EnvelopeMode how) {
        constexpr float largestEnergy = 1e30f;  // keeps the logarithm finite
        const float level = std::log(std::min(energy_, largestEnergy) + 1);
        energy_ = 0;
        const bool attacks = phase_ == Phase::attack;
        switch (how) {
            case EnvelopeMode::attackRelease:
                envelope_ += attacks ? (2 - envelope_) * attack_ : -release_ * envelope_;
                if (attacks && envelope_ > 1.5f) phase_ = Phase::decay;
                break;
            case EnvelopeMode::attackSustainRelease:
                envelope_ += attacks ? (2 - envelope_) * attack_ : (1e-8f - envelope_) * release_;
                break;
            default:
                envelope_ += (level - envelope_) * (level > envelope_ ? attack_ : release_);
        }
    }
    void advanceLfo(EnvelopeMode how) {
        float step = lfoPerTick_;
        if (how == EnvelopeMode::lfoRate || how == EnvelopeMode::lfoAndEnvelope) {
            constexpr float largest = 80;  // keeps the phase finite whatever comes in
            step *= std::exp(std::min((envelope_ - 1) * std::fabs(envelopeDepth_), largest));
        }
        lfo_ += step;
        if (lfo_ <= twoPi) return;
        lfo_ = std::fmod(lfo_, twoPi);
        const float drawn = random().unipolar();
        held_ = held_ >= 0 ? -drawn : drawn;
    }
    void tick(float resonance) {
        const EnvelopeMode how = envelopeMode(parameter(EnvelopeModes));
        if (begins_) cutoff_ = targetCutoff_;
        begins_ = false;
        cutoff_ += (targetCutoff_ - cutoff_) * 0.01f;
        advanceEnvelope(how);
        const float offset = how == EnvelopeMode::lfoRate ? 0 : envelopeDepth_ * envelope_;
        advanceLfo(how);
        const float lfo = parameter(LfoDepth) >= 0.5f ? std::sin(lfo_) : held_;
        const float k =
            std::min(std::exp(lfo * lfoDepth_ + cutoff_ + offset), isStereo() ? 0.85f : 0.5f);
        g_ = ((1 - k) * 0.8f + 1) * k;
        const float square = (k - 0.366f) * (k - 0.366f);
        loop_ = ((square * 20 + 7) * square + 2.5f) * (1 - k) * resonance * 1.0576f;
    }

    void render(std::span<StereoFrame> io, double) override {
        followKeys();
        if (isStereo())
            run<true>(io);
        else
            run<false>(io);
        if (envelope_ < 1e-8f) envelope_ = 0;
    }
    /// Mono runs the left channel's ladder twice per sample instead of both.
    template <bool stereo>
    void run(std::span<StereoFrame> io) {
        // What is driven may sing on its own; in silence it should die away.
        const float resonance = resonance_ + (inputSilent() ? 0.0f : 0.012f);
        const float mix = parameter(Mix), dry = 1 - mix, wet = mix * 0.25f;
        const Taps& taps = mode(parameter(Mode));
        float g = g_, loop = loop_, energy = energy_;
        ControlTick due = tick_;
        Ladder left = left_, right = stereo ? right_ : Ladder{};
        for (StereoFrame& f : io) {
            if (due.due(tickSamples)) {
                energy_ = energy;
                tick(resonance);
                energy = energy_;
                g = g_;
                loop = loop_;
            }
            const float x = 4 * f.left, y = 4 * f.right;
            energy += x * x + y * y;
            left.step(x, g, loop);
            if constexpr (stereo)
                right.step(y, g, loop);
            else
                left.step(x, g, loop);
            const float tapped = left.out(taps);
            f.left = f.left * dry + wet * tapped;
            f.right = f.right * dry + wet * (stereo ? right.out(taps) : tapped);
        }
        energy_ = energy;
        tick_ = due;
        left_ = left;
        right_ = right;
    }
};

// Displays ----------------------------------------------------------------------------------------

void showCutoff(TextOut& out, float v, const EffectView&) {
    const float hz = std::exp(logCutoff(v));
    if (v < 0.5f) return out.print("%.1f Hz", hz);
    out.print("%.2f kHz", hz / 1000);
}

void showMode(TextOut& out, float v, const EffectView&) { out.text(mode(v).name); }

void showLfoHz(TextOut& out, float v, const EffectView&) { out.print("%.2f Hz", lfoHz(v)); }

void showLfoDepth(TextOut& out, float v, const EffectView&) {
    out.print("%s %.0f%%", v >= 0.5f ? "Sine" : "S&H", std::fabs(v * 200 - 100));
}

void showEnvelopeDepth(TextOut& out, float v, const EffectView&) {
    out.print("%.0f %%", v * 200 - 100);
}

void showEnvelopeMode(TextOut& out, float v, const EffectView&) {
    constexpr std::array<const char*, 5> names{"Follow", "A-R", "A-S-R", "LFO Rate", "LFO+Env"};
    out.text(names[static_cast<std::size_t>(envelopeMode(v))]);
}

void showChannels(TextOut& out, float v, const EffectView&) {
    out.text(isOn(v) ? "Stereo" : "Mono");
}

}  // namespace

constinit const EffectType effect::vintageFilter{.number = 70,
                                                 .name = "Vintage Filter",
                                                 .make = makeEffect<VintageFilter>,
                                                 .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                           {},
                                                           {"Cutoff", 0.5f, showCutoff},
                                                           {"Reso", 0.5f, showEffectPercent},
                                                           {"Mode", 0, showMode},
                                                           {"LFO Rate", 0, showLfoHz},
                                                           {"LFO Depth", 0, showLfoDepth},
                                                           {"Env Depth", 0, showEnvelopeDepth},
                                                           {"Env Mode", 0, showEnvelopeMode},
                                                           {"Attack", 0, showEffectPercent},
                                                           {"Release", 0, showEffectPercent},
                                                           {"Mode", 0, showChannels}}}};

}  // namespace stratovane
