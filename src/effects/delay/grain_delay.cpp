// Grain Delay: overlapping grains of the delayed sound, each with its own pitch, start and place.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/tempo_divisions.h"
#include "base/units.h"
#include "effects/all_types.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/blocks/tiny.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 3.0f;
constexpr double keyNought = 16.351599;  // Hz of pitch 0
constexpr float keytrackLimit = 0.01f;   // "Grain" below it follows the key

double grainMilliseconds(float v) { return std::exp(4.60517 * v + 0.69315); }

double freeSeconds(float v) { return 0.999 * v * v + 0.001; }

double squareFromMiddle(float v) { return (v - 0.5) * (v - 0.5); }

/// Reads a line between its entries, at a speed of its own. Positions are places in memory, double
/// because a float that counts a line of this length has hardly any bits left for fractions.
struct Grain {
    double position = 100;
    double speed = 0;  // entries per frame; -1 keeps the delay
    float pan = 0.5f;

    float read(const Line& line) const {
        const int index = static_cast<int>(position);
        const float here = line.entry(index);
        const float next = line.entry(index + 1 == line.size() ? 0 : index + 1);
        return here + (next - here) * static_cast<float>(position - index);
    }
    void advance(int lineSize) {
        position += speed;
        if (position < 0) position += lineSize;
        if (position >= lineSize) position -= lineSize;
    }
};

class GrainDelay final : public EffectUnit {
  public:
    GrainDelay() : EffectUnit{effect::grainDelay} {}

  private:
    enum {
        Mix,
        Sync,
        Time,
        Feedback,
        Length,
        Pitch,
        PitchMod1,
        PitchMod2,
        ModRate,
        DelayMod,
        PanMod
    };

    // Coefficients.
    float dry_ = 1, wet_ = 0, feedback_ = 0, blocker_ = 0;
    double delaySeconds_ = 0;
    double grainsPerSample_ = 1;  // when no key sets it
    float follow_ = 0;            // of the input envelope
    double cyclesPerSample_ = 0;  // of the LFO
    // State.
    Grain now_, before_;
    // Clock and phase add up minute steps; in float, grains would start frames early or late.
    double clock_ = -1;    // 1 at the start of a grain, 0 at its end
    double phase_ = 0;     // of the LFO, 0..1
    double envelope_ = 0;  // of the input; slow ones gather steps too small for a float
    bool alternate_ = false;
    float offsetLeft_ = 0, offsetRight_ = 0;  // what the blocker takes away
    // Lines.
    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        now_ = before_ = {};
        clock_ = -1;
        phase_ = envelope_ = 0;
        offsetLeft_ = offsetRight_ = 0;
        alternate_ = false;
        setTail(type().tail.samples + line_.size());
    }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                dry_ = dryGain(v);
                wet_ = wetGain(v);
                break;
            case Sync:
            case Time:
                updateTime();
                break;
            case Feedback:
                blocker_ = 20.0f / rate();
                // The blocker lifts the treble by half its coefficient, which matters below 10 kHz.
                feedback_ = std::min(0.999f * v, 0.9995f - 0.5f * blocker_);
                break;
            case Length:
                grainsPerSample_ = 1000 / (grainMilliseconds(v) * rate());
                break;
            case ModRate:
                cyclesPerSample_ = lfoHz(v) / rate();
                follow_ =
                    onePoleCoefficient(static_cast<double>((1 - v) * (1 - v) * 5000 + 10), rate());
                break;
            default:
                break;
        }
    }
    void updateTime() {
        const float v = parameter(Time);
        double seconds = freeSeconds(v);
        if (isOn(parameter(Sync)))
            for (seconds = secondsPerBeat() / tempoDivision(1.0f - v).perBeat; seconds >= 1;)
                seconds *= 0.5;
        delaySeconds_ = seconds;
    }
    double grainsPerSampleNow() const {
        const bool tracks = parameter(Length) < keytrackLimit && keys() != nullptr &&
                            keys()->pitch > KeySource::noKey;
        return tracks ? std::exp(static_cast<double>(keys()->pitch)) * keyNought / rate()
                      : grainsPerSample_;
    }
    /// Modulation of a grain, 0..1: random above the middle, alternating up to it. Always a draw,
    /// so that one modulator does not shift another's numbers.
    float modulator(int slot) {
        const float drawn = random().unipolar();
        return parameter(slot) > 0.5f ? drawn : alternate_ ? 1.0f : 0.0f;
    }
    Grain startGrain(double length) {
        alternate_ = !alternate_;
        const float pitchMod = modulator(PitchMod1), delayMod = modulator(DelayMod);
        const float panMod = modulator(PanMod);
        const double sweep =
            parameter(PitchMod2) > 0.5f ? std::sin(2 * std::numbers::pi * phase_) : 2 * envelope_;
        const double pitch =
            parameter(Pitch) + 2 * (pitchMod - 0.5) * squareFromMiddle(parameter(PitchMod1));
        const double speed = 2 - 4 * pitch - 4 * squareFromMiddle(parameter(PitchMod2)) * sweep;
        const double bounded = std::clamp(speed, -2.0, 2.0);
        const double delay =
            (squareFromMiddle(parameter(DelayMod)) * delayMod * 1.996 + delaySeconds_) * rate();
        // A grain sounds for two lengths, in which it must not overtake the write position.
        const double start = std::max(delay, 2 * length * (-1 - bounded) + 1);

        Grain grain;
        grain.speed = bounded;
        grain.position = std::fmod(line_.writeIndex() + start, static_cast<double>(line_.size()));
        grain.pan = 2 * (panMod - 0.5f) * (parameter(PanMod) - 0.5f) + 0.5f;
        return grain;
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_, feedback = feedback_, blocker = blocker_;
        const double grainsPerSample = grainsPerSampleNow(), cyclesPerSample = cyclesPerSample_;
        const float follow = follow_;
        const int size = line_.size();
        Grain now = now_, before = before_;
        double clock = clock_, phase = phase_, envelope = envelope_;
        float offsetLeft = offsetLeft_, offsetRight = offsetRight_;
        for (StereoFrame& f : io) {
            const float in = f.left + f.right;
            envelope += (std::fabs(in) - envelope) * follow;
            phase += cyclesPerSample;
            if (phase >= 1) phase -= 1;
            if (clock <= 0) {
                clock = 1;
                before = now;
                envelope_ = envelope;
                phase_ = phase;
                now = startGrain(1 / grainsPerSample);
            }
            const auto fading = static_cast<float>(clock * clock);
            const float a = (1 - fading) * now.read(line_) * wet;
            const float b = fading * before.read(line_) * wet;
            const float left =
                highpass(offsetLeft, b * (1 - before.pan) + a * (1 - now.pan), blocker);
            const float right = highpass(offsetRight, b * before.pan + a * now.pan, blocker);
            f.left = f.left * dry + left;
            f.right = f.right * dry + right;
            line_.write((left + right) * feedback + in);
            line_.step();
            now.advance(size);
            before.advance(size);
            clock -= grainsPerSample;
        }
        now_ = now;
        before_ = before;
        clock_ = clock;
        phase_ = phase;
        envelope_ = zeroWhenTiny(envelope);
        offsetLeft_ = zeroWhenTiny(offsetLeft);
        offsetRight_ = zeroWhenTiny(offsetRight);
    }
};

// Displays ----------------------------------------------------------------------------------------

void showDelay(TextOut& out, float v, const EffectView& view) {
    if (isSynced(view)) return showEffectDivision(out, v, view);
    out.print("%.0f ms", freeSeconds(v) * 1000);
}

void showLength(TextOut& out, float v, const EffectView&) {
    if (v < keytrackLimit) return out.text("Keytrack");
    out.print("%.1f ms", grainMilliseconds(v));
}

void showPitch(TextOut& out, float v, const EffectView&) { out.print("%+.1f %%", v * 400 - 200); }

const char* randomOr(float v) { return v >= 0.5f ? "Rnd" : "Alt"; }

void showPitchMod1(TextOut& out, float v, const EffectView&) {
    out.print("%s %.1f%%", randomOr(v), squareFromMiddle(v) * 400);
}

void showPitchMod2(TextOut& out, float v, const EffectView&) {
    out.print("%s %.1f%%", v >= 0.5f ? "LFO" : "Env", squareFromMiddle(v) * 400);
}

void showDelayMod(TextOut& out, float v, const EffectView&) {
    out.print("%s %.1fms", randomOr(v), squareFromMiddle(v) * 1996);
}

void showPanMod(TextOut& out, float v, const EffectView&) {
    out.print("%s %.1f%%", randomOr(v), std::fabs(v * 200 - 100));
}

}  // namespace

constinit const EffectType effect::grainDelay{.number = 15,
                                              .name = "Grain Delay",
                                              .wakes = Waking::audible,
                                              .make = makeEffect<GrainDelay>,
                                              .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                        {"Sync", 0, showEffectSwitch},
                                                        {"Delay", 0.5f, showDelay},
                                                        {"Feedback", 0.5f, showEffectPercent},
                                                        {"Grain", 0.5f, showLength},
                                                        {"Pitch", 0.75f, showPitch},
                                                        {"Pit Mod1", 0.5f, showPitchMod1},
                                                        {"Pit Mod2", 0.5f, showPitchMod2},
                                                        {"PM2 Rate", 0.5f, showEffectRate},
                                                        {"Del Mod", 0.5f, showDelayMod},
                                                        {"Pan Mod", 0.5f, showPanMod}}}};

}  // namespace stratovane
