// Rotary Speaker 2: a driven amplifier, a horn with its loudness around the turn and two Doppler
// voices, and a drum.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/glide_reader.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/blocks/ramp.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/rotary_amplifier.h"
#include "effects/modulation/rotor.h"

namespace stratovane {

namespace {

enum {
    Mix,
    Jump,
    Rate,
    Drive,
    LowHigh,
    Width,
    FreqMod,
    FastSpeed,
    SlowSpeed,
    Crossover,
    Reso,
    Boost
};
constexpr int tickSamples = 16;
constexpr float lineSeconds = 0.05f;
constexpr double centreSeconds = 0.0004, depthSeconds = 0.00136;
constexpr double hornTurn = 16, drumTurn = 1;
constexpr double hornPark = 2.2, drumPark = 0.33;  // angles at rest
constexpr double drumLead = 0.33;                  // turns that the right side is ahead

/// Loudness around the horn, in sixteenths of a turn.
constexpr double directivity[17] = {0.31, 0.28, 0.32, 0.13, 0.05, 0.24, 0.5,  0.77, 0.97,
                                    0.67, 0.33, 0.28, 0.21, 0.28, 0.16, 0.38, 0.31};
double hornLoudness(double angle, int turnedBy) {
    const int whole = static_cast<int>(angle), at = (whole + turnedBy) % 16;
    const double from = directivity[at], to = directivity[at + 1];
    return from + (to - from) * (angle - whole);
}

/// Turns of the drum to a triangle 0..0.5.
double folded(double turns) { return turns > 0.5 ? 1 - turns : turns; }

/// Slow, Slow, Stop, Fast, Fast.
enum class Speed { slow, stop, fast };
Speed selection(float v) {
    const int i = choice(v, 4.9f);
    return i < 2 ? Speed::slow : i == 2 ? Speed::stop : Speed::fast;
}
float crossoverHz(float v) { return std::exp(1.386f * v + 5.992f); }

/// One microphone at the horn.
struct HornSide {
    GlideReader doppler;
    Ramp gain;
};

class RotarySpeaker2 final : public EffectUnit {
  public:
    RotarySpeaker2() : EffectUnit{effect::rotarySpeaker2} {}

  private:
    float dry_ = 1, hornGain_ = 0, drumGain_ = 0;
    float spread_ = 0.5f;
    double dopplerDepth_ = 0, dopplerCentre_ = 1;  // samples
    double hornTarget_ = 0, drumTarget_ = 0;       // speeds per tick
    double hornAcc_ = 0, drumAcc_ = 0;             // per tick and tick

    ControlTick tick_;
    SpeedJump jump_;
    Rotor horn_, drum_;
    RotaryAmplifier amplifier_;  // with its coefficients
    HornSide left_, right_;
    float leftDrum_ = 0, rightDrum_ = 0;  // gains

    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        tick_.reset();
        horn_ = drum_ = {};
        amplifier_.reset();
        amplifier_.voice = atMostOne(20000.0f / rate());
        amplifier_.smoothing = atMostOne(1200.0f / rate());
        for (HornSide* side : {&left_, &right_}) {
            side->doppler.reset(line_.writeIndex());
            side->gain.reset(0);
        }
        leftDrum_ = rightDrum_ = 0;
        dopplerCentre_ = rate() * centreSeconds + 1;
        hornAcc_ = 22000.0 / rate() / rate();
        drumAcc_ = 300.0 / rate() / rate();
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix || changed == LowHigh || changed == Boost) {
            const float mix = parameter(Mix), share = 0.9f * parameter(LowHigh) + 0.05f;
            const float gain = (2.0f - mix) * (2.5f * parameter(Boost) + 1.5f) * mix;
            dry_ = 1.0f - mix;
            hornGain_ = gain * share * 0.333f;
            drumGain_ = gain - gain * share;
            amplifier_.boost = parameter(Boost);
        }
        if (changed == Jump) jump_.arm();
        if (changed == Drive) {
            amplifier_.drive = 8.0f * v;
            amplifier_.driveLowpass = atMostOne((5000.0f * v * v + 3160.0f) / rate());
            amplifier_.blend = (2.0f - v) * v;
        }
        if (changed == Width) spread_ = 0.5f - 0.65f * v;
        if (changed == FreqMod) dopplerDepth_ = depthSeconds * v * rate();
        if (changed == Rate || changed == FastSpeed || changed == SlowSpeed) aimSpeeds();
        if (changed == Crossover) {
            const float c = std::exp(1.386f * v + 8.7f) / rate();
            amplifier_.crossover = atMostOne(0.33f * c);
            amplifier_.horn = atMostOne(c);
        }
        if (changed == Reso) amplifier_.hornDamping = 0.6f - 0.35f * v;
    }
    void aimSpeeds() {
        const double fast = parameter(FastSpeed) + 0.5, slow = parameter(SlowSpeed) + 0.5;
        hornTarget_ = drumTarget_ = 0;
        switch (selection(parameter(Rate))) {
            case Speed::stop:
                break;
            case Speed::slow:
                hornTarget_ = 217.6 * slow / rate();
                drumTarget_ = 22.72 * slow / rate();
                break;
            case Speed::fast:
                hornTarget_ = 1669.12 * fast / rate();
                drumTarget_ = 92.32 * fast / rate();
                break;
        }
    }

    void showAngle() {
        if (KeySource* record = keyRecord())
            record->hornCycles = static_cast<float>(std::fmod(hornTurn - horn_.angle, hornTurn));
    }
    void idle(int frames) override {
        showAngle();
        horn_.turn(hornTarget_, blockShare(frames, rate()),
                   static_cast<double>(frames) / tickSamples);
        horn_.wrapBelow(hornTurn);
    }
    void jumpOrPark(int frames) {
        if (jump_.due()) {
            horn_.speed = hornTarget_;
            drum_.speed = drumTarget_;
            if (hornTarget_ == 0) {
                horn_.angle = hornPark;
                drum_.angle = drumPark;
            }
        }
        if (hornTarget_ != 0) return;
        // The horn comes to rest coasting on: past the park angle it goes once more round.
        const double share = blockShare(frames, rate());
        const double rest = horn_.angle <= hornPark + 0.1 ? hornPark : hornTurn + 0.1;
        horn_.angle += (rest - horn_.angle) * share;
        horn_.wrapBelow(hornTurn);
        drum_.angle += (drumPark - drum_.angle) * share;
    }
    /// Control tick.
    void turn(HornSide& leftSide, HornSide& rightSide) {
        horn_.turn(hornTarget_, hornAcc_);
        horn_.wrapBelow(hornTurn);
        const double left = hornLoudness(horn_.angle, 0), right = hornLoudness(horn_.angle, 8);
        leftSide.gain.aim((1.5 * left + 0.2) * hornGain_, tickSamples);
        rightSide.gain.aim((1.5 * right + 0.2) * hornGain_, tickSamples);
        const int write = line_.writeIndex(), size = line_.size();
        leftSide.doppler.aim(left * dopplerDepth_ + dopplerCentre_, tickSamples, write, size);
        rightSide.doppler.aim(1.25 * dopplerCentre_ + right * dopplerDepth_, tickSamples, write,
                              size);

        drum_.turn(drumTarget_, drumAcc_);
        drum_.wrapAbove(0, drumTurn);
        const double ahead = drum_.angle + drumLead - (drum_.angle > 0.67 ? drumTurn : 0);
        leftDrum_ = static_cast<float>(0.7 * folded(ahead) * drumGain_ + 0.05);
        rightDrum_ = static_cast<float>(0.7 * folded(drum_.angle) * drumGain_ + 0.05);
    }
    void render(std::span<StereoFrame> io, double) override {
        showAngle();
        jumpOrPark(static_cast<int>(io.size()));
        const float dry = dry_, spread = spread_, cross = 0.4f * hornGain_;
        const int size = line_.size();
        ControlTick tick = tick_;
        RotaryAmplifier amplifier = amplifier_;
        HornSide left = left_, right = right_;
        float leftDrum = leftDrum_, rightDrum = rightDrum_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                turn(left, right);
                leftDrum = leftDrum_;
                rightDrum = rightDrum_;
            }
            amplifier.step(2.0f * (f.left + f.right));
            const float horn = amplifier.hornBand, drum = amplifier.low;
            line_.write(horn);
            const float l = left.doppler.read(line_), r = right.doppler.read(line_);
            const auto leftGain = static_cast<float>(left.gain.value);
            const auto rightGain = static_cast<float>(right.gain.value);
            const float leftWet = (l + horn) * leftGain + drum * leftDrum + cross * r;
            const float rightWet = (r + horn) * rightGain + drum * rightDrum + cross * l;
            const float side = (rightWet - leftWet) * spread;
            f.left = dry * f.left + leftWet + side;
            f.right = dry * f.right + rightWet - side;
            for (HornSide* s : {&left, &right}) {
                s->gain.advance();
                s->doppler.move(size);
            }
            line_.step();
        }
        tick_ = tick;
        amplifier_ = amplifier;
        left_ = left;
        right_ = right;
    }
};

void showSpeed(TextOut& out, float v, const EffectView&) {
    static constexpr std::string_view names[] = {"Slow", "Stop", "Fast"};
    out.text(names[static_cast<std::size_t>(selection(v))]);
}
void showFreqMod(TextOut& out, float v, const EffectView&) { out.print("%.2f ms", 2.0f * v); }
void showSpeedTrim(TextOut& out, float v, const EffectView&) {
    out.print("%+.0f %%", (v - 0.5f) * 100.0f);
}
void showCrossover(TextOut& out, float v, const EffectView&) {
    out.print("%.0f Hz", crossoverHz(v));
}

}  // namespace

constinit const EffectType effect::rotarySpeaker2{.number = 56,
                                                  .name = "Rotary Speaker 2",
                                                  .tail = {.seconds = 0.01f},
                                                  .make = makeEffect<RotarySpeaker2>,
                                                  .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                            {},
                                                            {"Rate", 0.5f, showSpeed},
                                                            {"Drive", 0.5f, showEffectPercent},
                                                            {"Lo/Hi Mix", 0, showEffectPercent},
                                                            {"Width", 0, showEffectPercent},
                                                            {"Freq Mod", 0, showFreqMod},
                                                            {"Fast Spd", 0, showSpeedTrim},
                                                            {"Slow Spd", 0, showSpeedTrim},
                                                            {"Crossover", 0, showCrossover},
                                                            {"Horn Reso", 0, showEffectPercent},
                                                            {"Boost", 0, showEffectPercent}}}};

}  // namespace stratovane
