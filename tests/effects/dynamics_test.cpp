// What limiter, compressors, gate, distortions and the left-to-right modulator do to sound.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "effects/effect_run.h"
#include "measure/measure.h"

namespace stratovane {
namespace {

using measure::Signal;
using Settings = EffectRun::Values;

constexpr float rate = 48000;
constexpr int limiter = 90, compressor = 91, multiband = 92, punch = 93, gate = 95,
              distortion = 100, overdrive = 101, bitReduction = 102, ampSimulator = 103,
              tubeDrive = 104, waveshaper = 105, modulateLeftRight = 110;

struct Rig : EffectRun {
    Rig(int number, const Settings& settings) : EffectRun{number, settings, rate} {}
    StereoSignal stereo(const Signal& left, const Signal& right) { return (*this)({left, right}); }
    Signal mono(const Signal& x) { return (*this)(x).left; }
};

Signal sine(double hz, double amplitude, std::size_t size) {
    return stratovane::sine(size, hz / double(rate), amplitude);
}
Signal steady(float level, double seconds) {
    return Signal(static_cast<std::size_t>(seconds * double(rate)), level);
}
Signal after(Signal first, const Signal& then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
}
Signal tailOf(const Signal& x, std::size_t size) { return Signal(x.end() - long(size), x.end()); }
double level(const Signal& x, double hz) { return measure::levelAt(tailOf(x, 24000), rate, hz); }

// Static curves: what comes out of a level that stands, in dB over it.
TEST(Dynamics, GainCurves) {
    const struct {
        const char* what;
        int number;
        Settings settings;
        float in;
        double gainDb;
    } rows[] = {
        // Input gain 2, output -6.06 dB (the output's scale ends at 1.6 nepers).
        {"limiter below", limiter, {{2, 0}}, 0.4f, -0.04},
        {"limiter, twice full scale", limiter, {{2, 0}}, 1, -6.05},
        {"limiter, driven by 15 dB", limiter, {{2, 0.5f}}, 1, -6.05},
        {"limiter, output up 10 dB", limiter, {{0, 0.75f}, {2, 0}}, 1, 3.95},
        // Threshold 0.3; at twice of it 1 / (2 rho + 1 - rho).
        {"compressor below", compressor, {}, 0.29f, 0},
        {"compressor, output up", compressor, {{0, 1}}, 0.29f, 19.98},
        {"compressor, twice", compressor, {{3, 0.5f}}, 2 * 0.3011942f, -1.21},
        {"compressor, tenfold", compressor, {{3, 1}}, 3.011942f, -21.44},
        // Full scale stays where it was, what is below the threshold comes up.
        {"punch, full scale", punch, {{2, 0.5f}, {3, 1}}, 1, 0},
        {"punch, quiet", punch, {{2, 0.5f}, {3, 1}}, 0.005f, 28.5},
        {"punch, no drive", punch, {{2, 0}, {3, 1}}, 0.1f, 0},
        {"punch, half ratio", punch, {{2, 1}, {3, 0.5f}}, 1e-4f, 28.5},
        {"gate open", gate, {{2, 0.5f}}, 0.2f, 0},
        {"gate closed", gate, {{2, 0.5f}, {3, 1}}, 0.09f, -200},
        {"gate half closed", gate, {{2, 0.5f}, {3, 0.5f}}, 0.06f, -6.02},
    };
    for (const auto& row : rows) {
        Rig rig{row.number, row.settings};
        const double out = double(rig.mono(steady(row.in, 6)).back());
        EXPECT_NEAR(measure::decibels(out / double(row.in)), row.gainDb, 0.02) << row.what;
    }
}

// Seconds until the gain has gone 63 % of its way after a step of the level.
TEST(Dynamics, AttackAndReleaseTakeTheirTime) {
    const struct {
        const char* what;
        int number;
        Settings settings;
        float from, to;
        double seconds;
    } rows[] = {
        // The gain is output / envelope: it turns early while the envelope rises, late while it
        // falls. 1 / 100 and 1 / 7.25 s are the envelope's own.
        {"limiter attack", limiter, {{2, 0}, {3, 1}}, 0.5f, 2, 0.00357},
        {"limiter release", limiter, {{2, 0}, {4, 0.5f}}, 2, 0.6f, 0.2629},
        {"gate attack", gate, {{4, 0.5f}}, 0, 1, 0.0111},
        // The peak needs 0.66 s to 0.7 thresholds, then come hold and release.
        {"gate release", gate, {{3, 1}, {5, 0.5f}}, 1, 0.001f, 0.764},
        {"punch attack 10 ms", punch, {{2, 1}, {3, 1}, {4, 1.0f / 3}}, 1e-4f, 1, 0.0041},
        {"punch release 100 ms", punch, {{2, 1}, {3, 1}, {5, 0.5f}}, 1, 1e-4f, 0.0625},
    };
    for (const auto& row : rows) {
        Rig rig{row.number, row.settings};
        const auto start = static_cast<std::size_t>(rate) * 2;
        Signal gains = rig.mono(after(steady(row.from, 2), steady(row.to, 4)));
        for (std::size_t i = start; i < gains.size(); ++i) gains[i] /= row.to;
        const double first = double(gains[start]), last = double(gains.back());
        double seconds = 0;
        for (std::size_t i = start; i < gains.size(); ++i)
            if (std::fabs(double(gains[i]) - first) > 0.632 * std::fabs(last - first)) {
                seconds = double(i - start) / double(rate);
                break;
            }
        EXPECT_NEAR(seconds, row.seconds, 0.1 * row.seconds) << row.what;
    }
}

// With single precision a long release never began.
TEST(Dynamics, CompressorLetsGoAtEveryRelease) {
    for (const float release : {0.0f, 0.5f, 0.8f, 1.0f}) {
        Rig rig{compressor, {{3, 1}, {5, release}}};
        rig.mono(steady(1, 0.5));
        const Signal quiet = rig.mono(steady(0.01f, 4));
        const double seconds = double(measure::firstAbove(quiet, 0.00999)) / double(rate);
        // The decay per second is e^(3.6 - 2.6 v) once it has glided there, which takes as long as
        // one time constant; ln(1 / 0.301) of them lead to the threshold.
        const double constant = std::exp(2.6 * double(release) - 3.6);
        EXPECT_GT(seconds, 1.2 * constant) << release;
        EXPECT_LT(seconds, 2.4 * constant) << release;
    }
}

TEST(Dynamics, GateHoldsAndKeepsItsState) {
    constexpr float threshold = 0.1005f;  // at 0.5
    const Settings settings{{2, 0.5f}, {3, 1}, {5, 0}};
    const auto gainAfter = [&](float before, float now, double seconds) {
        Rig rig{gate, settings};
        rig.mono(steady(before, 0.5));
        return double(rig.mono(steady(now, seconds)).back() / now);
    };
    EXPECT_NEAR(gainAfter(0.5f, 0.8f * threshold, 3), 1, 1e-3);  // hysteresis, opened before
    EXPECT_LT(gainAfter(0.001f, 0.8f * threshold, 3), 1e-6);     // and never opened
    // 1.1 thresholds take 2 ms to fall below 0.7 of one at a fifth of the release's pace.
    EXPECT_NEAR(gainAfter(1.1f * threshold, 1e-4f, 0.045), 1, 1e-3);
    EXPECT_LT(gainAfter(1.1f * threshold, 1e-4f, 0.062), 1e-3);
}

TEST(Dynamics, MultibandTreatsBandsApart) {
    const auto gainDb = [](const Settings& settings, double hz, double amplitude) {
        Rig rig{multiband, settings};
        return measure::decibels(level(rig.mono(sine(hz, amplitude, 48000)), hz) / amplitude);
    };
    for (const double hz : {30.0, 500.0, 4000.0, 15000.0})
        EXPECT_NEAR(gainDb({{2, 0}, {3, 0.5f}, {4, 1}}, hz, 0.1), 0, 0.01) << hz;
    // Crossovers near 40 Hz and 4 kHz, 6 dB an octave.
    EXPECT_NEAR(gainDb({{2, 0}, {3, 1}, {4, 0}}, 100, 0.1), 6.02 - 33.2, 0.2);
    EXPECT_NEAR(gainDb({{2, 0}, {3, 0}, {4, 0}}, 400, 0.1), 6.02 - 20.1, 0.5);
    EXPECT_LT(gainDb({{2, 0}, {3, 0.5f}, {4, 0}}, 400, 0.1), -12);
    // Loud lows take the lows back and leave the highs.
    const Settings driven{{2, 0.5f}, {3, 0.5f}, {4, 0}, {6, 0.5f}};
    Rig rig{multiband, driven};
    const Signal high = sine(9000, 0.01, 48000), low = sine(20, 0.8, 48000);
    Signal both = high;
    for (std::size_t i = 0; i < both.size(); ++i) both[i] += low[i];
    const double alone = level(rig.mono(high), 9000), with = level(rig.mono(both), 9000);
    EXPECT_NEAR(measure::decibels(with / alone), 0, 0.5);
    EXPECT_LT(gainDb(driven, 20, 0.8), gainDb(driven, 20, 0.008) - 8);
}

// Harmonics of a 1 kHz sine, wet alone: level in dB; -200 stands for none (below -80 of the first).
TEST(Distortions, Harmonics) {
    const Settings cube{{0, 1}, {2, 0}, {3, 0.25f}, {4, 1}, {5, 0.5f}};
    const Settings line{{0, 1}, {2, 0}, {3, 0.5f}, {4, 1}, {5, 0.5f}};
    const Settings square{{0, 1}, {2, 1}, {3, 0.25f}, {4, 1}, {5, 0.5f}};
    const struct {
        const char* what;
        int number;
        Settings settings;
        double amplitude;
        std::vector<double> harmonicsDb;
    } rows[] = {
        // The cube of a sine: 3/4 and 1/4, times out 0.5.
        {"cube", distortion, cube, 1, {-8.52, -200, -18.06, -200}},
        // A line, times out.
        {"line", distortion, line, 0.5, {-12.04, -200, -200}},
        // Driven by 60 dB: a square, here of 48 samples, two of which are its zeros.
        {"square", distortion, square, 1, {-3.93, -200, -13.58, -200, -18.22}},
        // u^2 - 1/2 without bias: the octave at half the square, below 1/2 of it no bend.
        {"octave", overdrive, {{0, 1}, {2, 0}, {3, 0}, {4, 1}}, 0.7, {-200, -12.22, -200, -200}},
        // With bias the fundamental at 2 * bias * amplitude.
        {"biased", overdrive, {{0, 1}, {2, 0}, {3, 0.4f}, {4, 1}}, 0.2, {-15.92, -33.98, -200}},
        {"dry", overdrive, {{0, 0.5f}, {2, 0}, {3, 0.4f}, {4, 0}}, 0.2, {-20, -200}},
    };
    for (const auto& row : rows) {
        Rig rig{row.number, row.settings};
        const Signal out = rig.mono(sine(1000, row.amplitude, 96000));
        const double first = level(out, 1000 * (row.harmonicsDb[0] < -100 ? 2 : 1));
        for (std::size_t h = 0; h < row.harmonicsDb.size(); ++h) {
            const double found = level(out, 1000.0 * double(h + 1));
            if (row.harmonicsDb[h] < -100)
                EXPECT_LT(found, 1e-4 * first) << row.what << ", harmonic " << h + 1;
            else
                EXPECT_NEAR(measure::decibels(found), row.harmonicsDb[h], 0.1)
                    << row.what << ", harmonic " << h + 1;
        }
        EXPECT_NEAR(measure::mean(tailOf(out, 48000)), 0, 1e-4) << row.what;
    }
}

TEST(Distortions, ToneOfTheDistortionTurnsFromLowsToHighs) {
    const auto gainDb = [](float tone, double hz) {
        Rig rig{distortion, {{0, 1}, {2, 0}, {3, 0.5f}, {4, 1}, {5, tone}}};
        return measure::decibels(level(rig.mono(sine(hz, 0.1, 48000)), hz) / 0.05);
    };
    EXPECT_NEAR(gainDb(0.5f, 5000), 0, 0.01);
    EXPECT_NEAR(gainDb(0, 80), -3, 0.3);  // lowpass of 500 / 2 pi Hz
    EXPECT_LT(gainDb(0, 5000), -35);
    EXPECT_NEAR(gainDb(0.52f, 8), -3, 0.3);  // highpass of 50 / 2 pi Hz
    EXPECT_NEAR(gainDb(0.52f, 1000), 0, 0.1);
    EXPECT_LT(gainDb(1, 80), -20);
}

TEST(Distortions, BitReductionQuantisesHoldsAndSlews) {
    const struct {
        float depth, in, out;
    } rows[] = {
        // Between 8 and 16 a float's lowest bit is 2^-20; 16 of them cleared leave 1/16.
        {1, 0.3f, 0.25f},      {1, -0.3f, -0.3125f},
        {1, 0.0f, 0.0f},       {0.5f, 0.3f, 0.298828125f},  // 11 cleared: 1/512
        {0.1f, 0.3f, 0.3001f},                              // none
    };
    for (const auto& row : rows) {
        Rig rig{bitReduction, {{0, 1}, {2, 1}, {3, row.depth}, {4, 1}}};
        EXPECT_NEAR(rig.mono(steady(row.in, 0.1)).back(), row.out, 1e-6) << row.depth;
    }
    // Each value is held for H samples, the level moving by 1.5 / H of the way in each of them: at
    // Rate 0, H is 49 and a full step overshoots by half.
    Rig rig{bitReduction, {{0, 1}, {2, 0}, {3, 0}, {4, 1}}};
    const Signal step = rig.mono(steady(0.5f, 0.1));
    EXPECT_NEAR(step[0], 0.5 * 1.5 / 49, 1e-4);
    EXPECT_NEAR(step[48], 0.75, 1e-3);
    EXPECT_NEAR(step[97], 0.375, 1e-3);
    EXPECT_NEAR(step.back(), 0.5, 1e-3);
    // Slew of 200 a second.
    Rig slow{bitReduction, {{0, 1}, {2, 1}, {3, 0}, {4, 0}}};
    EXPECT_NEAR(slow.mono(steady(0.5f, 0.1))[119], 0.5, 0.01);
    // Companding keeps steps relative: the same count for any level of a power of two.
    const Settings compand{{0, 1}, {2, 1}, {3, 0.8f}, {4, 1}, {5, 1}};
    Rig a{bitReduction, compand}, b{bitReduction, compand};
    const Signal loud = a.mono(sine(400, 0.9, 4800)), quiet = b.mono(sine(400, 0.9 / 1024, 4800));
    for (std::size_t i = 0; i < loud.size(); ++i) EXPECT_NEAR(loud[i], 1024 * quiet[i], 2e-3f) << i;
}

TEST(Distortions, WaveshaperFoldsAsMuchAtEveryLevel) {
    const auto harmonic = [](int number, double amplitude, float drive) {
        Rig rig{waveshaper, {{0, 1}, {2, drive}, {3, 0.2f}, {4, 1}}};
        return level(rig.mono(sine(200, amplitude, 48000)), 200.0 * number) / amplitude;
    };
    for (const float drive : {0.3f, 0.4f})
        for (const int h : {1, 3, 5})
            EXPECT_NEAR(harmonic(h, 200, drive) / harmonic(h, 20, drive), 1, 0.02) << drive << h;
    EXPECT_GT(harmonic(9, 2, 0.6f), 10 * harmonic(9, 2, 0.1f));
}

TEST(Distortions, TubeDriveClipsAndGlides) {
    // Hard: gain 8 / 8 around the bias; a quarter is the rail. The lows of what it adds are cut.
    const Settings open{{0, 1}, {4, 0}, {5, 1}, {6, 0}};
    Rig rig{tubeDrive, open};
    const Signal straight = rig.mono(sine(1000, 0.2, 48000));
    EXPECT_NEAR(level(straight, 1000), 0.2, 0.01);
    EXPECT_LT(level(straight, 3000), 1e-4);
    const auto thirdDb = [&](float clip) {
        Rig unit{tubeDrive, {{0, 1}, {3, clip}, {4, 0}, {5, 1}, {6, 0}}};
        const Signal out = unit.mono(sine(1000, 0.2, 48000));
        return measure::decibels(level(out, 3000) / level(out, 1000));
    };
    EXPECT_LT(thirdDb(0.5f), -80);
    EXPECT_NEAR(thirdDb(0.51f), -23.9, 0.3);  // 1.6 - 3/4 and 1/4 of 1.6^3 / 12
    // Cutting the lows takes them from what was added, not from the sound.
    Rig cut{tubeDrive, {{0, 1}, {4, 0}, {5, 1}, {6, 1}}};
    EXPECT_NEAR(level(cut.mono(sine(100, 0.2, 48000)), 100), 0.2, 0.01);
    // A new drive arrives after some blocks, and at once in silence.
    const Signal tone = sine(1000, 0.001, 24000);
    Rig moving{tubeDrive, open};
    moving.mono(tone);
    moving.unit().setParameter(2, 1);
    const Signal arriving = moving.mono(tone);
    EXPECT_LT(measure::peak(Signal(arriving.begin(), arriving.begin() + 96)), 0.0025);
    EXPECT_NEAR(level(arriving, 1000), 0.0135, 0.0005);
}

TEST(Distortions, MonoHearsAndStereoKeepsTheLeftAlone) {
    const Signal none(48000, 0.0f), loud = sine(500, 0.3, 48000);
    for (const auto& [number, index] : {std::pair{tubeDrive, 7}, {ampSimulator, 6}})
        for (const float stereo : {0.0f, 1.0f}) {
            const auto [left, right] = Rig{number, {{0, 1}, {index, stereo}}}.stereo(loud, none);
            EXPECT_GT(level(left, 500), 0.01) << number;
            EXPECT_NEAR(level(right, 500), stereo > 0 ? 0 : level(left, 500), 1e-6) << number;
        }
}

TEST(AmpSimulator, ModelsHaveTheirCabinets) {
    // Response of a small signal (linear, with gain 1 + drive 1), of both channels summed.
    const auto gainDb = [](int model, double hz, float treble) {
        const float v = (static_cast<float>(model) + 0.5f) / 7.9f;
        Rig rig{ampSimulator, {{0, 1}, {2, v}, {3, 0}, {5, treble}}};
        return measure::decibels(level(rig.mono(sine(hz, 0.01, 48000)), hz) / 0.04);
    };
    const double expected[8][4] = {
        {-9.3, -18.0, -12.1, -30.7}, {-11.6, -21.1, -24.2, -16.6}, {-7.1, -16.4, -20.3, -17.7},
        {-9.8, -27.7, -11.2, -14.2}, {-1.2, -13.5, -19.2, -23.2},  {-26.1, -10.2, -19.9, -16.3},
        {-7.4, -10.4, -18.6, -25.5}, {-68.4, -7.5, -27.7, -23.4},
    };
    const std::pair<double, float> points[4] = {{100, 0.5f}, {1000, 0.5f}, {4000, 0.5f}, {8000, 1}};
    for (int model = 0; model < 8; ++model)
        for (std::size_t p = 0; p < 4; ++p)
            EXPECT_NEAR(gainDb(model, points[p].first, points[p].second), expected[model][p], 0.1)
                << "model " << model << " at " << points[p].first;
}

TEST(AmpSimulator, KeyWakesAStringAtHalfItsPitch) {
    // The loop inverts, so it rings at odd multiples of half the key's frequency.
    constexpr float key = 3.1f;
    const double hz = 16.351599 * std::exp(double(key)) / 2;
    Rig rig{ampSimulator, {{0, 1}, {2, 0.05f}, {3, 0.2f}, {4, 0}}};
    rig.keys.pitch = key;
    Signal pluck = steady(0, 1);
    pluck[0] = 1;
    const auto ringing = [&](Rig& unit) { return tailOf(unit.mono(pluck), 36000); };
    Rig fed{ampSimulator, {{0, 1}, {2, 0.05f}, {3, 0.2f}, {4, 1}}};
    fed.keys.pitch = key;
    const Signal out = ringing(fed);
    EXPECT_GT(measure::peak(out), 1e-5);
    const auto spectrum = measure::spectrum(out, rate);
    const double multiple =
        measure::frequencyNear(out, rate, spectrum.hz(spectrum.strongestBin())) / hz;
    EXPECT_EQ(std::lround(multiple) % 2, 1) << multiple;
    EXPECT_NEAR(multiple / std::round(multiple), 1, 0.01);
    EXPECT_LT(measure::peak(ringing(rig)), 1e-6);  // nothing is fed
    fed.keys.pitch = -10;
    EXPECT_LT(measure::peak(ringing(fed)), 1e-6);  // nor without a key

    // At rest, a new key makes it run again, the key's end does not.
    const auto runs = [&] {
        fed(silence(6000), 6000, true);
        return !fed.flag();
    };
    while (runs()) {
    }
    fed.keys.pitch = key;
    EXPECT_TRUE(runs());
    while (runs()) {
    }
    fed.keys.pitch = -10;
    EXPECT_FALSE(runs());
}

struct Modulator : Rig {
    Modulator(float mode, float smooth, float through = 0.5f, float mix = 1)
        : Rig{modulateLeftRight, {{0, mix}, {2, mode}, {3, smooth}, {4, 0}, {5, through}}} {}
};

TEST(ModulateLeftRight, RingAndEnvelopes) {
    const Signal left = sine(300, 0.5, 96000), right = sine(2000, 0.4, 96000);
    const Signal ring = Modulator{0, 0}.stereo(left, right).left;
    for (const double hz : {1700.0, 2300.0}) EXPECT_NEAR(level(ring, hz), 0.1, 0.002);
    EXPECT_LT(level(ring, 2000), 1e-5);
    // Rising ten times faster than it falls, the follower of a sine stands near its peaks.
    const Signal follow = Modulator{0.4f, 0.5f}.stereo(left, right).left;
    EXPECT_NEAR(level(follow, 2000) / 0.4, 0.42, 0.03);
    const Signal silence(96000, 0.0f);
    EXPECT_NEAR(level(Modulator{0.7f, 0.5f}.stereo(silence, right).left, 2000), 1.6, 0.01);
    const Signal ducked = Modulator{0.7f, 0}.stereo(steady(2, 2), right).left;
    EXPECT_LT(level(ducked, 2000), 1e-3);
}

TEST(ModulateLeftRight, DrySignalIsChosen) {
    const Signal left = sine(300, 0.5, 48000), right = sine(2000, 0.4, 48000);
    // Through, share of the left input in each output.
    const std::tuple<float, double, double> rows[] = {
        {0.1f, 0.75, 0.75}, {0.5f, 0.75, 0}, {0.9f, 0, 0}};
    for (const auto& [through, ofLeft, ofRight] : rows) {
        const auto out = Modulator{0, 0.5f, through, 0.5f}.stereo(left, right);
        EXPECT_NEAR(level(out.left, 300) / 0.5, ofLeft, 1e-3) << through;
        EXPECT_NEAR(level(out.right, 300) / 0.5, ofRight, 1e-3) << through;
    }
}

TEST(ModulateLeftRight, VocoderSpeaksInEightOctaves) {
    Random random{3};
    Signal carrier(96000);
    for (float& x : carrier) x = 0.3f * random.bipolar();
    // A tone opens the band it lies in: where the carrier's noise comes through follows it.
    for (const double hz : {200.0, 800.0, 3200.0}) {
        const Signal out = Modulator{0.9f, 0.3f}.stereo(sine(hz, 0.5, 96000), carrier).left;
        const auto spectrum = measure::spectrum(out, rate);
        double best = 0, bestHz = 0;
        for (double from = 50; from < 12800; from *= 2) {
            double energy = 0;
            for (std::size_t b = 0; b < spectrum.amplitudes.size(); ++b)
                if (spectrum.hz(b) >= from && spectrum.hz(b) < 2 * from)
                    energy += spectrum.amplitudes[b] * spectrum.amplitudes[b];
            if (energy > best) best = energy, bestHz = from * std::sqrt(2);
        }
        EXPECT_LT(std::fabs(std::log2(bestHz / hz)), 1.1) << hz;
    }
    // Opened by noise the bands grow upward, and none cancels its neighbour between them.
    double below = -200;
    for (double hz = 60; hz < 2500; hz *= 1.26) {
        const Signal out = Modulator{0.9f, 1}.stereo(carrier, sine(hz, 0.5, 96000)).left;
        const double here = measure::decibels(level(out, hz));
        EXPECT_GT(here, below - 6) << hz;
        below = here;
    }
    Modulator rig{0.9f, 0.3f};
    const Signal silence(96000, 0.0f);
    EXPECT_LT(measure::peak(rig.stereo(silence, carrier).left), 1e-6);
}

TEST(Dynamics, Displays) {
    expectShown({
        {limiter, {{2, 0.5f, "+15.0 dB"}}},
        {compressor, {{2, 0.5f, "-10.0 dB"}, {3, 0.5f, "5.8 : 1"}}},
        {multiband, {{3, 0.25f, "75 : 25"}}},
        {punch, {{3, 1, "20.0 : 1"}, {4, 0, "0.01 ms"}, {5, 0.5f, "99.01 ms"}}},
        {gate, {{2, 1, "+0.0 dB"}}},
        {distortion, {{3, 0, "-100 %"}}},
        {bitReduction, {{2, 1, "66150 Hz"}, {2, 0, "1470 Hz"}, {3, 0.1f, "15 bit"}}},
        {bitReduction, {{3, 1, "6 bit"}, {4, 0, "5.000 ms"}, {5, 0.51f, "Compand"}}},
        {ampSimulator, {{2, 0.5f, "4x12"}, {2, 1, "Radio"}, {5, 0.25f, "Inv 50 %"}}},
        {ampSimulator, {{5, 0.75f, "50 %"}, {6, 0.5f, "Mono"}}},
        {tubeDrive, {{3, 0.5f, "Hard"}, {7, 1, "Stereo"}}},
        {waveshaper, {{3, 0.5f, "1.00 Hz"}}},
        {modulateLeftRight, {{2, 1, "Vocoder"}, {4, 0, "-20.0 dB"}, {5, 0.5f, "Stereo"}}},
    });
}

}  // namespace
}  // namespace stratovane
