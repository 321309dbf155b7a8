#include <gtest/gtest.h>

#include "effects/effect_run.h"
#include "measure/measure.h"

namespace stratovane {
namespace {

using measure::Signal;
using Values = EffectRun::Values;

constexpr int delay = 10, stereoDelay = 11, longDelay = 12, tapeDelay = 13, duckingDelay = 14,
              grainDelay = 15, diffuserDelay = 16;
constexpr float rate = 48000;

/// What arrives around a time: the sum of the samples within two milliseconds.
double arriving(const Signal& x, double seconds) {
    double sum = 0;
    const double at = seconds * static_cast<double>(rate);
    for (std::size_t i = 0; i < x.size(); ++i)
        if (std::fabs(static_cast<double>(i) - at) < 96) sum += static_cast<double>(x[i]);
    return sum;
}

struct Echo {
    const char* what;
    int type;
    Values values;
    float left, right;  // the impulse
    double seconds, leftLevel, rightLevel;
};

// Seconds are those that the displays show.
const Echo echoes[] = {
    {"delay", delay, {{0, 1}}, 1, 1, 0.25075 * 1.51, 1, 1},
    {"delay, again", delay, {{0, 1}}, 1, 1, 0.5015 * 1.51, 0.4975, 0.4975},
    {"mono line", delay, {{0, 1}}, 0, 1, 0.25075 * 1.51, 0.5, 0.5},
    {"shorter left", delay, {{0, 1}, {4, 0.1f}}, 1, 1, 0.6 * 0.25075 * 1.51, 1, 0},
    {"shorter right", delay, {{0, 1}, {4, 0.9f}}, 1, 1, 0.6 * 0.25075 * 1.51, 0, 1},
    {"longer side feeds", delay, {{0, 1}, {3, 1}, {4, 0.9f}}, 1, 1, 0.5015 * 1.51, 0.995, 0},
    {"half mix", delay, {}, 1, 1, 0.25075 * 1.51, 0.75, 0.75},
    {"dry", delay, {}, 1, 0.5f, 0, 0.75, 0.375},
    {"a beat", delay, {{0, 1}, {1, 1}}, 1, 1, 0.5, 1, 1},
    {"eight beats, halved twice", delay, {{0, 1}, {1, 1}, {2, 1}, {3, 0}}, 1, 1, 1, 1, 1},
    {"eight beats", longDelay, {{0, 1}, {1, 1}, {2, 1}}, 1, 1, 4, 1, 1},
    {"long", longDelay, {{0, 1}}, 1, 1, 0.25075 * 4.01, 1, 1},
    {"straight", stereoDelay, {{0, 1}, {3, 0.75f}}, 1, 0, 0.25075 * 1.5, 1, 0},
    {"straight, again", stereoDelay, {{0, 1}, {3, 0.75f}}, 1, 0, 0.5015 * 1.5, 0.495, 0},
    {"crossed", stereoDelay, {{0, 1}, {3, 0.25f}}, 1, 0, 0.25075 * 1.5, 0, 1},
    {"crossed, again", stereoDelay, {{0, 1}, {3, 0.25f}}, 1, 0, 0.5015 * 1.5, 0.495, 0},
    {"tape, heads 1 and 2", tapeDelay, {{0, 1}, {3, 0}}, 1, 1, 0.125 * 0.7875, 0.5, 0.5},
    {"tape, head 1", tapeDelay, {{0, 1}, {3, 0}, {5, 1}}, 1, 1, 0.7875, 0, 0.5},
    {"tape, head 2", tapeDelay, {{0, 1}, {3, 0}, {6, 0.5f}}, 1, 1, 0.5625 * 0.7875, 0.5, 0},
    {"heads 3, 4", tapeDelay, {{0, 1}, {7, 1}, {8, 1}, {10, 1}}, 1, 1, 0.7875, 1, 1},
    {"head 3, spread", tapeDelay, {{0, 1}, {7, 1}, {9, 1}, {10, 1}}, 1, 1, 0.7875, 0, 1},
    {"head 4, spread", tapeDelay, {{0, 1}, {8, 1}, {9, 1}, {10, 1}}, 1, 1, 0.7875, 1, 0},
    {"tape, synced", tapeDelay, {{0, 1}, {1, 1}, {3, 0}, {5, 1}}, 1, 1, 0.5, 0, 0.5},
    {"gate is shut", duckingDelay, {{0, 1}}, 1, 1, 0.25075 * 1.51, 0, 0},
    {"ducking is open", duckingDelay, {{0, 1}, {7, 1}}, 1, 1, 0.25075 * 1.51, 1, 1},
    {"no ducking, again", duckingDelay, {{0, 1}, {7, 0.5f}}, 1, 1, 0.5015 * 1.51, 0.4995, 0.4995},
    {"grains that keep the pitch", grainDelay, {{0, 1}, {3, 0}}, 1, 1, 0.25075, 1, 1},
    {"grains, synced", grainDelay, {{0, 1}, {1, 1}, {3, 0}}, 1, 1, 0.5, 1, 1},
    {"diffused", diffuserDelay, {{0, 1}, {3, 0}, {6, 0.03f}}, 1, 1, 0.25075 * 1.51, 1, 1},
};

TEST(Delays, EchoesComeWhenAndAsLoudAsShown) {
    for (const Echo& echo : echoes) {
        SCOPED_TRACE(echo.what);
        EffectRun run{echo.type, echo.values, rate};
        const auto size = static_cast<std::size_t>((echo.seconds + 0.1) * rate);
        const StereoSignal out = run(impulse(size, echo.left, echo.right));
        // The grain delay takes away a little of what is lasting.
        const double tolerance = echo.type == grainDelay ? 0.05 : 0.005;
        EXPECT_NEAR(arriving(out.left, echo.seconds), echo.leftLevel, tolerance);
        EXPECT_NEAR(arriving(out.right, echo.seconds), echo.rightLevel, tolerance);
    }
}

TEST(Delays, SyncedTimesFollowTheTempo) {
    for (int type : {delay, stereoDelay, longDelay, tapeDelay, grainDelay, diffuserDelay}) {
        EffectRun run{type, {{0, 1}, {1, 1}, {3, type == stereoDelay ? 0.51f : 0.0f}}, rate};
        run.tempo(150);
        const double seconds = type == tapeDelay ? 0.125 * 0.4 : 0.4;
        const StereoSignal out = run(impulse(24000));
        EXPECT_GT(arriving(out.left, seconds), 0.2) << type;
    }
}

TEST(Delays, DampingIsALowpassInTheLoop) {
    // Fully damped, the corner of 5000 / s stands at 796 Hz, and each round passes it once more.
    const std::pair<int, Values> cases[] = {
        {delay, {{0, 1}, {1, 1}, {3, 1}, {5, 0}}},
        {stereoDelay, {{0, 1}, {1, 1}, {3, 1}, {5, 0}}},
        {duckingDelay, {{0, 1}, {1, 1}, {3, 1}, {6, 0}, {7, 0.5f}}},
        {diffuserDelay, {{0, 1}, {1, 1}, {3, 1}, {5, 0}, {6, 0}}},
    };
    for (const auto& [type, values] : cases) {
        EffectRun run{type, values, rate};
        const StereoSignal out = run(impulse(65000));
        const auto round = [&](std::ptrdiff_t n) {
            const auto from = out.left.begin() + n * 24000 - 200;
            return measure::gainDb(Signal{from, from + 4000}, static_cast<double>(rate), 796) -
                   measure::gainDb(Signal{from, from + 4000}, static_cast<double>(rate), 5);
        };
        EXPECT_NEAR(round(1), -3, 0.3) << type;
        EXPECT_NEAR(round(2), -6, 0.6) << type;
    }
}

TEST(Delays, TailsOutlastTheLine) {
    struct {
        int type;
        double lineSeconds;
    } const cases[] = {{delay, 1.51},     {stereoDelay, 1.5},   {longDelay, 4.01},
                       {tapeDelay, 3.01}, {duckingDelay, 1.51}, {grainDelay, 3}};
    for (const auto& [type, lineSeconds] : cases) {
        // With mix 1 a unit that works swallows what comes in.
        EffectRun run{type, {{0, 1}, {3, 0.5f}}, rate};
        const auto swallows = [&run] { return run(impulse(100), 100, true).left[0] < 1e-5f; };
        run(silence(100), 100);
        const auto tail = static_cast<std::size_t>(200000 + lineSeconds * double(rate));
        run(silence(tail - 150), 100, true);
        EXPECT_TRUE(swallows()) << type;
        run(silence(100), 100, true);
        EXPECT_FALSE(swallows()) << type;
    }
}

TEST(DiffuserDelay, SmearsWithoutLossAndNeverSleeps) {
    const auto energy = [](const Signal& x) {
        return std::pow(measure::rms(x), 2) * static_cast<double>(x.size());
    };
    for (float diffusion : {0.2f, 0.6f, 1.0f}) {
        EffectRun run{diffuserDelay, {{0, 1}, {2, 0.3f}, {3, 0}, {6, diffusion}}, rate};
        const StereoSignal out = run(impulse(96000));
        EXPECT_NEAR(energy(out.left), 1, 0.01) << diffusion;
        EXPECT_LT(measure::peak(out.left), 0.4) << diffusion;
    }
    EffectRun run{diffuserDelay, {{0, 1}}, rate};
    run(silence(300000), 1000, true);
    EXPECT_LT(run(impulse(10), 10, true).left[0], 1e-5f);
    EXPECT_TRUE(run.flag());
}

TEST(DuckingDelay, InputOpensOrShutsTheEchoes) {
    constexpr float none = -10, held = 2;
    struct {
        float depth, threshold, key, input, gain;
    } const cases[] = {
        {0.0f, 0.5f, none, 0.1f, 1.0f},    // gate, sum above the threshold of 0.125
        {0.0f, 0.5f, none, 0.05f, 0.0f},   // and below it
        {0.25f, 0.5f, none, 0.05f, 0.5f},  // half a gate
        {1.0f, 0.5f, none, 0.1f, 0.0f},    // duck
        {0.75f, 0.5f, none, 0.1f, 0.5f},   // half
        {0.75f, 0.5f, none, 0.05f, 1.0f}, {0.5f, 0.5f, none, 0.1f, 1.0f},
        {0.0f, 0.0f, none, 0.02f, 0.0f},  // auto: 0.1 without a key, 0.001 with one
        {0.0f, 0.0f, held, 0.02f, 1.0f},  {0.0f, 0.5f, held, 0.05f, 0.0f},
    };
    for (const auto& c : cases) {
        EffectRun run{
            duckingDelay, {{0, 1}, {2, 0.1f}, {3, 0}, {7, c.depth}, {8, c.threshold}}, rate};
        run.key(c.key);
        const Signal steady(96000, c.input);
        const StereoSignal out = run({steady, steady});
        EXPECT_NEAR(out.left.back(), c.gain * c.input, 0.002)
            << c.depth << ' ' << c.threshold << ' ' << c.key << ' ' << c.input;
    }
}

TEST(TapeDelay, VintageTapeWowsAndKeepsItsLevel) {
    const auto played = [](float vintage, float feedback, double amplitude) {
        EffectRun run{
            tapeDelay, {{0, 1}, {3, feedback}, {4, vintage}, {7, 0.4f}, {8, 0.7f}, {10, 1}}, rate};
        const Signal tone = sine(240000, 1000.0 / double(rate), amplitude);
        return run({tone, tone}).left;
    };
    const auto spread = [&](float vintage) {
        return measure::inharmonicDb(measure::spectrum(played(vintage, 0, 0.1), double(rate)), 1000,
                                     20000);
    };
    EXPECT_LT(spread(0), -75);
    EXPECT_GT(spread(1), -45);
    // Full feedback from two heads lives on, bounded however loud it began.
    for (float vintage : {0.0f, 0.5f, 1.0f}) EXPECT_LT(measure::peak(played(vintage, 1, 1)), 4);
}

TEST(GrainDelay, GrainsPlayAtTheirPitch) {
    struct {
        float pitch;
        double hz;
    } const cases[] = {{0.75f, 1000}, {1.0f, 2000}, {0.625f, 500}, {0.875f, 1500}, {0.25f, 1000}};
    const Signal tone = sine(131072, 1000.0 / double(rate));
    for (const auto& c : cases) {
        EffectRun run{grainDelay, {{0, 1}, {3, 0}, {4, 0.9f}, {5, c.pitch}}, rate};
        const auto s = measure::spectrum(run({tone, tone}).left, double(rate));
        EXPECT_NEAR(s.hz(s.strongestBin()), c.hz, 12) << c.pitch;
    }
}

TEST(GrainDelay, AlternatingPanTurnsWithTheKey) {
    // Grains at 100 Hz, every other one to the same side: a sideband 50 Hz off.
    EffectRun run{grainDelay, {{0, 1}, {3, 0}, {4, 0}, {10, 0}}, rate};
    run.key(std::log(100.0f / 16.351599f));
    const Signal tone = sine(131072, 1000.0 / double(rate));
    const auto s = measure::spectrum(run({tone, tone}).left, double(rate));
    const auto level = [&s](double hz) { return measure::decibels(s.largest(hz - 2, hz + 2)); };
    EXPECT_GT(level(1050), level(1000) - 12);
    EXPECT_LT(level(1025), level(1000) - 70);
    EXPECT_LT(level(1075), level(1000) - 70);
}

TEST(Delays, ShowTheirValues) {
    struct {
        int type, index;
        Values values;
        const char* text;
    } const cases[] = {
        {delay, 2, {}, "0.379 s"},
        {delay, 2, {{1, 1}, {2, 1}}, "8/4"},
        {longDelay, 2, {{2, 1}}, "4.010 s"},
        {stereoDelay, 2, {{2, 0}}, "0.002 s"},
        {delay, 4, {{4, 0.25f}}, "L x 0.75"},
        {delay, 4, {}, "R x 1.00"},
        {delay, 5, {}, "0 %"},
        {stereoDelay, 3, {{3, 0}}, "R/L 100%"},
        {stereoDelay, 3, {}, "L/R 50%"},
        {duckingDelay, 7, {{7, 0.498f}}, "Gate0%"},
        {duckingDelay, 7, {{7, 1}}, "Duck100%"},
        {duckingDelay, 8, {}, "Auto"},
        {duckingDelay, 8, {{8, 0.5f}}, "-18.1 dB"},
        {tapeDelay, 2, {{2, 1}}, "3.000 s"},
        {tapeDelay, 5, {}, "12.5 %"},
        {grainDelay, 2, {{2, 1}}, "1000 ms"},
        {grainDelay, 4, {{4, 0}}, "Keytrack"},
        {grainDelay, 4, {}, "20.0 ms"},
        {grainDelay, 5, {}, "+100.0 %"},
        {grainDelay, 6, {{6, 0}}, "Alt 100.0%"},
        {grainDelay, 7, {{7, 1}}, "LFO 100.0%"},
        {grainDelay, 8, {}, "1.00 Hz"},
        {grainDelay, 9, {{9, 1}}, "Rnd 499.0ms"},
        {grainDelay, 10, {{10, 0}}, "Alt 100.0%"},
        {diffuserDelay, 6, {}, "50 %"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(shownEffectValue(c.type, c.index, c.values), c.text) << c.type << ' ' << c.index;
}

}  // namespace
}  // namespace stratovane
