// The modulation types, measured: sweeps, notches, shifts, turns and gains.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "effects/effect_run.h"
#include "measure/measure.h"

namespace stratovane {
namespace {

using measure::Signal;
using Values = EffectRun::Values;

constexpr double pi = std::numbers::pi;
constexpr double rate = 44100;

struct Rig : EffectRun {
    Rig(int type, const Values& values, float hz = 44100) : EffectRun{type, values, hz} {}
};

std::size_t samples(double seconds) { return static_cast<std::size_t>(seconds * rate); }
Signal zeros(double seconds) { return Signal(samples(seconds)); }
Signal constant(double seconds) { return Signal(samples(seconds), 1.0f); }
Signal sine(double hz, double seconds) { return stratovane::sine(samples(seconds), hz / rate); }
/// Rises by 1 in ten seconds: through linear taps it comes out lower by their delay.
constexpr double slope = 0.1 / rate;
Signal ramp(double seconds) {
    Signal x(samples(seconds));
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<float>(slope * double(i));
    return x;
}
Signal tail(const Signal& x, double fromSeconds) {
    return {x.begin() + static_cast<std::ptrdiff_t>(samples(fromSeconds)), x.end()};
}
double lowest(const Signal& x) { return double(*std::min_element(x.begin(), x.end())); }
double highest(const Signal& x) { return double(*std::max_element(x.begin(), x.end())); }

/// Cycles per entry of a signal that swings around the middle of its range.
double cyclesPerEntry(const Signal& x) {
    const double low = lowest(x), high = highest(x), middle = (low + high) / 2;
    bool armed = false;
    std::vector<double> rises;
    for (std::size_t i = 1; i < x.size(); ++i) {
        if (double(x[i]) < middle - 0.2 * (high - low)) armed = true;
        if (!armed || double(x[i]) < middle) continue;
        armed = false;
        rises.push_back(double(i) - (double(x[i]) - middle) / double(x[i] - x[i - 1]));
    }
    return rises.size() < 2 ? 0 : double(rises.size() - 1) / (rises.back() - rises.front());
}
double hzOf(const Signal& x) { return cyclesPerEntry(x) * rate; }

/// RMS of stretches.
Signal envelope(const Signal& x, std::size_t stretch) {
    Signal out;
    for (std::size_t at = 0; at + stretch <= x.size(); at += stretch)
        out.push_back(static_cast<float>(
            measure::rms({x.begin() + static_cast<std::ptrdiff_t>(at),
                          x.begin() + static_cast<std::ptrdiff_t>(at + stretch)})));
    return out;
}

// Delays that a ramp shows ------------------------------------------------------------------------

TEST(Modulation, TapsSweepAtTheirRatesBetweenTheirDelays) {
    const double f = 20 * std::exp(-0.2 * 5.991464);                     // Rate 0.8
    const double reach = std::min(0.02 / f, 0.024) * 0.5, p = 1 / rate;  // Depth 1, seconds
    const double late = p + 0.012, bend = reach * 0.5;
    const struct {
        const char* name;
        int type;
        Values values;                  // after Mix 1 and Rate 0.8
        std::array<double, 3> weights;  // of input, left and right; their sum is delay * slope
        double hz, least, most;
    } cases[] = {
        {"Chorus left", 20, {{3, 1}}, {1, -1, 0}, 0.4211 * f, p, p + 2 * reach},
        {"Chorus right", 20, {{3, 1}, {4, 0.5f}}, {1, 0, -1}, 0.5937 * f, late, late + 2 * reach},
        {"Chorus at its slowest", 20, {{2, 0.5f}, {3, 1}}, {1, -1, 0}, 0.4211, p, p + 0.02},
        {"Chorus + Reverb",
         19,
         {{3, 1}, {4, 0}},
         {1, -1, 0},
         0.5 * f,
         p + 0.006,
         p + 0.006 + reach},
        {"Ensemble", 23, {{3, 1}}, {1, -1 / 1.2, 0}, 0.8422 * f, bend * 1.2836, bend * 1.3831},
        {"Ensemble width",
         23,
         {{3, 1}, {5, 1}},
         {0, -1 / 0.96, 1 / 0.96},
         0.8422 * f,
         -2 * bend * std::sin(1.0),
         2 * bend * std::sin(1.0)},
        {"Flanger", 30, {{4, 0}}, {1, 2, 0}, f, 0, 0.012},
        {"Flanger through zero", 30, {{3, 1}, {4, 0}, {5, 0}}, {1, 2, 0}, 2 * f, 0, 0.012},
        {"Step Flanger, gliding", 31, {{4, 0}}, {1, 2, 0}, f, 0, 0.004},
        {"V1",
         54,
         {{0, 0.4f}, {2, 0.5f}, {3, 1}, {4, 0}},
         {1, -1 / 1.3, 0},
         6.867,
         0,
         8 * 0.000124},
        {"V3", 54, {{0, 0}, {2, 1}, {3, 1}, {4, 0}}, {1, -1 / 1.3, 0}, 13.73, 0, 15 * 0.000124},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Signal x = ramp(c.hz < 1 ? 8 : 4);
        Rig rig(c.type, {{0, 1}, {2, 0.8f}});
        rig.set(c.values);
        rig.unit().setSampleRate(44100);
        const StereoSignal y = rig(x);
        Signal delay;
        for (std::size_t i = samples(0.5); i < x.size(); ++i)
            delay.push_back(
                static_cast<float>((c.weights[0] * double(x[i]) + c.weights[1] * double(y.left[i]) +
                                    c.weights[2] * double(y.right[i])) /
                                   slope));
        EXPECT_NEAR(hzOf(delay), c.hz, 0.005 * c.hz);
        const double fuzz = 2 + 0.02 * (c.most - c.least) * rate;  // ticks cut the peaks
        EXPECT_NEAR(lowest(delay), c.least * rate, fuzz);
        EXPECT_NEAR(highest(delay), c.most * rate, fuzz);
    }
}

TEST(Modulation, OpposedVoicesMeetAndPartAtTheirRates) {
    // Impulses every 8 ms; the first echo of each tells the shorter of two opposed delays.
    const auto firstEchoes = [](int type, bool right, bool leftOnly) {
        Signal x = zeros(4), none = zeros(4);
        const std::size_t spacing = samples(0.008);
        for (std::size_t i = 0; i < x.size(); i += spacing) x[i] = 1;
        const StereoSignal y =
            Rig(type, {{0, 1}, {2, 1}, {3, 0.5f}, {5, 0.5f}})({x, leftOnly ? none : x});
        Signal delays;
        for (std::size_t at = samples(0.4) / spacing * spacing; at + spacing < x.size();
             at += spacing) {
            std::size_t i = 2;
            const Signal& out = right ? y.right : y.left;
            while (i < spacing && std::fabs(out[at + i]) < 0.15f) ++i;
            delays.push_back(static_cast<float>(i));
        }
        return delays;
    };
    const double span = 0.016 * 0.25 * rate;  // samples; Depth 0.5 at Rate 1
    const Rows<int, bool, double, double> cases = {{21, false, 2 * 0.2125 * 20, span / 2},
                                                   {21, true, 2 * 0.2996 * 20, span / 2},
                                                   {22, true, 0.2273 * 20, span}};
    for (const auto& [type, right, hz, most] : cases) {
        const Signal delays = firstEchoes(type, right, type == 22);
        EXPECT_NEAR(cyclesPerEntry(delays) / 0.008, hz, 0.02 * hz) << type << right;
        EXPECT_NEAR(highest(delays), most, 0.1 * span) << type << right;
        EXPECT_LT(lowest(delays), 0.15 * span) << type << right;
    }
}

TEST(Modulation, SpaceChorusCrossesHighsAndLeavesLows) {
    Rig rig(22, {{0, 1}, {2, 0}, {3, 0}, {5, 0.5f}});  // crossover at about 400 Hz
    const auto sides = [&](double hz) {
        const StereoSignal y = rig({sine(hz, 0.5), zeros(0.5)});
        return std::pair{measure::levelAt(tail(y.left, 0.2), rate, hz),
                         measure::levelAt(tail(y.right, 0.2), rate, hz)};
    };
    const auto [lowLeft, lowRight] = sides(20);
    EXPECT_NEAR(lowLeft, 1, 0.05);
    EXPECT_LT(lowRight, 0.01);
    const auto [highLeft, highRight] = sides(5000);
    EXPECT_NEAR(highLeft, 1, 0.05);
    EXPECT_NEAR(highRight, 1, 0.05);
    const StereoSignal both = rig(sine(5000, 0.5));
    EXPECT_LT(measure::rms(tail(both.left, 0.2)), 0.01) << "equal highs cancel";
}

TEST(Modulation, QuadChorusHoldsItsFeedbackAtLowRates) {
    for (const float lowRate : {8000.0f, 11025.0f, 44100.0f})
        for (const float tone : {0.5f, 1.0f}) {
            Rig rig(21, {{0, 1}, {2, 1}, {3, 1}, {5, tone}, {6, 1}}, lowRate);
            Signal burst = zeros(8);
            Random random{3};
            for (std::size_t i = 0; i < 20000; ++i) burst[i] = random.bipolar();
            EXPECT_LT(measure::peak(tail(rig(burst).left, 6)), 0.01) << lowRate << " " << tone;
        }
}

// Flangers ----------------------------------------------------------------------------------------

TEST(Modulation, FlangerCombsByItsFeedback) {
    for (const float v : {0.0f, 0.5f, 0.75f, 1.0f}) {
        Rig rig(30, {{3, 0}, {4, v}});
        rig(zeros(0.2));  // the tap glides to 6 ms
        const Signal h = rig(impulse(samples(3))).left;
        const double g = 0.95 * double(v);
        const double delay = 265.6;  // of the loop: a sample more than the tap
        EXPECT_NEAR(measure::gainDb(h, rate, 2 * rate / delay),
                    measure::decibels(0.75 - 0.375 / (1 + g)), 0.1)
            << v;
        EXPECT_NEAR(measure::gainDb(h, rate, 1.5 * rate / delay),
                    measure::decibels(0.75 + 0.375 / (1 - g)), 0.4)
            << v;
    }
}

TEST(Modulation, StepFlangerStandsStillBetweenSteps) {
    // Synced or not, step rate, steps a second: a quarter and 1/16D at 120.
    const Rows<float, float, double> cases = {
        {0.0f, 0.8f, 6.034}, {1.0f, 0.32f, 2}, {1.0f, 0.57f, 5.333}};
    for (const auto& [synced, stepRate, perSecond] : cases) {
        Rig rig(31, {{0, 1}, {1, synced}, {2, 0.7f}, {4, 0}, {6, stepRate}, {7, 1}});
        const Signal x = ramp(6);
        const Signal y = rig(x).left;
        std::vector<std::size_t> steps;
        for (std::size_t i = samples(0.05); i < x.size(); ++i) {
            const auto delay = [&](std::size_t k) { return double(x[k] + y[k] * 2) / slope; };
            if (std::fabs(delay(i) - delay(i - 16)) < 1) continue;
            if (steps.empty() || i > steps.back() + 400) steps.push_back(i);
            if (i > steps.back()) {
                EXPECT_LT(i - steps.back(), 100u) << "fades in 64 samples";
            }
        }
        // A step between equal delays does not show.
        EXPECT_NEAR(double(steps.size()), perSecond * 5.95, 0.12 * perSecond * 6);
        if (perSecond != 2) continue;
        for (const std::size_t at : steps)
            EXPECT_LE(at % 22050, 256u + 64 + 16) << "with the block or tick after the beat";
    }
}

// Phasers -----------------------------------------------------------------------------------------

double allPassCorner(double coefficient, double halfAngle) {
    return std::atan(std::tan(halfAngle) * (1 + coefficient) / (1 - coefficient)) * rate / pi;
}

TEST(Modulation, PhasersHaveTheirNotchesWhereStagesTurnToTheOpposite) {
    const double base = (std::pow(29.5 * 0.5, 3) + 500) / rate - 1;
    const Rows<int, Values, int, double> cases = {{40, {{3, 0}}, 4, -50},
                                                  {42, {{3, 0}}, 4, -90},
                                                  {41, {{3, 0}, {5, 0.5f}, {6, 0.5f}}, 12, -45}};
    for (const auto& [type, values, stages, floorDb] : cases) {
        Rig rig(type, values);
        rig(zeros(0.1));
        const Signal h = rig(impulse(samples(1.5))).left;
        for (int k = 0; k < stages / 2; ++k) {
            const double hz = allPassCorner(base, (2 * k + 1) * pi / (2 * stages));
            EXPECT_LT(measure::gainDb(h, rate, hz), floorDb) << type << " notch " << k;
            const double between = allPassCorner(base, (2 * k + 2) * pi / (2 * stages));
            const double top = measure::decibels(1.5) * (type == 42 ? 2 : 1);
            EXPECT_NEAR(measure::gainDb(h, rate, between), top, 0.05) << type << " peak " << k;
        }
    }
}

TEST(Modulation, PhaserFeedbackLiftsWhatReturnsInPhase) {
    for (const float v : {0.5f, 0.9f}) {
        Rig rig(40, {{3, 0}, {4, v}});
        const double gain = double(rig(constant(0.5)).left.back());
        EXPECT_NEAR(gain, 0.75 + 0.75 / (1 - 0.97 * double(v)), 0.01) << v;
    }
    Rig deep(41, {{3, 0}, {4, 1}, {5, 0.5f}, {6, 0.5f}});  // of the mono sum, inverted
    EXPECT_NEAR(double(deep(constant(0.5)).left.back()), 0.75 + 0.375 * 2 / 1.8, 0.01);
}

TEST(Modulation, PhaserSidesSweepHalfACycleApart) {
    const StereoSignal y = Rig(40, {})(sine(400, 4));  // Rate 1 Hz, Stereo 180 degrees
    const Signal left = envelope(y.left, 441), right = envelope(y.right, 441);
    double alike = 0, apart = 0, later = 0;
    for (std::size_t i = 100; i < 300; ++i) {
        alike = std::max(alike, std::fabs(double(left[i + 50] - right[i])));
        apart = std::max(apart, std::fabs(double(left[i] - right[i])));
        later = std::max(later, std::fabs(double(left[i + 100] - left[i])));
    }
    EXPECT_LT(alike, 0.02);
    EXPECT_LT(later, 0.02);
    EXPECT_GT(apart, 0.2);
}

TEST(Modulation, DeepPhaserBendsWithTheLevel) {
    const Rows<float, double> cases = {
        {0.5f, (std::pow(29.5 * 0.5, 3) + 500) / rate - 1}, {1.0f, 20000 / rate}, {0.0f, -0.999}};
    for (const auto& [envelopeMod, coefficient] : cases) {
        Rig rig(41, {{3, 0}, {5, 0.5f}, {6, envelopeMod}, {7, 0.5f}});
        const Signal x = sine(1000, 2);
        const double level = measure::levelAt(tail(rig(x).left, 1), rate, 1000);
        const double turn =
            2 * std::atan(std::tan(pi * 1000 / rate) * (1 - coefficient) / (1 + coefficient));
        EXPECT_NEAR(level, 1.5 * std::fabs(std::cos(6 * turn)), 0.02) << envelopeMod;
    }
}

// Gains -------------------------------------------------------------------------------------------

TEST(Modulation, TremoloClipsATriangle) {
    // Shape, highest gain, part of the time spent there.
    const Rows<float, double, double> cases = {
        {0.0f, 1.3125, 0.708}, {0.25f, 1.5, 0.5}, {1.0f, 2.0625, 0.125}};
    for (const auto& [shape, top, share] : cases) {
        const StereoSignal y = Rig(50, {{0, 1}, {2, 0.6f}, {4, shape}})(constant(6));
        const Signal gain = tail(y.left, 0.5);
        EXPECT_NEAR(highest(gain), top, 1e-3);
        EXPECT_NEAR(lowest(gain), 0, 5e-3);
        EXPECT_NEAR(hzOf(gain), 20 * std::exp(-0.4 * 5.991464), 0.01);
        const auto at = std::count_if(gain.begin(), gain.end(),
                                      [near = top - 1e-3](float g) { return double(g) > near; });
        EXPECT_NEAR(double(at) / double(gain.size()), share, 0.05) << shape;
        if (shape > 0.5f) continue;
        EXPECT_GT(measure::peak(tail(y.right, 0.5)), 1.3);
        double quieter = 10;  // the sides swing against each other
        for (std::size_t i = samples(0.5); i < y.left.size(); ++i)
            quieter = std::min(quieter, double(std::max(y.left[i], y.right[i])));
        EXPECT_GT(quieter, 1.2);
    }
    for (const float s : Rig(50, {{0, 0}})(constant(1)).left) ASSERT_EQ(s, 1.0f);
}

TEST(Modulation, ScannerModesMixTheirShares) {
    const Rows<float, float, double, double> cases = {{0.0f, 0.0f, 1.3, 1.3},
                                                      {0.0f, 1.0f, 1.3 * (1 - 15 * 0.054), 1.3},
                                                      {0.6f, 0.0f, 1.13, 1.13},
                                                      {0.75f, 0.0f, 1.21, 1.21},
                                                      {1.0f, 0.0f, 1.29, 1.29}};
    for (const auto& [mode, ripple, least, most] : cases) {
        const Signal y = tail(Rig(54, {{0, mode}, {5, ripple}})(constant(1)).left, 0.2);
        EXPECT_NEAR(lowest(y), least, 2e-3) << mode;
        EXPECT_NEAR(highest(y), most, 2e-3) << mode;
    }
}

TEST(Modulation, ScannerOffPassesSoundAndSilence) {
    Rig rig(54, {});
    const Signal x = sine(440, 0.2);
    EXPECT_EQ(rig(x).right, x);
    rig(silence(samples(0.05)), 256, true);
    EXPECT_TRUE(rig.flag());
}

// Rotary speakers ---------------------------------------------------------------------------------

/// The horn's angle at each block of 256 frames.
Signal hornAngles(Rig& rig, double seconds, bool silent = false) {
    Signal angles;
    for (std::size_t i = 0; i < samples(seconds) / 256; ++i) {
        rig(silence(256), 256, silent);
        angles.push_back(rig.keys.hornCycles);
    }
    return angles;
}

TEST(Modulation, RotorsTurnAtTheSelectedSpeeds) {
    const Rows<int, float, double, double> cases = {{55, 0.5f, 0.85, 0.71},
                                                    {55, 1.0f, 7.5, 3.315},
                                                    {56, 0.2f, 0.85, 1.42},
                                                    {56, 1.0f, 6.52, 5.77}};
    for (const auto& [type, selector, hornHz, drumHz] : cases) {
        SCOPED_TRACE(std::to_string(type) + " at " + std::to_string(selector));
        // Middle speeds and accelerations; the drum loud, at the lowest crossover.
        Values values{{0, 1}, {2, selector}, {3, 0}, {6, 0}, {7, 0.5f}, {8, 0.5f}};
        if (type == 55) values.insert(values.end(), {{6, 0.5f}, {9, 0.5f}});
        Rig rig(type, values);
        const double wrapHz = type == 55 ? 2 * hornHz : hornHz;
        EXPECT_NEAR(cyclesPerEntry(hornAngles(rig, 6)) * rate / 256, wrapHz, 0.02 * wrapHz);
        const Signal low = tail(rig(sine(50, 8)).left, 0.5);
        EXPECT_NEAR(cyclesPerEntry(envelope(low, samples(0.02))) / 0.02, drumHz, 0.03 * drumHz);
    }
}

TEST(Modulation, HornGathersSpeedStopsAndTurnsOnInSilence) {
    Rig rig(55, {{2, 0.5f}, {6, 0.5f}, {8, 0.5f}, {5, 0.5f}});
    rig(zeros(1));
    rig.set({{2, 1}});
    const Signal angles = hornAngles(rig, 2);
    double seconds = 0;
    for (std::size_t i = 1; i < angles.size() && seconds == 0; ++i) {
        const double way = std::fmod(double(angles[i - 1] - angles[i]) + 8, 8.0);  // 16 a turn
        if (way * rate / 256 / 16 > 7.45) seconds = double(i) * 256 / rate;
    }
    EXPECT_NEAR(seconds, 6.65 * 64 * 32 / 14000, 0.03);

    rig(silence(samples(0.05)), 256, true);
    EXPECT_TRUE(rig.flag()) << "the tail is 10 ms";
    EXPECT_NEAR(cyclesPerEntry(hornAngles(rig, 4, true)) * rate / 256, 15, 0.3);
    EXPECT_TRUE(rig.flag());

    Rig stopped(55, {{2, 0}, {5, 0.5f}});
    EXPECT_NEAR(double(hornAngles(stopped, 1).back()), 8 - 8 * 0.25, 0.02);
    // Coming from a turn, the second type coasts to the same angle.
    Rig coasting(56, {{2, 1}, {7, 0.5f}});
    coasting(zeros(0.63));
    coasting.set({{2, 0.5f}});
    coasting(constant(60));
    EXPECT_NEAR(double(coasting.keys.hornCycles), 16 - 2.2, 0.05);
}

TEST(Modulation, HornSwellsAndBends) {
    // At 2 kHz nearly only the horn is heard; fast it turns 7.5 (6.5) times a second.
    const Rows<int, Values, double> cases = {
        {55, {{0, 1}, {2, 1}, {5, 0.5f}, {6, 0.5f}}, 7.5},
        {56, {{0, 1}, {2, 1}, {4, 1}, {5, 1}, {6, 1}, {7, 0.5f}, {9, 0.5f}}, 6.52}};
    for (const auto& [type, values, hz] : cases) {
        const StereoSignal y = Rig(type, values)(sine(2000, 4));
        const Signal x = tail(y.left, 1);
        const double carrier = measure::levelAt(x, rate, 2000);
        const double side = measure::levelAt(x, rate, 2000 - hz);
        EXPECT_GT(side, 0.1 * carrier) << type;
        EXPECT_LT(measure::levelAt(x, rate, 2000 - 1.5 * hz), 0.02 * (side + carrier)) << type;
        double apart = 0;
        for (std::size_t i = samples(1); i < y.left.size(); ++i)
            apart = std::max(apart, std::fabs(double(y.left[i] - y.right[i])));
        EXPECT_GT(apart, 0.2) << type;
    }
}

TEST(Modulation, DriveAddsOddHarmonics) {
    const auto thirdDb = [](float drive) {
        Rig rig(56, {{0, 1}, {3, drive}, {4, 0}, {2, 0.5f}, {9, 1}});
        const Signal y = tail(rig(sine(200, 2)).left, 1);
        return measure::decibels(measure::levelAt(y, rate, 600) / measure::levelAt(y, rate, 200));
    };
    EXPECT_LT(thirdDb(0), -90);
    EXPECT_GT(thirdDb(1), -30);
}

// Pitch -------------------------------------------------------------------------------------------

TEST(Modulation, PitchIsShiftedByRatioAndCents) {
    const Rows<int, Values, double, double> cases = {
        {60, {{0, 1}, {2, 1}, {3, 0.25f}, {4, 1}}, 1200, -600},
        {60, {{0, 1}, {2, 0.5f}, {3, 0}, {4, 1}}, 0, -1200},
        {61, {{0, 1}, {2, 1}, {3, 1}}, 1200 * std::log2(2 - std::exp2(1 / 24.0)), 48.6},
        {61, {{0, 1}, {2, 0.5f}, {3, 1}}, -12.59, 12.41}};
    for (const auto& [type, values, leftCents, rightCents] : cases) {
        // A whole number of cycles in a grain: the splices do not show.
        const StereoSignal y = Rig(type, values)(sine(1000, 3));
        const auto cents = [](const Signal& x, double expected) {
            const double near = 1000 * std::exp2(expected / 1200);
            return measure::cents(measure::frequencyNear(tail(x, 1), rate, near), 1000);
        };
        EXPECT_NEAR(cents(y.left, leftCents), leftCents, 0.3);
        EXPECT_NEAR(cents(y.right, rightCents), rightCents, 0.3);
        EXPECT_NEAR(measure::rms(tail(y.left, 1)), std::sqrt(0.5), 0.02);
    }
}

// Rounding errors of many small steps would add up to whole samples and turns.
TEST(Modulation, StaysInTimeWhenItRunsLong) {
    // Tremolo at 192 kHz: gains at its ticks, some two hundred turns on.
    const StereoSignal swing = Rig(50, {{0, 1}, {2, 1}, {4, 0.25f}}, 192000)(Signal(1920000, 1.0f));
    const double turnsPerTick = std::exp(2.995732) * 256 / 192000;
    double worst = 0;
    for (int tick = 7000; tick < 7400; ++tick) {
        const double turns = std::fmod(turnsPerTick * tick, 1.0);
        const double gain = std::min(6 * std::min(turns, 1 - turns), 1.5);
        worst = std::max(worst, std::fabs(double(swing.left[std::size_t(tick) * 256]) - gain));
    }
    EXPECT_LT(worst, 1e-5);

    // Detune: with a whole number of cycles in a grain it shows the wandering delay as a phase.
    const double hz = 20 * rate / 992, perSample = std::exp2(0.25 / 24) - 1;
    const StereoSignal y = Rig(61, {{0, 1}, {2, 0.5f}, {3, 0.5f}})(sine(hz, 20));
    worst = 0;
    for (std::size_t i = y.left.size() - 2000; i < y.left.size(); ++i) {
        const double delayed = double(i) - perSample * double(i + 1);
        const double expected = std::sin(2 * pi * hz / rate * delayed);
        worst = std::max(worst, std::fabs(double(y.left[i]) - expected));
    }
    EXPECT_LT(worst, 5e-3);
}

TEST(Modulation, PitchShiftRoutesItsEchoes) {
    // No shift; an impulse on the left, heard through 0.25 s and half a grain of 5 ms.
    const float quarter = 0.499247f;
    // Routing, sync, time; echo in seconds; left and right at twice the time, of the feedback.
    const Rows<float, float, float, double, double, double> cases = {
        {0.0f, 0.0f, quarter, 0.25 + 0.0025, 1, 1}, {0.3f, 0.0f, quarter, 0.25 + 0.0025, 1, 0},
        {0.5f, 0.0f, quarter, 0.005, 0, 0},         {0.7f, 0.0f, quarter, 0.25 + 0.0025, 0, 1},
        {1.0f, 0.0f, quarter, 0.25 + 0.0025, 0, 0}, {0.3f, 1.0f, 0.5f, 0.5 + 0.0025, 1, 0},
        {0.3f, 1.0f, 0.73f, 0.75 + 0.0025, 1, 0},  // 3/4, halved to fit the line
        {0.3f, 1.0f, 0.8f, 0.5 + 0.0025, 1, 0},    // 4/4, and a whole second is too much
    };
    for (const auto& [routing, sync, time, echo, secondLeft, secondRight] : cases) {
        SCOPED_TRACE(routing);
        Rig rig(60, {{0, 1}, {1, sync}, {5, time}, {6, 0.5f}, {7, routing}});
        Signal unit = zeros(2);
        unit[100] = 1;
        const StereoSignal y = rig({unit, zeros(2)});
        const auto around = [](const Signal& x, double seconds) {
            double sum = 0;
            for (std::size_t i = samples(seconds) + 100 - 6; i < samples(seconds) + 106; ++i)
                sum += double(x[i]);
            return sum;
        };
        EXPECT_NEAR(around(y.left, echo), 1, 1e-3);
        EXPECT_NEAR(around(y.left, 2 * echo), -0.4995 * secondLeft, 1e-3);
        EXPECT_NEAR(around(y.right, 2 * echo), -0.4995 * secondRight, 1e-3);
        EXPECT_EQ(measure::peak({y.right.begin(), y.right.begin() + 300}), 0);
    }
}

// What is held and shown --------------------------------------------------------------------------

TEST(Modulation, ReverbInsideIsTheHall) {
    Rig both(19, {{0, 0.8f}, {4, 1}, {5, 0.3f}, {6, 0.4f}, {7, 0.6f}, {8, 0.2f}, {9, 0.7f}});
    Rig hall(1, {{0, 0.8f}, {2, 0.3f}, {3, 0.4f}, {4, 0.6f}, {5, 0.2f}, {6, 0.7f}});
    const Signal x = sine(300, 1);
    const StereoSignal a = both(x), b = hall(x);
    EXPECT_EQ(a.left, b.left);
    EXPECT_EQ(a.right, b.right);
}

TEST(Modulation, Displays) {
    const struct {
        int type, index;
        float v;
        const char *label, *text;
    } cases[] = {{19, 5, 1, "Rev Time", "10.00 s"},     {19, 6, 0.5f, "Pre Del", "100 ms"},
                 {19, 9, 0.25f, "Hi Cut", "75 %"},      {20, 1, 0, "", "0 %"},
                 {20, 2, 0, "Rate", "20.00 s"},         {21, 6, 0.3f, "Feedback", "30 %"},
                 {31, 6, 0.5f, "Step Rate", "1/8"},     {40, 5, 0.25f, "Stereo", "90\xB0"},
                 {41, 6, 0.25f, "Env Mod", "-50 %"},    {50, 3, 0.75f, "Phase", "270 deg"},
                 {50, 4, 0, "Shape", "-100 %"},         {54, 0, 0.9f, "Mode", "C3"},
                 {54, 2, 0.5f, "Rate", "6.87 Hz"},      {55, 2, 0.4f, "Rate", "Slow"},
                 {55, 4, 1, "Lo/Hi", "2600 Hz"},        {55, 5, 0.5f, "Width", "90 deg"},
                 {55, 9, 0.5f, "Lo Acc", "50 %"},       {56, 2, 0.5f, "Rate", "Stop"},
                 {56, 6, 0.25f, "Freq Mod", "0.50 ms"}, {56, 7, 1, "Fast Spd", "+50 %"},
                 {56, 9, 0, "Crossover", "400 Hz"},     {60, 2, 0.25f, "Left", "-6.00"},
                 {60, 4, 0, "Latency", "   5 ms"},      {60, 5, 0.75f, "Delay", "3/4"},
                 {60, 7, 0.5f, "Routing", "No Delay"},  {61, 2, 0.5f, "Detune", "12.5"}};
    for (const auto& c : cases) {
        EXPECT_EQ(effectType(c.type)->rows[static_cast<std::size_t>(c.index)].label, c.label);
        EXPECT_EQ(shownEffectValue(c.type, c.index, {{1, 1}, {c.index, c.v}}), c.text) << c.label;
    }
}

}  // namespace
}  // namespace stratovane
