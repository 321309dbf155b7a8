// TalkBox: two formants that wander through the vowels with an LFO and the input's level.
#include <array>
#include <cmath>
#include <numbers>

#include "base/displays.h"
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

/// First and second formant in hertz.
struct Vowel {
    float f1, f2;
};
constexpr int positions = 18;
/// A closed walk around the vowels; the last entry is the first one again.
constexpr std::array<Vowel, positions + 1> vowels{{
    {300, 900},  {350, 800},  {410, 800},  {540, 850},  {700, 940},  {780, 1090}, {880, 1400},
    {650, 1700}, {550, 1750}, {410, 2020}, {300, 2450}, {300, 2020}, {360, 1760}, {440, 1350},
    {520, 1030}, {550, 880},  {450, 680},  {300, 770},  {300, 900},
}};

/// -12.5..12.5, fine around the middle.
float depth(float v) { return 100 * ((v - 0.5f) * (v - 0.5f) * (v - 0.5f)); }

class TalkBox final : public EffectUnit {
  public:
    TalkBox() : EffectUnit{effect::talkBox} {}

  private:
    enum { Mix, Sync, Rate, Depth, Vowels, EnvelopeDepth, Attack, Release };
    /// A state-variable filter that hardly damps.
    struct Formant {
        float low = 0, band = 0;
        /// Returns the highpass.
        float step(float x, float f) {
            constexpr float damping = 0.07f;
            low += f * band;
            const float high = x - low - damping * band;
            band += f * high;
            return high;
        }
    };
    struct Mouth {
        Formant first, second;
    };

    // Coefficients.
    float phasePerTick_ = 0;  // 2 are a cycle
    float depth_ = 0, vowel_ = 0, envelopeDepth_ = 0;
    float attack_ = 0, release_ = 0;  // per tick
    // State.
    ControlTick tick_;
    float level_ = 0;  // of the input since the last tick
    float envelope_ = 0;
    float phase_ = 0;        // -1..1
    float f1_ = 0, f2_ = 0;  // of the formants' filters
    Mouth left_, right_;

    void reset() override {
        tick_.reset();
        level_ = envelope_ = phase_ = f1_ = f2_ = 0;
        left_ = right_ = {};
    }
    bool isSongLfo() const { return isOn(parameter(Sync)); }
    /// Of the song's LFO; a cycle is 2.
    float phasePerBeat() const { return 2 * tempoDivision(parameter(Rate)).perBeat; }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Sync:
            case Rate:
                phasePerTick_ = isSongLfo() ? phasePerBeat() *
                                                  static_cast<float>(beatsPerSample() * tickSamples)
                                            : rateHz(parameter(Rate)) * 10 / rate();
                break;
            case Depth:
                depth_ = depth(v);
                break;
            case Vowels:
                vowel_ = 16 * v;
                break;
            case EnvelopeDepth:
                envelopeDepth_ = depth(v);
                break;
            case Attack:
                attack_ = envelopeCoefficient(v);
                break;
            case Release:
                release_ = envelopeCoefficient(v);
                break;
            default:
                break;
        }
    }
    float envelopeCoefficient(float v) const {
        return onePoleCoefficient(static_cast<double>((1 - v) * (1 - v) * 125 + 1), rate());
    }

    void tick() {
        envelope_ += (level_ - envelope_) * (level_ > envelope_ ? attack_ : release_);
        level_ = 0;
        phase_ += phasePerTick_;
        if (phase_ > 1) phase_ -= 2;
        const float swept = std::fabs(phase_) * depth_ +
                            (std::log(envelope_ + 0.1f) + 2.3f) * envelopeDepth_ + vowel_;
        float place = std::fmod(swept, static_cast<float>(positions));
        if (place < 0) place += positions;
        const int whole = static_cast<int>(place);
        const float part = place - static_cast<float>(whole);
        const auto at = static_cast<std::size_t>(whole % positions);
        const Vowel here = vowels[at], next = vowels[at + 1];
        const float turn = 2 * std::numbers::pi_v<float> / rate();
        f1_ = (here.f1 + (next.f1 - here.f1) * part) * turn;
        f2_ = (here.f2 + (next.f2 - here.f2) * part) * turn;
    }

    void render(std::span<StereoFrame> io, double beat) override {
        if (isSongLfo()) {
            phase_ = songPhase(beat, static_cast<double>(phasePerBeat()), 2) - 0.5f;
            if (phase_ < -1) phase_ += 2;  // before the song's start
        }
        const float mix = parameter(Mix), dry = dryGain(mix), wet = mix * 0.5f;
        float f1 = f1_, f2 = f2_, level = level_;
        ControlTick due = tick_;
        Mouth left = left_, right = right_;
        const auto talk = [=](float x, Mouth& mouth, float first, float second) {
            mouth.first.step(x, first);
            const float high = mouth.second.step(x, second);
            return x * dry + (mouth.first.low - high) * wet;
        };
        for (StereoFrame& f : io) {
            if (due.due(tickSamples)) {
                level_ = level;
                tick();
                level = level_;
                f1 = f1_;
                f2 = f2_;
            }
            level += std::fabs(f.left + f.right);
            f = {talk(f.left, left, f1, f2), talk(f.right, right, f1, f2)};
        }
        level_ = level;
        tick_ = due;
        left_ = left;
        right_ = right;
    }
    void idle(int) override { level_ = 0; }
};

void showSigned(TextOut& out, float v, const EffectView&) { showSignedPercent(out, v); }

void showVowel(TextOut& out, float v, const EffectView&) {
    constexpr std::array<const char*, 9> names{"OO", "OU", "AH", "AA", "EH",
                                               "EE", "ER", "UH", "OH"};
    out.text(names[static_cast<std::size_t>(choice(v, 8.9f))]);
}

}  // namespace

constinit const EffectType effect::talkBox{.number = 72,
                                           .name = "TalkBox",
                                           .make = makeEffect<TalkBox>,
                                           .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                     {"Sync", 0, showEffectSwitch},
                                                     {"Rate", 0.5f, showSongLfoRate},
                                                     {"Depth", 0.5f, showSigned},
                                                     {"Vowel", 0, showVowel},
                                                     {"Env Mod", 0, showSigned},
                                                     {"Env Att", 0, showEffectPercent},
                                                     {"Env Rel", 0, showEffectPercent}}}};

}  // namespace stratovane
