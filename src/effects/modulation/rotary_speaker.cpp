// Rotary Speaker: a horn of moving all-passes and a drum that swells, split at a crossover; dirt
// and tone colour a Doppler copy that the horn carries.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/all_pass_chain.h"
#include "effects/blocks/control_tick.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/blocks/ramp.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/rotor.h"
#include "effects/modulation/sweep.h"

namespace stratovane {

namespace {

enum { Mix, Jump, Rate, Dirt, LowHigh, Width, HighSpeed, LowSpeed, HighAcc, LowAcc, Tone };
constexpr int tickSamples = 32;
constexpr float lineSeconds = 0.001f;
constexpr double dopplerSeconds = 0.0003;

struct Speeds {
    double horn, drum;  // in base speeds
};
constexpr Speeds selected[] = {{0, 0}, {0.85, 1.42}, {7.5, 6.63}};
constexpr std::string_view speedNames[] = {"Stop", "Slow", "Fast"};
int selection(float v) { return choice(v, 2.9f); }

/// Corner of crossover and tone, 200..2600 Hz.
float cornerHz(float v) { return v * v * 2400.0f + 200.0f; }

/// A state-variable step of damping 1 that feeds back what it has gathered: `low` settles at the
/// negated low output.
struct Split {
    float band = 0, low = 0;
    /// Returns the high output.
    float step(float x, float f) {
        const float high = x + band + low;
        band -= high * f;
        low += band * f;
        return high;
    }
};

class RotarySpeaker final : public EffectUnit {
  public:
    RotarySpeaker() : EffectUnit{effect::rotarySpeaker} {}

  private:
    float dry_ = 1, wet_ = 0;
    float dirt_ = 0;
    float crossover_ = 0, tone_ = 0;          // coefficients, 0..1
    double width_ = 0;                        // of the right side; in units of either angle
    double hornTarget_ = 0, drumTarget_ = 0;  // speeds per tick
    double hornAcc_ = 0, drumAcc_ = 0;        // per tick and tick

    ControlTick tick_;
    SpeedJump jump_;
    Rotor horn_;                          // -1..1 is one turn
    Rotor drum_;                          // -2..2 is one turn
    Ramp left_, right_;                   // all-pass coefficients, -0.999..0.999
    float leftDrum_ = 0, rightDrum_ = 0;  // gains
    int doppler_ = 0;                     // whole samples behind the write index
    float dopplerFraction_ = 0;
    float guard_ = 0;  // follows the line's last entry: its first, as it was when the line wrapped
    Split split_, coloured_;
    AllPassChain<5> leftChain_, rightChain_;

    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        tick_.reset();
        horn_ = drum_ = {};
        left_.reset(0);
        right_.reset(0);
        leftDrum_ = rightDrum_ = 0;
        doppler_ = 0;
        dopplerFraction_ = guard_ = 0;
        split_ = coloured_ = {};
        leftChain_ = rightChain_ = {};
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix || changed == Dirt) {
            const float a = 0.5f * parameter(Mix);
            dirt_ = parameter(Dirt);
            dry_ = 1.0f - 2.0f * a * a;
            wet_ = (0.7f - 0.3f * dirt_) * a;
        }
        if (changed == Jump) jump_.arm();
        if (changed == LowHigh) crossover_ = cornerCoefficient(v);
        if (changed == Tone) tone_ = cornerCoefficient(v);
        if (changed == Width) width_ = v;
        if (changed == Rate || changed == HighSpeed || changed == LowSpeed) {
            const Speeds speeds = selected[static_cast<std::size_t>(selection(parameter(Rate)))];
            hornTarget_ = speeds.horn * baseSpeed(parameter(HighSpeed));
            drumTarget_ = speeds.drum * baseSpeed(parameter(LowSpeed));
        }
        if (changed == HighAcc) hornAcc_ = acceleration(v, 14000);
        if (changed == LowAcc) drumAcc_ = acceleration(v, 7000);
    }
    float cornerCoefficient(float v) const {
        return atMostOne(static_cast<float>(twoPi * cornerHz(v) / rate()));
    }
    double baseSpeed(float v) const { return std::exp((v - 0.5) * 2) * 64 / rate(); }
    double acceleration(float v, double middle) const {
        return std::exp((v - 0.5) * 4.6) * middle / rate() / rate();
    }

    void showAngle() {
        if (KeySource* record = keyRecord())
            record->hornCycles = static_cast<float>(std::fmod(8 - 8 * horn_.angle, 8.0));
    }
    void idle(int frames) override {
        showAngle();
        horn_.turn(hornTarget_, blockShare(frames, rate()),
                   static_cast<double>(frames) / tickSamples);
        horn_.wrapAbove(-1, 2);
    }
    void jump() {
        horn_.speed = hornTarget_;
        drum_.speed = drumTarget_;
        if (hornTarget_ == 0) horn_.angle = drum_.angle = width_ * 0.5;  // parked
    }
    double coefficient(double angle) const {
        return allPassCoefficient((42000.0 / rate()) * angle * angle + 6600.0 / rate() - 1);
    }
    static float drumGain(double angle) {
        return static_cast<float>(std::min(std::fabs(angle) + 0.7, 2.0));
    }
    /// Control tick.
    void turn(Ramp& leftCoefficient, Ramp& rightCoefficient) {
        horn_.turn(hornTarget_, hornAcc_);
        horn_.wrapAbove(-1, 2);
        double right = horn_.angle + width_;
        if (right > 1) right -= 2;
        leftCoefficient.aim(coefficient(horn_.angle), tickSamples);
        rightCoefficient.aim(coefficient(right), tickSamples);

        const double distance =
            (std::cos((horn_.angle + width_ * 0.5) * (0.5 * twoPi)) + 2) * rate() * dopplerSeconds;
        const int whole = static_cast<int>(distance);
        dopplerFraction_ = static_cast<float>(distance - whole);
        doppler_ = whole % line_.size();

        drum_.turn(drumTarget_, drumAcc_);
        drum_.wrapAbove(-2, 4);
        double opposite = drum_.angle + width_;
        if (opposite > 2) opposite -= 4;
        leftDrum_ = drumGain(drum_.angle);
        rightDrum_ = drumGain(opposite);
    }
    float readDoppler(int samples, float fraction) const {
        const int size = line_.size(), sum = line_.writeIndex() + samples;
        const int index = sum < size ? sum : sum - size;
        const float here = line_.entry(index);
        const float next = index + 1 < size ? line_.entry(index + 1) : guard_;
        return here + (next - here) * fraction;
    }
    void render(std::span<StereoFrame> io, double) override {
        showAngle();
        if (jump_.due()) jump();
        const float dry = dry_, wet = wet_, dirt = dirt_, crossover = crossover_, tone = tone_;
        ControlTick tick = tick_;
        Split split = split_, coloured = coloured_;
        AllPassChain<5> leftChain = leftChain_, rightChain = rightChain_;
        Ramp left = left_, right = right_;
        float leftDrum = leftDrum_, rightDrum = rightDrum_, fraction = dopplerFraction_;
        int doppler = doppler_;
        for (StereoFrame& f : io) {
            if (tick.due(tickSamples)) {
                turn(left, right);
                leftDrum = leftDrum_;
                rightDrum = rightDrum_;
                doppler = doppler_;
                fraction = dopplerFraction_;
            }
            const float x = f.left + f.right;
            const float high = split.step(x, crossover);
            line_.write(x);
            const float read = readDoppler(doppler, fraction);
            const float d = std::clamp(10.0f * dirt * split.band, -dirt, dirt);
            coloured.step(read - dirt * d, tone);
            const float y = high + coloured.band;
            const auto leftHorn = static_cast<float>(leftChain.step(y, left.value));
            const auto rightHorn = static_cast<float>(rightChain.step(y, right.value));
            f.left = dry * f.left + wet * (leftDrum * split.low - leftHorn);
            f.right = dry * f.right + wet * (rightDrum * split.low - rightHorn);
            left.advance();
            right.advance();
            if (line_.writeIndex() == 0) guard_ = line_.entry(0);
            line_.step();
        }
        tick_ = tick;
        split_ = split;
        coloured_ = coloured;
        leftChain_ = leftChain;
        rightChain_ = rightChain;
        left_ = left;
        right_ = right;
    }
};

void showSpeed(TextOut& out, float v, const EffectView&) {
    out.text(speedNames[static_cast<std::size_t>(selection(v))]);
}
void showCorner(TextOut& out, float v, const EffectView&) { out.print("%.0f Hz", cornerHz(v)); }
void showWidth(TextOut& out, float v, const EffectView&) { out.print("%.0f deg", v * 180.0f); }
void showBipolar(TextOut& out, float v, const EffectView&) {
    out.print("%+.0f %%", v * 200.0f - 100.0f);
}

}  // namespace

constinit const EffectType effect::rotarySpeaker{.number = 55,
                                                 .name = "Rotary Speaker",
                                                 .shown = "Rotary",
                                                 .tail = {.seconds = 0.01f},
                                                 .make = makeEffect<RotarySpeaker>,
                                                 .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                           {},
                                                           {"Rate", 0.5f, showSpeed},
                                                           {"Dirt", 0.5f, showEffectPercent},
                                                           {"Lo/Hi", 0, showCorner},
                                                           {"Width", 0, showWidth},
                                                           {"Hi Spd", 0, showBipolar},
                                                           {"Lo Spd", 0, showBipolar},
                                                           {"Hi Acc", 0, showBipolar},
                                                           {"Lo Acc", 0, showEffectPercent},
                                                           {"Tone", 0, showCorner}}}};

}  // namespace stratovane
