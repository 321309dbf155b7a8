#include <gtest/gtest.h>

#include "effects/effect_run.h"
#include "measure/measure.h"

namespace stratovane {
namespace {

using measure::Signal;
using Values = EffectRun::Values;

constexpr int stereoWidth = 51, stereoEnhancer = 52, vintageFilter = 70, wahPedal = 71,
              talkBox = 72, shelfEq = 80, parametricEq = 81, enhancer = 85;
constexpr float rate = 48000;

/// Response of the left channel to a small impulse on both, once whatever glides has arrived.
Signal response(int type, const Values& values, float amplitude = 0.001f) {
    EffectRun run{type, values, rate};
    run(silence(48000));
    Signal x = run(impulse(8192, amplitude, amplitude)).left;
    for (float& s : x) s /= amplitude;
    return x;
}

double gainAt(const Signal& x, double hz) { return measure::gainDb(x, double(rate), hz); }

/// Frequency of the largest gain (or the smallest, with sign -1) between two others.
double extreme(const Signal& x, double fromHz, double toHz, double sign = 1) {
    double best = fromHz, most = -1000;
    for (double hz = fromHz; hz <= toHz; hz *= 1.01) {
        const double gain = sign * gainAt(x, hz);
        if (gain > most) {
            most = gain;
            best = hz;
        }
    }
    return best;
}

TEST(ShelfEq, ShelvesByTheAmountsTold) {
    struct {
        float bass, treble;
        double hz, gain;
    } const cases[] = {
        {0.5f, 0.5f, 10, 0},     {0.5f, 0.5f, 15000, 0}, {1, 0.5f, 10, 12}, {0.75f, 0.5f, 10, 4.85},
        {0, 0.5f, 10, -26},      {1, 0.5f, 15000, 0},    {0.5f, 1, 10, 0},  {0.5f, 1, 15000, 15.6},
        {0.5f, 0, 15000, -15.4}, {0.5f, 0, 10, 0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(gainAt(response(shelfEq, {{2, c.bass}, {3, c.treble}}), c.hz), c.gain, 0.5)
            << c.bass << ' ' << c.treble << ' ' << c.hz;
    EXPECT_NEAR(gainAt(response(shelfEq, {{0, 1}}), 1000), 12, 0.01);
}

TEST(ParametricEq, PeaksWhereAndAsHighAsShown) {
    constexpr Values::value_type secondFlat{5, 0.5f};
    struct {
        float gain, frequency, width;
        double hz;
    } const cases[] = {
        {1, 0.5556f, 0, 1000},     {0.75f, 0.5556f, 0.5f, 1000}, {0, 0.5556f, 0, 1000},
        {0.25f, 0.6959f, 1, 2400}, {1, 0.2222f, 1, 125},         {0, 0.8889f, 0, 8000},
        {0.75f, 0.8889f, 0, 8000},
    };
    for (const auto& c : cases) {
        const Signal x =
            response(parametricEq, {{2, c.gain}, {3, c.frequency}, {4, c.width}, secondFlat});
        const double hz = extreme(x, c.hz / 2, c.hz * 1.9, c.gain > 0.5f ? 1 : -1);
        EXPECT_NEAR(hz, c.hz, 0.05 * c.hz) << c.gain << ' ' << c.width;
        EXPECT_NEAR(gainAt(x, hz), 40 * double(c.gain) - 20, 1.0) << c.hz << ' ' << c.width;
    }
    // The second band is another of the same kind; flat bands leave the signal alone.
    const Signal second = response(parametricEq, {{5, 1}, {6, 0.5556f}, {7, 0}});
    EXPECT_NEAR(gainAt(second, 1000), 20, 1.0);
    const Signal flat = response(parametricEq, {secondFlat});
    EXPECT_EQ(std::count(flat.begin() + 1, flat.end(), 0.0f), 8191);
    // Next to flat is flat from the first sample on.
    EffectRun nearlyFlat{parametricEq, {{2, 0.502f}, secondFlat}, rate};
    const Signal fresh = nearlyFlat(impulse(2048, 1, 1)).left;
    EXPECT_EQ(std::count(fresh.begin() + 1, fresh.end(), 0.0f), 2047);
    // Wide bands are wider, at half their gain.
    const auto skirt = [&](float width) {
        return gainAt(response(parametricEq, {{2, 0.75f}, {3, 0.5556f}, {4, width}, secondFlat}),
                      1414);
    };
    EXPECT_GT(skirt(1), skirt(0) + 3);
}

TEST(StereoWidth, ModesPlaceTheDelayedSignal) {
    struct {
        const char* what;
        Values values;
        double left, right;          // at once, for an impulse of 0.75 and 0.25
        double lateLeft, lateRight;  // after four milliseconds
    } const cases[] = {
        {"mono", {{2, 0}}, 0.5, 0.5, 0, 0},
        {"unchanged", {{2, 0}, {4, 0.5f}, {5, 0.5f}, {6, 0.5f}}, 0.75, 0.25, 0, 0},
        {"doubled side", {{2, 0}, {3, 1}, {4, 0.5f}, {5, 0.5f}, {6, 0.5f}}, 1, 0, 0, 0},
        {"late side", {{4, 0.5f}, {5, 0.5f}, {6, 0.5f}}, 0.5, 0.5, 0.25, -0.25},
        {"swapped", {{2, 0}, {4, 0.5f}, {5, 0.5f}, {6, 0.5f}, {7, 0.4f}}, 0.25, 0.75, 0, 0},
        {"comb", {{4, 0.5f}, {5, 0.5f}, {6, 0.5f}, {7, 0.7f}}, 0.5, 0.5, 0.5, -0.5},
        {"Haas", {{4, 0.5f}, {5, 0.5f}, {6, 0.5f}, {7, 1}}, 0.5, 0, 0, 0.5},
    };
    for (const auto& c : cases) {
        EffectRun run{stereoWidth, c.values, rate};
        const StereoSignal out = run(impulse(400, 0.75f, 0.25f));
        EXPECT_NEAR(out.left[0], c.left, 2e-3) << c.what;
        EXPECT_NEAR(out.right[0], c.right, 2e-3) << c.what;
        EXPECT_NEAR(out.left[192], c.lateLeft, 2e-3) << c.what;
        EXPECT_NEAR(out.right[192], c.lateRight, 2e-3) << c.what;
    }
    // Each band alone: 2000 and 15000 / s are corners at about 318 Hz and 2.4 kHz.
    const auto band = [](int slot, double hz) {
        EffectRun run{stereoWidth, {{2, 0}, {7, 1}, {slot, 0.5f}}, rate};
        return gainAt(run(impulse(32768)).right, hz);
    };
    EXPECT_NEAR(band(4, 20), 0, 0.2);
    EXPECT_LT(band(4, 10000), -25);
    EXPECT_GT(band(5, 900), std::max(band(5, 30), band(5, 20000)) + 6);
    EXPECT_LT(band(6, 30), -25);
    EXPECT_GT(band(6, 20000), -2);
}

TEST(StereoEnhancer, TurnsPhasesAndNothingElse) {
    const auto run = [](const Values& values) {
        return EffectRun{stereoEnhancer, values, rate}(impulse(32768));
    };
    const StereoSignal same = run({{0, 0}, {5, 1}, {6, 0.5f}}), apart = run({{5, 1}, {6, 0.5f}});
    for (double hz : {60.0, 700.0, 3000.0, 15000.0}) {
        EXPECT_NEAR(gainAt(apart.left, hz), 0, 0.02) << hz;
        EXPECT_NEAR(gainAt(apart.right, hz), 0, 0.02) << hz;
    }
    for (std::size_t i = 0; i < same.left.size(); ++i)
        ASSERT_NEAR(same.left[i], same.right[i], 1e-7) << i;
    // A single stage turns by a right angle at 75 e^4.6v Hz on the left, R x 3.25 higher on the
    // right; there it adds to the input with 3 dB.
    const StereoSignal one = run({{6, 0.5f}});
    const auto beside = [](Signal x, double hz) {
        x[0] += 1;
        return gainAt(x, hz);
    };
    EXPECT_NEAR(beside(one.left, 750), 3.01, 0.1);
    EXPECT_NEAR(beside(one.right, 750 * 3.25), 3.01, 0.1);
    EXPECT_NEAR(measure::rms(run({{6, 1}}).right) / measure::rms(run({{6, 1}}).left), 13.0 / 7,
                0.01);
}

TEST(Enhancer, LiftsBothEnds) {
    const Signal none = response(enhancer, {{0, 0}, {3, 0}});
    EXPECT_NEAR(gainAt(none, 50), 0, 0.01);
    EXPECT_NEAR(gainAt(none, 10000), 0, 0.01);
    const Signal high = response(enhancer, {{0, 1}, {3, 0}}),
                 low = response(enhancer, {{0, 0}, {3, 1}});
    EXPECT_GT(gainAt(high, 10000), 6);
    EXPECT_NEAR(gainAt(high, 30), 0, 0.5);
    EXPECT_GT(gainAt(low, 20), 12);
    EXPECT_NEAR(gainAt(low, 5000), 0, 0.5);
    // Tuned lower, the treble begins lower.
    EXPECT_GT(gainAt(response(enhancer, {{0, 1}, {2, 0}, {3, 0}}), 3000),
              gainAt(response(enhancer, {{0, 1}, {2, 1}, {3, 0}}), 3000) + 1);
}

/// Steady, without resonance, at 500 Hz.
Values ladder(float mode, float resonance = 0, float cutoff = 0.3209f) {
    return {{0, 1}, {2, cutoff}, {3, resonance}, {4, mode}, {6, 0.5f}, {7, 0.5f}};
}

TEST(VintageFilter, SlopesBelongToTheModes) {
    struct {
        float mode;
        double fromHz, slope;  // dB from there to an octave above
    } const cases[] = {{0, 4000, -24},     {0.2f, 4000, -18}, {0.4f, 4000, -12}, {0.6f, 4000, -6},
                       {0.75f, 4000, -12}, {0.75f, 30, 6},    {1, 30, 6},        {0, 30, 0}};
    for (const auto& c : cases) {
        const Signal x = response(vintageFilter, ladder(c.mode));
        EXPECT_NEAR(gainAt(x, 2 * c.fromHz) - gainAt(x, c.fromHz), c.slope, 2) << c.mode;
    }
}

TEST(VintageFilter, ResonatesATenthAboveItsCutoff) {
    for (double hz : {200.0, 500.0, 2000.0}) {
        const auto cutoff = static_cast<float>((std::log(hz) - 4) / 6.9);
        for (bool stereo : {false, true}) {
            Values values = ladder(0, 0.9f, cutoff);
            values.emplace_back(11, stereo ? 1.0f : 0.0f);
            const Signal x = response(vintageFilter, values, 1e-5f);
            const double peak = extreme(x, hz / 3, hz * 3);
            EXPECT_NEAR(peak, 1.1 * hz, 0.05 * hz) << stereo;
            EXPECT_GT(gainAt(x, peak), gainAt(x, hz / 8) + 12) << stereo;
        }
    }
}

TEST(VintageFilter, MonoHearsTheLeftAlone) {
    for (bool stereo : {false, true}) {
        Values values = ladder(0.6f, 0, 0.8f);
        values.emplace_back(11, stereo ? 1.0f : 0.0f);
        EffectRun run{vintageFilter, values, rate};
        const StereoSignal out = run({sine(4800, 0.01, 0.1), Signal(4800, 0.0f)});
        EXPECT_GT(measure::peak(out.left), 0.05);
        EXPECT_NEAR(measure::peak(out.right), stereo ? 0 : measure::peak(out.left), 1e-5);
    }
}

/// Loudness of a tone while an envelope opens the filter.
double passed(EffectRun& run, double amplitude, double hz = 2000) {
    const Signal tone = sine(24000, hz / double(rate), amplitude);
    const Signal out = run({tone, tone}).left;
    return measure::decibels(measure::rms(Signal{out.end() - 4800, out.end()}) / amplitude);
}

TEST(VintageFilter, EnvelopesFollowInputOrKeys) {
    const auto swept = [](float how) {
        Values values = ladder(0);
        values.insert(values.end(), {{8, how}, {9, 0.3f}, {10, 0.3f}});
        for (auto& [index, value] : values)
            if (index == 7) value = 0.9f;
        return EffectRun{vintageFilter, values, rate};
    };
    EffectRun follow = swept(0);
    const double followedQuiet = passed(follow, 0.001);
    EXPECT_GT(passed(follow, 0.3), followedQuiet + 20);

    EffectRun gated = swept(0.5f), struck = swept(0.3f);
    for (EffectRun* run : {&gated, &struck}) {
        run->key(-10);
        passed(*run, 0.01);
        run->key(2);
    }
    EXPECT_GT(passed(gated, 0.01), -10);   // held while the key is
    EXPECT_LT(passed(struck, 0.01), -30);  // fallen again
    gated.key(-10);
    EXPECT_LT(passed(gated, 0.01), -30);
}

TEST(WahPedal, PedalAndLevelMoveThePeak) {
    // (1700 + 13200 w) / 2 pi hertz.
    struct {
        float pedal;
        double hz;
    } const cases[] = {{0, 271}, {0.5f, 796}, {1, 2371}};
    for (const auto& c : cases) {
        const Signal x = response(wahPedal, {{0, 1}, {4, c.pedal}, {5, 0.5f}, {6, 0.9f}});
        EXPECT_NEAR(extreme(x, 100, 5000), c.hz, 0.05 * c.hz) << c.pedal;
    }
    EffectRun automatic{wahPedal, {{0, 1}, {3, 1}, {6, 0.5f}}, rate};
    const double quiet = passed(automatic, 0.003);
    EXPECT_GT(passed(automatic, 0.3), quiet + 10);
    // Synced to the song, the sweep begins anew with every beat.
    EffectRun synced{wahPedal, {{0, 1}, {1, 1}, {2, 0.5f}, {3, 1}, {5, 1}, {6, 0.5f}}, rate};
    const Signal tone = sine(96000, 0.02, 0.1), out = synced({tone, tone}).left;
    double nearest = 1, between = 0;
    for (std::size_t i = 48000; i < 72000; i += 100) {
        const auto loud = [&](std::size_t at) {
            const auto from = out.begin() + static_cast<std::ptrdiff_t>(at);
            return measure::rms(Signal{from, from + 100});
        };
        nearest = std::min(nearest, loud(i) / loud(i + 24000));
        between = std::max(between, loud(i) / loud(i + 12000));
    }
    EXPECT_NEAR(nearest, 1, 0.02);
    EXPECT_GT(between, 1.5);
}

TEST(TalkBox, VowelsHaveTheirFormants) {
    struct {
        float vowel;
        const char* name;
        double f1, f2;
    } const cases[] = {{0, "OO", 300, 900},     {0.25f, "AH", 700, 940},
                       {0.5f, "EH", 550, 1750}, {0.625f, "EE", 300, 2450},
                       {1, "OH", 450, 680},     {0.53125f, "EH", 480, 1885}};
    for (const auto& c : cases) {
        EXPECT_EQ(shownEffectValue(talkBox, 4, {{4, c.vowel}}), c.name);
        const Signal x = response(talkBox, {{0, 1}, {3, 0.5f}, {4, c.vowel}, {5, 0.5f}});
        EXPECT_NEAR(extreme(x, c.f1 * 0.9, c.f1 * 1.1), c.f1, 0.02 * c.f1) << c.name;
        EXPECT_NEAR(extreme(x, c.f2 * 0.9, c.f2 * 1.1), c.f2, 0.02 * c.f2) << c.name;
    }
    // The level leads on to other vowels.
    EffectRun run{talkBox, {{0, 1}, {3, 0.5f}, {4, 0.25f}, {5, 0.65f}}, rate};
    const double quiet = passed(run, 0.001, 700);
    EXPECT_LT(passed(run, 1, 700), quiet - 6);
}

TEST(Filters, LfosRunAtTheirRates) {
    struct {
        const char* what;
        int type;
        Values values;
        double hz;
    } const cases[] = {
        {"ladder", vintageFilter, {{0, 1}, {2, 0.5f}, {5, 0.5f}, {6, 0.7f}, {7, 0.5f}}, 3.156},
        {"wah", wahPedal, {{0, 1}, {2, 0.75f}, {3, 1}, {4, 0.5f}, {5, 1}, {6, 0.5f}}, 4.472},
        {"wah, synced", wahPedal, {{0, 1}, {1, 1}, {2, 0.5f}, {3, 1}, {4, 0.5f}, {5, 1}}, 2},
        {"talk box", talkBox, {{0, 1}, {2, 1}, {3, 0.7f}, {4, 0.25f}, {5, 0.5f}}, 3.125},
        {"synced", talkBox, {{0, 1}, {1, 1}, {2, 0.65f}, {3, 0.7f}, {4, 0.25f}, {5, 0.5f}}, 4},
    };
    const Signal tone = sine(std::size_t{1} << 18, 1000.0 / double(rate), 0.05);
    for (const auto& c : cases) {
        EffectRun run{c.type, c.values, rate};
        const auto s = measure::spectrum(run({tone, tone}).left, double(rate));
        const auto level = [&](double away) {
            return measure::decibels(s.largest(999.9 + away, 1000.1 + away));
        };
        EXPECT_GT(level(c.hz), level(0) - 40) << c.what;
        EXPECT_GT(level(c.hz), level(0.6 * c.hz) + 25) << c.what << s.peaks(-50);
        EXPECT_GT(level(c.hz), level(0.5 * c.hz) + 25) << c.what;
    }
}

TEST(Filters, ShowTheirValues) {
    expectShown({
        {shelfEq, {{2, 0, "-12.0 dB"}}},
        {parametricEq, {{2, 1, "+20.0 dB"}, {3, -1, "707 Hz"}, {3, 1, "16.00 kHz"}}},
        {parametricEq, {{4, -1, "0.25 oct"}}},
        {stereoWidth, {{2, 1, "16.000 ms"}, {3, -1, "100 %"}, {7, 1, "Haas"}}},
        {stereoEnhancer, {{0, 1, "R x 10.00"}, {2, -1, "1000 Hz"}, {5, 1, "3"}, {6, -1, "-50"}}},
        {vintageFilter, {{2, 0, "54.6 Hz"}, {2, 1, "54.18 kHz"}, {4, 0.6f, "LP6 "}}},
        {vintageFilter, {{5, 1, "200.00 Hz"}, {6, -1, "S&H 100%"}, {8, 1, "LFO+Env"}}},
        {vintageFilter, {{11, 1, "Stereo"}}},
        {wahPedal, {{2, -1, "1.00 Hz"}, {3, -1, "   0 %"}, {5, 1, "Mod Wah"}}},
        {talkBox, {{3, 1, "+100 %"}}},
        {enhancer, {{0, 1, "+18.0 dB"}, {2, -1, "7 kHz"}, {4, -1, "40 Hz"}}},
    });
    EXPECT_EQ(shownEffectValue(wahPedal, 2, {{1, 1}, {2, 0}}), "8/4");
}

}  // namespace
}  // namespace stratovane
