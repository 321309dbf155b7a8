#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

#include "base/units.h"
#include "measure/measure.h"
#include "voice/analog/analog_voice.h"
#include "voice/analog/impulse_table.h"

namespace stratovane {
namespace {

using measure::Signal;

double noteHz(double note) { return 440 * std::exp2((note - 69) / 12); }

/// A voice with the filter off (gain 2), oscillators at their usual small remainders.
struct Player {
    ElementControls controls;
    double rate = 48000;
    float velocity = 0;
    float shape1 = 0.5f, shape2 = 0.5f;
    FilterInputs filter;
    Random random{7};
    AnalogVoice voice;

    explicit Player(double sampleRate, int wave, double highpass = 0) : rate{sampleRate} {
        AnalogControls& a = controls.analog;
        a.wave = wave;
        a.leak = static_cast<float>(1 - std::exp(7 * highpass + 3) / rate);
        a.mix2 = a.mix3 = a.sub = 1e-8f;
        a.minimumPulseWidth = 0.05f;
    }
    void start() { voice.start(controls, velocity, static_cast<float>(rate), random); }
    Signal play(double hz, std::size_t samples) {
        Signal x(samples);
        for (std::size_t i = 0; i + tickFrames <= samples; i += tickFrames) {
            voice.tick(static_cast<float>(2 * hz / rate), shape1, shape2, filter);
            voice.render(&x[i]);
        }
        return x;
    }
    /// After the start has died away.
    Signal steady(double hz, std::size_t samples = 1 << 15) {
        start();
        play(hz, 1 << 15);
        return play(hz, samples);
    }
};

TEST(ImpulseTable, HasItsTellingValuesAndUnitSums) {
    const ImpulseTable& table = impulseTable();
    const float at0[] = {0.0f,     0.0082f,   0.23829f, 0.79531f,
                         0.10843f, -0.31164f, 0.29289f, -0.23055f};
    const float at32[] = {0.0003f,   0.06237f, 0.54874f, 0.65792f,
                          -0.37648f, 0.12443f, 0.00732f, -0.06587f};
    for (int t = 0; t < 8; ++t) {
        EXPECT_NEAR(table.impulse[0][t], at0[t], 0.0018f);
        EXPECT_NEAR(table.impulse[32][t], at32[t], 0.0018f);
    }
    for (int j = 0; j < ImpulseTable::phases; ++j) {
        double sum = 0, next = 0;
        for (int t = 0; t < ImpulseTable::taps; ++t) {
            sum += double(table.impulse[j][t]);
            next += double(table.impulse[j][t]) + double(table.difference[j][t]);
            if (t >= 28) {
                EXPECT_LT(std::fabs(table.impulse[j][t]), 2e-4f);
            }
            if (j + 1 < ImpulseTable::phases) {
                EXPECT_NEAR(table.impulse[j][t] + table.difference[j][t], table.impulse[j + 1][t],
                            1e-7f);
            }
        }
        EXPECT_NEAR(sum, 1, 1e-6);
        EXPECT_NEAR(next, 1, 1e-6);
    }
}

TEST(AnalogVoice, HoldsItsPitch) {
    for (double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        for (double note : {24.0, 36.0, 60.0, 84.0, 108.0, 120.0}) {
            const double hz = noteHz(note);
            const auto samples =
                std::max(std::size_t{1} << 15, static_cast<std::size_t>(rate / hz) * 32);
            Player saw{rate, 3};
            EXPECT_LT(std::fabs(measure::cents(
                          measure::frequencyNear(saw.steady(hz, samples), rate, hz), hz)),
                      0.05)
                << note << " at " << rate;
            Player third{rate, 6};  // oscillator 1 reads an empty table
            third.controls.analog.mix3 = 1;
            third.controls.analog.wave3 = 1;
            EXPECT_LT(std::fabs(measure::cents(
                          measure::frequencyNear(third.steady(hz, samples), rate, hz), hz)),
                      0.05)
                << note << " at " << rate;
        }
    }
    Player fifth{48000, 4};
    fifth.controls.analog.ratio1 = 1.5f;
    fifth.shape1 = 1;  // half a semitone up
    const double expected = 330 * std::exp2(0.5 / 12);
    EXPECT_NEAR(
        measure::cents(measure::frequencyNear(fifth.steady(220), 48000, expected), expected), 0,
        0.05);
}

TEST(AnalogVoice, DoesNotAlias) {
    struct Row {
        const char* name;
        int wave;
        float shape;
    };
    for (const Row& row : {Row{"saw", 3, 0.5f}, Row{"square", 4, 0.5f}, Row{"pulse", 2, 0.2f},
                           Row{"saw sync", 0, 0.55f}, Row{"square sync", 1, 0.55f}}) {
        for (double rate : {44100.0, 48000.0}) {
            for (int note = 60; note <= 115; note += 5) {
                Player p{rate, row.wave, 0.1};
                p.shape1 = row.shape;
                const double hz = noteHz(note);
                const auto s = measure::spectrum(p.steady(hz), rate);
                EXPECT_LT(measure::inharmonicDb(s, hz, 15000), -70)
                    << row.name << " " << note << " at " << rate << "\n"
                    << s.peaks();
            }
        }
    }
}

TEST(AnalogVoice, WavesHaveTheirLevelsAndNoConstant) {
    const double pi = std::numbers::pi;
    struct Row {
        int wave;
        float shape;
        double first, second;
    };  // amplitudes of two partials
    for (const Row& row :
         {Row{3, 0.5f, 2 / pi, 1 / pi}, Row{0, 0, 2 / pi, 1 / pi}, Row{4, 0.5f, 2 / pi, 0},
          Row{1, 0, 2 / pi, 0}, Row{2, 0.5f, 2 / pi, 0},
          Row{2, 0.25f, 2 / pi * std::sqrt(0.5), 1 / pi}, Row{5, 0, 4 / pi * 0, 0}}) {
        Player p{48000, row.wave};
        p.shape1 = row.shape;
        const Signal x = p.steady(200);
        EXPECT_NEAR(measure::mean(x), 0, 0.01) << row.wave;
        if (row.wave == 5) continue;  // its saws stand where they will
        EXPECT_NEAR(measure::levelAt(x, 48000, 200), row.first, 0.02) << row.wave;
        EXPECT_NEAR(measure::levelAt(x, 48000, 400), row.second, 0.02) << row.wave;
    }
    // Inverted phase, halved mix.
    Player normal{48000, 3}, inverted{48000, 3};
    inverted.controls.analog.mix1 = -0.5f;
    const Signal a = normal.steady(200), b = inverted.steady(200);
    for (std::size_t i = 0; i < a.size(); i += 97) EXPECT_NEAR(b[i], -0.5f * a[i], 1e-5f);
}

TEST(AnalogVoice, HighpassThinsTheBass) {
    Player low{48000, 4}, high{48000, 4, 0.6};
    const double cornerHz = std::exp(7 * 0.6 + 3) / (2 * std::numbers::pi);
    EXPECT_NEAR(measure::levelAt(high.steady(cornerHz), 48000, cornerHz) /
                    measure::levelAt(low.steady(cornerHz), 48000, cornerHz),
                std::sqrt(0.5), 0.02);
}

TEST(AnalogVoice, SyncFollowsItsShapeUpToTheLimit) {
    for (int wave : {0, 1}) {
        Player p{48000, wave};
        p.shape1 = 1;  // sixteen times
        const Signal x = p.steady(100);
        EXPECT_LT(measure::levelAt(x, 48000, 100), 0.01);
        EXPECT_NEAR(measure::levelAt(x, 48000, 1600), 2 / std::numbers::pi, 0.03);
        const Signal fast = p.steady(6000);  // would be 96 kHz: limited to half the rate
        EXPECT_LT(measure::peak(fast), 2);
    }
    Player negative{48000, 0}, zero{48000, 0};
    negative.shape1 = -1;
    zero.shape1 = 0;
    EXPECT_EQ(negative.steady(300, 640), zero.steady(300, 640));
}

TEST(AnalogVoice, PulseWidthStaysWithinItsLimits) {
    struct Row {
        float shape, width;
    };
    for (const Row& row :
         {Row{-3, 0.05f}, Row{0.02f, 0.05f}, Row{0.3f, 0.3f}, Row{0.99f, 0.95f}, Row{7, 0.95f}}) {
        Player p{48000, 2};
        p.shape1 = row.shape;
        const Signal x = p.steady(50, 48000);
        const double level = measure::mean({x.begin(), x.end()});
        std::size_t high = 0;
        for (float s : x) high += double(s) > level + (0.5 - double(row.width)) ? 1 : 0;
        EXPECT_NEAR(static_cast<double>(high) / 48000, double(row.width), 0.006) << row.shape;
    }
}

TEST(AnalogVoice, UnisonIsSevenSaws) {
    Player p{48000, 5};
    p.shape1 = 0.5f;
    const double hz = 400;
    const auto s = measure::spectrum(p.steady(hz, 1 << 17), 48000);
    const double spread = 0.25;
    for (double c : {0.0, -0.2775, 0.08325, 0.191475, -0.10175, 0.2775, -0.178525}) {
        const double sawHz = hz / (1 + c * spread);
        for (int partial : {1, 2}) {
            const double found = s.largest(partial * (sawHz - 1), partial * (sawHz + 1));
            EXPECT_NEAR(found, 4 / 7.0 / std::numbers::pi / partial, 0.02) << c << " " << partial;
        }
    }
    for (float shape : {0.0f, 0.5f, 1.0f}) {
        p.shape1 = shape;
        EXPECT_NEAR(measure::mean(p.steady(hz, 1 << 16)), 0, 0.02);
    }
}

TEST(AnalogVoice, Oscillator3AndItsSub) {
    const double pi = std::numbers::pi, hz = 300;
    struct Row {
        int wave;
        double first, third;
    };
    for (const Row& row : {Row{0, 2 / pi, 2 / pi / 3}, Row{1, 2 / pi, 2 / pi / 3}}) {
        Player p{48000, 6};
        p.controls.analog.wave3 = row.wave;
        p.controls.analog.mix3 = 1;
        p.controls.analog.sub = 0.7f;
        const Signal x = p.steady(hz);
        EXPECT_NEAR(measure::levelAt(x, 48000, hz), row.first, 0.02) << row.wave;
        EXPECT_NEAR(measure::levelAt(x, 48000, 3 * hz), row.third, 0.02) << row.wave;
        EXPECT_NEAR(measure::levelAt(x, 48000, hz / 2), 4 / pi * 0.7, 0.02) << row.wave;
        EXPECT_NEAR(measure::levelAt(x, 48000, 1.5 * hz), 4 / pi * 0.7 / 3, 0.02) << row.wave;
    }
    Player triangle{48000, 6};
    triangle.controls.analog.wave3 = 2;
    triangle.controls.analog.mix3 = 1;
    const Signal x = triangle.steady(hz);
    EXPECT_NEAR(measure::mean(x), 0, 0.01);
    const double first = measure::levelAt(x, 48000, hz);
    EXPECT_GT(first, 0.5);
    EXPECT_NEAR(measure::decibels(measure::levelAt(x, 48000, 3 * hz) / first), -18.7, 0.5);
    EXPECT_LT(measure::levelAt(x, 48000, 2 * hz), 0.01);
}

TEST(AnalogVoice, MutedOscillator3StillModulatesTheCutoff) {
    Player p{48000, 6};
    p.controls.analog.mix3 = 1;
    p.controls.analog.mute3 = true;
    for (int wave3 : {0, 1, 2}) {
        p.controls.analog.wave3 = wave3;
        EXPECT_LT(measure::peak(p.steady(300)), 1e-4) << wave3;
    }
    for (bool ladder : {false, true}) {
        Player steady{48000, 3};
        steady.controls.filterMode = FilterMode::low24;
        steady.controls.analog.ladder = ladder;
        steady.filter.cutoff = std::log(0.1f);
        Player swept = steady;
        swept.controls.analog.mix3 = 1;
        swept.controls.analog.mute3 = true;
        swept.controls.analog.filterMod = 0.6f;
        const Signal a = steady.steady(300), b = swept.steady(300);
        double difference = 0;
        for (std::size_t i = 0; i < a.size(); ++i)
            difference = std::max(difference, std::fabs(double(a[i]) - double(b[i])));
        EXPECT_GT(difference, 0.05) << ladder;
        EXPECT_LT(difference, 1) << ladder;
    }
}

TEST(AnalogVoice, SecondOscillatorDistortionAndAlternativeBandSound) {
    Player dual{48000, 3};
    dual.controls.analog.wave2 = 4;
    dual.controls.analog.mix2 = 1;
    dual.controls.analog.ratio2 = 1.5f;
    const Signal both = dual.steady(200);
    EXPECT_NEAR(measure::levelAt(both, 48000, 200), 2 / std::numbers::pi, 0.02);
    EXPECT_NEAR(measure::levelAt(both, 48000, 300), 2 / std::numbers::pi, 0.02);

    Player clean{48000, 3};
    clean.controls.filterMode = FilterMode::low24;
    clean.filter = {0, std::log(0.1f), 0, 0.6f};
    Player dirty = clean;
    dirty.controls.analog.filterDistortion = 0.5f;
    EXPECT_GT(std::fabs(measure::rms(dirty.steady(200)) - measure::rms(clean.steady(200))), 0.01);

    Player plain{48000, 3};
    plain.controls.filterMode = FilterMode::band18;
    plain.filter = {0, std::log(0.2f), 0, 0.6f};
    Player alternative = plain;
    alternative.controls.analog.filterMod = 0.5f;  // stage 2 at 0.6 of the cutoff
    EXPECT_GT(std::fabs(measure::rms(alternative.steady(200)) - measure::rms(plain.steady(200))),
              0.01);
}

TEST(AnalogVoice, RefreshReachesASoundingVoice) {
    Player p{48000, 4};
    p.controls.filterMode = FilterMode::low24;
    p.controls.analog.ladder = true;
    p.filter.cutoff = std::log(0.3f);
    const double before = measure::rms(p.steady(200));
    p.controls.analog.mix1 = 0.5f;
    p.controls.filterMode = FilterMode::band12;  // not in a ladder: from the next note on
    p.voice.refresh(p.controls, 48000);
    p.play(200, 1 << 14);
    EXPECT_NEAR(measure::rms(p.play(200, 1 << 14)) / before, 0.5, 0.05);
}

TEST(AnalogVoice, NoiseIsFlat) {
    Player p{48000, 6};
    p.controls.analog.noise = 1;
    const Signal x = p.steady(100, 1 << 16);
    EXPECT_NEAR(measure::rms(x), 2 / std::sqrt(12.0), 0.02);
    EXPECT_NEAR(measure::mean(x), 0, 0.02);
    const auto s = measure::spectrum(x, 48000);
    double octaves[2] = {0, 0};
    for (std::size_t i = 0; i < s.amplitudes.size(); ++i) {
        const double power = s.amplitudes[i] * s.amplitudes[i];
        if (s.hz(i) > 1000 && s.hz(i) < 9000) octaves[0] += power;
        if (s.hz(i) > 12000 && s.hz(i) < 20000) octaves[1] += power;
    }
    EXPECT_NEAR(measure::decibels(octaves[0] / octaves[1]), 0, 2);
}

TEST(AnalogVoice, StartPhaseMovesTheFirstEdge) {
    const auto firstEdge = [](float start, float velocityToStart, float velocity) {
        Player p{48000, 3};
        p.controls.start = start;
        p.controls.velocityToStart = velocityToStart;
        p.velocity = velocity;
        p.start();
        const Signal x = p.play(100, 960);  // two periods
        for (std::size_t i = 1; i < x.size(); ++i)
            if (x[i] - x[i - 1] > 0.8f) return static_cast<int>(i);
        return -1;
    };
    const int atOnce = firstEdge(0, 0, 0);
    EXPECT_LE(atOnce, 4);
    EXPECT_NEAR(firstEdge(0.25f, 0, 0) - atOnce, 120, 2);
    EXPECT_NEAR(firstEdge(0.75f, 0, 0) - atOnce, 360, 2);
    EXPECT_NEAR(firstEdge(0.25f, -0.5f, 1) - atOnce, 360, 2);
}

TEST(AnalogVoice, AGlideOfASlowSyncLeavesNoConstant) {
    Player p{48000, 0};
    p.shape1 = 1;
    double hz = 60;
    p.steady(hz);
    for (int step = 0; step < 20; ++step, hz *= 1.04)
        EXPECT_LT(std::fabs(measure::mean(p.play(hz, 320))), 0.35) << step;
}

TEST(AnalogVoice, SlowOscillatorsFollowAtOnceFastOnesAtTheNextPeriod) {
    const auto samplesToEdge = [](double fromHz, double toHz) {
        Player p{48000, 4};
        p.start();
        p.play(fromHz, 64);  // the first edge is over, half a period to the next
        const Signal x = p.play(toHz, 9600);
        for (std::size_t i = 1; i < x.size(); ++i)
            if (x[i] - x[i - 1] < -0.4f) return static_cast<int>(i);
        return -1;
    };
    EXPECT_NEAR(samplesToEdge(10, 1000), 24, 4);
    EXPECT_NEAR(samplesToEdge(300, 3000), 80 - 64, 4);
}

TEST(AnalogVoice, AnythingGoesAndARestartForgetsIt) {
    Random dice{99};
    AnalogVoice reused;
    for (int round = 0; round < 300; ++round) {
        Player p{round % 3 == 0 ? 8000.0 : round % 3 == 1 ? 44100.0 : 192000.0, dice.draw() % 8};
        AnalogControls& a = p.controls.analog;
        a.wave2 = dice.draw() % 8;
        a.wave3 = dice.draw() % 8;
        a.ladder = dice.draw() % 2 == 0;
        a.mix2 = dice.draw() % 2 == 0 ? 1e-8f : dice.unipolar();
        a.mix3 = dice.unipolar();
        a.sub = dice.unipolar();
        a.noise = dice.unipolar();
        a.filterMod = dice.draw() % 2 == 0 ? 0 : 0.68f;
        a.filterDistortion = dice.draw() % 2 == 0 ? 0 : 0.5f;
        a.mute3 = dice.draw() % 4 == 0;
        a.minimumPulseWidth = 0.1f * dice.unipolar() + 0.001f;
        p.controls.randomStart = 1;
        p.controls.resonance = dice.unipolar();
        p.controls.filterMode = static_cast<FilterMode>(dice.draw() % 10);
        const float rate = static_cast<float>(p.rate);
        Random first{5}, second{5};
        p.voice.start(p.controls, 0, rate, first);
        reused.start(p.controls, 0, rate, second);
        float x[tickFrames], y[tickFrames];
        for (int tick = 0; tick < 100; ++tick) {
            if (dice.draw() % 10 == 0) {
                p.voice.refresh(p.controls, rate);
                reused.refresh(p.controls, rate);
            }
            const float increment = std::exp(12 * dice.unipolar() - 10),
                        shape = 1.3f * dice.bipolar();
            const FilterInputs f{dice.bipolar(), 4 * dice.bipolar() - 2, dice.bipolar(),
                                 1.5f * dice.unipolar()};
            p.voice.tick(increment, shape, -shape, f);
            p.voice.render(x);
            reused.tick(increment, shape, -shape, f);
            reused.render(y);
            ASSERT_EQ(std::memcmp(x, y, sizeof x), 0) << round;
            const Signal samples(x, x + tickFrames);
            ASSERT_TRUE(measure::allFinite(samples)) << round;
            ASSERT_LT(measure::peak(samples), 300) << round;
        }
    }
}

}  // namespace
}  // namespace stratovane
