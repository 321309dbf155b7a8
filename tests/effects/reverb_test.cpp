// The reverbs by what is heard: times, decays, stops, chords, and where the two sides part.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "effects/all_types.h"
#include "effects/effect_run.h"
#include "measure/measure.h"

namespace stratovane {
namespace {

using measure::Signal;
using Values = EffectRun::Values;

constexpr float rate = 48000;

struct Player : EffectRun {
    Player(const EffectType& type, const Values& values, float hz = rate)
        : EffectRun{type.number, values, hz} {
        key(0);
    }
    StereoSignal play(const Signal& left, const Signal& right) {
        return (*this)({left, right}, 100);
    }
    /// The response to one frame of these levels.
    StereoSignal respond(double seconds, float left = 0.5f, float right = 0.5f) {
        return (*this)(impulse(static_cast<std::size_t>(seconds * double(rate)), left, right), 100);
    }
};

double energy(const Signal& x) {
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0, std::plus{},
                              [](float a, float b) { return double(a) * double(b); });
}

/// Mean time of a response's energy, in samples. For all-passes it is the sum of their delays,
/// whatever their gains.
double centroid(const Signal& x) {
    double sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i)
        sum += static_cast<double>(i) * double(x[i]) * double(x[i]);
    return sum / energy(x);
}

Signal combine(double a, const Signal& x, double b, const Signal& y) {
    Signal out(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        out[i] = static_cast<float>(a * double(x[i]) + b * double(y[i]));
    return out;
}

Signal noise(std::size_t size) {
    Random random;
    Signal x(size);
    for (float& s : x) s = random.bipolar();
    return x;
}

/// The first sample that stands out of the guard against denormal numbers.
std::size_t start(const Signal& x) {
    return static_cast<std::size_t>(
        std::find_if(x.begin(), x.end(), [](float v) { return std::fabs(v) > 1e-6f; }) - x.begin());
}

TEST(Reverb, DecaysByTheFeedbackOfItsLines) {
    // Cross-fed lines lose 20 log10(sqrt(2) gain) in their mean delay of 111 or 79 ms; the combs
    // of a hall 0.58 or 0.98 in 58 to 90 ms, of which the long ones last. A low rate leaves the
    // damping out.
    const Rows<const EffectType&, float, double> cases = {
        {effect::reverb, 0.5f, 21.8},      {effect::reverb, 1.0f, 5.4},
        {effect::plateReverb, 0.5f, 18.6}, {effect::plateReverb, 1.0f, 7.6},
        {effect::hallReverb, 0.0f, 58},    {effect::hallReverb, 1.0f, 2.2}};
    constexpr double slowRate = 8000;
    for (const auto& [type, time, dbPerSecond] : cases) {
        Player player{type, {{0, 1}, {2, time}, {4, 1}, {6, 1}}, float(slowRate)};
        if (&type != &effect::reverb) player.set(3, 0);
        const double seconds = 30 / dbPerSecond;
        const StereoSignal out = player(impulse(std::size_t((seconds + 1) * slowRate)));
        for (const Signal* side : {&out.left, &out.right}) {
            const auto levelDb = [side](double at) {
                const auto from = side->begin() + static_cast<int>(at * slowRate);
                return measure::decibels(measure::rms({from, from + 2000}));
            };
            EXPECT_NEAR((levelDb(0.5) - levelDb(0.5 + seconds)) / seconds, dbPerSecond,
                        0.15 * dbPerSecond)
                << type.name << " at " << time;
        }
    }
}

TEST(Reverb, SidesPartWithTheFirstLineHeard) {
    // The shortest of four cross-fed lines hears a difference that starts at 0; the third, 0.79^2
    // of 153.31 ms or 0.91^2 of 90 ms, speaks first. The shortest comb of a hall is on the right.
    // The sign is the right side's in a sum that cancels the diffuser.
    const Rows<const EffectType&, double, std::size_t> cases = {
        {effect::reverb, 1, 4592}, {effect::plateReverb, -1, 3577}, {effect::hallReverb, -1, 2769}};
    for (const auto& [type, sign, samples] : cases) {
        Player player{type, {{0, 1}, {2, 1}, {3, 0}, {4, 1}, {6, 1}}};
        const StereoSignal out = player.respond(0.2);
        const Signal difference = combine(1, out.left, sign, out.right);
        EXPECT_EQ(start(difference), samples) << type.name;
        EXPECT_GT(difference[samples], 0) << type.name;
    }
}

TEST(Reverb, PreDelaysAreAsShown) {
    const Rows<const EffectType&, float, double> cases = {
        {effect::hallReverb, 0.0f, 0},    {effect::hallReverb, 0.5f, 100},
        {effect::hallReverb, 1.0f, 400},  {effect::plateReverb, 0.5f, 100},
        {effect::plateReverb, 1.0f, 400}, {effect::roomReverb, 0.0f, 0},
        {effect::roomReverb, 0.5f, 62.5}, {effect::roomReverb, 1.0f, 250}};
    for (const auto& [type, value, ms] : cases) {
        const StereoSignal out = Player{type, {{0, 1}, {3, value}, {6, 1}}}.respond(0.6);
        const double found = 1000.0 * static_cast<double>(start(out.left)) / double(rate);
        EXPECT_NEAR(found, ms, 0.02 + 0.003 * ms) << type.name;
    }
}

TEST(Reverb, EqualisersMeetTheirCorners) {
    // Early Reflections are all-passes: what bends their response is the equaliser alone.
    const Signal flat = Player{effect::earlyReflections, {{0, 1}, {3, 0}, {4, 1}}}.respond(1).left;
    const Signal low = Player{effect::earlyReflections, {{0, 1}, {3, 1}, {4, 1}}}.respond(1).left;
    const Signal high = Player{effect::earlyReflections, {{0, 1}, {3, 0}, {4, 0}}}.respond(1).left;
    for (const double hz : {50.0, 700.0, 2300.0})
        EXPECT_NEAR(measure::gainDb(flat, double(rate), hz), 0, 0.2) << hz;
    EXPECT_NEAR(measure::gainDb(low, double(rate), 318.3), -3, 0.2);
    EXPECT_NEAR(measure::gainDb(low, double(rate), 31.83), -20, 0.4);
    EXPECT_NEAR(measure::gainDb(high, double(rate), 1591.5), -3, 0.4);
}

TEST(Reverb, HallGrowsDarkAndPlateToo) {
    for (const EffectType* type : {&effect::hallReverb, &effect::plateReverb}) {
        double fallDb[2];
        for (const bool damped : {false, true}) {
            Player player{*type, {{0, 1}, {2, 0.8f}, {3, 0}, {4, damped ? 0.0f : 1.0f}, {6, 1}}};
            const Signal x = player.respond(1.5).left;
            const auto half = x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2);
            const auto above = [](const Signal& s) {
                return measure::spectrum(s, double(rate)).largest(6000, 12000);
            };
            fallDb[damped] = measure::decibels(above({x.begin(), half}) / above({half, x.end()}));
        }
        EXPECT_GT(fallDb[1], fallDb[0] + 30) << type->name;
    }
}

TEST(RoomReverb, KeepsTheSidesApartUntilTheyFeedBack) {
    // Without feedback: two all-passes a side (487 + 719 + 1069 samples and so on at full size).
    // Shape and size, mean times of the sides at 48 kHz.
    const Rows<float, float, double, double> cases = {
        {0.0f, 1.0f, (2275 + 3063) / 2.0, (2393 + 3445) / 2.0},
        {1.0f, 1.0f, (9558 + 12898) / 2.0, (10104 + 14516) / 2.0},
        {1.0f, 0.0f, (953 + 1287) / 2.0, (1008 + 1449) / 2.0}};
    for (const auto& [shape, size, leftTime, rightTime] : cases) {
        const Values settings = {{0, 1}, {2, 0}, {3, 0},    {4, 1},
                                 {5, 0}, {6, 1}, {7, size}, {8, shape}};
        const StereoSignal left = Player{effect::roomReverb, settings}.respond(2, 1, 0);
        const StereoSignal right = Player{effect::roomReverb, settings}.respond(2, 0, 1);
        EXPECT_NEAR(centroid(left.left), leftTime, 0.06 * leftTime);
        EXPECT_NEAR(centroid(right.right), rightTime, 0.06 * rightTime);
        EXPECT_LT(measure::peak(left.right) + measure::peak(right.left), 1e-5);
    }
    const auto lateShare = [](float time) {
        Player player{effect::roomReverb, {{0, 1}, {2, time}, {3, 0}, {7, 0.5f}, {8, 1}}};
        return energy(player.respond(3, 1, 0).right);
    };
    EXPECT_GT(lateShare(0.5f), 0.01);  // the other side answers through the feedback
    EXPECT_GT(lateShare(1.0f), 4 * lateShare(0.5f));
}

TEST(RoomReverb, WaitsForSizeToRest) {
    const Signal input = noise(48000);
    const Values start = {{0, 1}, {7, 0.2f}};
    Player still{effect::roomReverb, start}, turned{effect::roomReverb, start};
    still.play(input, input);
    turned.play(input, input);
    turned.set({{7, 0.4f}});
    const Signal some(input.begin(), input.begin() + 4800);  // 0.1 s
    EXPECT_EQ(turned.play(some, some).left, still.play(some, some).left);
    turned.set({{7, 0.9f}});  // starts the 0.2 s again
    turned.set({{7, 0.9f}});  // the same again does not
    for (int tenth = 0; tenth < 2; ++tenth) {
        EXPECT_EQ(turned.play(some, some).left, still.play(some, some).left) << tenth;
        turned.set({{7, 0.9f}});
    }
    EXPECT_NE(turned.play(some, some).left, still.play(some, some).left);
}

TEST(ReverseReverb, SmearsAheadOfTheDelayedOriginal) {
    // 1/4 and 8/4 at 120: half a second, and four seconds halved until they fit.
    const Rows<float, float, double> cases = {
        {0.0f, 0.5f, 24480}, {0.0f, 0.1f, 5664}, {1.0f, 0.5f, 24000}, {1.0f, 1.0f, 24000}};
    for (const auto& [sync, time, samples] : cases) {
        const Values settings = {{0, 1}, {1, sync}, {2, time}, {3, 0.8f}, {4, 0}, {5, 1}};
        Player dry{effect::reverseReverb, settings};
        const StereoSignal original = dry.respond(2, 0.5f, -0.25f);
        const std::size_t end = static_cast<std::size_t>(samples) - 1;
        EXPECT_NEAR(original.left[end], 0.5f, 1e-6) << time;
        EXPECT_NEAR(original.right[end], -0.25f, 1e-6) << time;
        EXPECT_NEAR(energy(original.left), 0.25, 1e-5);

        Player wet{effect::reverseReverb, settings};
        wet.set({{4, 1}, {5, 0}});
        wet.unit().setSampleRate(rate);
        const Signal x = wet.respond(2, 0.5f, -0.5f).left;  // 0 sum: nothing of the diffuser
        EXPECT_LT(energy(x), 1e-9);
        const Signal y = wet.respond(2, 0.5f, 0.5f).left;
        // 2 * diffuser + the sum at 85 %, then 10 % more: weights 4 and 1.
        EXPECT_NEAR(centroid(y), samples * ((4 * 0.7157 + 0.85) / 5 + 0.1002), 0.01 * samples)
            << time;
        EXPECT_NEAR(energy(y), 5, 0.5) << time;
    }
}

TEST(ReverseReverb, FollowsTempoAQuarterOfASecondLater) {
    Player player{effect::reverseReverb, {{0, 1}, {1, 1}, {2, 0.5f}, {5, 1}}};
    const auto delay = [&player] { return start(player.respond(1.5).left) + 1; };
    EXPECT_EQ(delay(), 24000u);
    player.unit().setTempo(240.0f, 4.0 / double(rate));
    EXPECT_EQ(delay(), 12000u);
    player.unit().setTempo(120.0f, 2.0 / double(rate));
    player.respond(0.05);
    player.unit().setTempo(480.0f, 8.0 / double(rate));
    EXPECT_EQ(start(player.respond(0.19).left), 9120u);  // still the long segment: nothing yet
    player.respond(1);
    EXPECT_EQ(delay(), 6000u);
}

TEST(NonLinearReverb, StopsAtOnceAndWeighsItsPulses) {
    // Rate, time, samples; what a constant 1 becomes: 0.2 * (1 + z1 - z2 + z4 or z3).
    const Rows<float, float, std::size_t, double, double> cases = {
        {44100.0f, 0.0f, 2520, 1.6, 1.4},
        {44100.0f, 0.5f, 10080, 1.6, 1.4},
        {44100.0f, 1.0f, 20160, 3.0, 2.6},
        {192000.0f, 1.0f, 95760, 3.0, 2.6}};
    for (const auto& [hz, time, samples, left, right] : cases) {
        const Values settings = {{0, 1}, {2, time}, {3, 0}, {4, 1}};
        Player steps{effect::nonLinearReverb, settings, hz};
        const Signal half(static_cast<std::size_t>(2 * hz), 0.5f);
        const StereoSignal out = steps.play(half, half);
        EXPECT_NEAR(out.left.back(), left, 1e-4);
        EXPECT_NEAR(out.right.back(), right, 1e-4);

        Player pulses{effect::nonLinearReverb, settings, hz};
        const Signal burst = pulses(impulse(static_cast<std::size_t>(2 * hz))).left;
        // The diffuser, gain 0.5 in up to 28 ms, rings on behind the last pulse.
        const auto diffused = static_cast<std::size_t>(hz * (0.44f * time + 0.1f) * 1.6f);
        const auto from = [&burst](std::size_t i) {
            return measure::peak({burst.begin() + static_cast<std::ptrdiff_t>(i), burst.end()});
        };
        EXPECT_GT(from(samples), 0.01) << hz << " " << time;  // the last pulse is there
        EXPECT_LT(from(samples + diffused), 1e-6) << hz << " " << time;
    }
}

TEST(NonLinearReverb, BeginsAnewWithAnotherTime) {
    const Signal input = noise(9600);
    Player turned{effect::nonLinearReverb, {{0, 1}, {2, 0.3f}}};
    Player fresh{effect::nonLinearReverb, {{0, 1}, {2, 0.7f}}};
    Player still{effect::nonLinearReverb, {{0, 1}, {2, 0.3f}}};
    turned.play(input, input);
    still.play(input, input);
    turned.set({{2, 0.3f}});
    EXPECT_EQ(turned.play(input, input).left, still.play(input, input).left);
    turned.set({{2, 0.7f}});
    EXPECT_EQ(turned.play(input, input).left, fresh.play(input, input).left);
}

TEST(EarlyReflections, ForkIntoTwoAllPasses) {
    for (const float time : {0.2f, 0.6f, 1.0f}) {
        Player player{effect::earlyReflections, {{0, 1}, {2, time}, {3, 0}, {4, 1}}};
        const StereoSignal out = player.respond(2);
        const double d = std::floor(double(time * time) * 1200) + 10;
        EXPECT_NEAR(energy(out.left), energy(out.right), 0.02);
        EXPECT_NEAR(centroid(out.left), d * (0.3747 + 0.2823 + 0.7309 + 0.913), 0.04 * d + 6);
        EXPECT_NEAR(centroid(out.right), d * (0.3747 + 0.2823 + 0.7309 + 1), 0.04 * d + 6);
    }
}

TEST(Overheads, MatrixTwoDiffusers) {
    const float time = 0.6f, size = 0.5f;
    Player player{effect::overheads, {{0, 1}, {2, time}, {3, 0}, {4, 1}, {5, 0}, {6, size}}};
    const StereoSignal out = player.respond(1, 1, 1);
    // left = A + C, right = B - C with C = (A - B) / 2: solved for A = y8 - y3 and B = y4 + y7.
    const Signal a = combine(0.75, out.left, 0.25, out.right);
    const Signal b = combine(0.25, out.left, 0.75, out.right);
    const double d = 442, r = 0.95;  // samples and ratio of the delays
    const double d4 = d * r * r * (r - 0.03), d5 = d4 * r * 0.807, d7 = d5 * r * (r - 0.07);
    const double y3 = d * (1 + r + r * (r - 0.03)), y4 = y3 + d4;
    const double y7 = d5 * (1 + r) + d7, y8 = y7 + d7 * r;
    EXPECT_NEAR(centroid(a), (y3 + y8) / 2, 0.04 * d);
    EXPECT_NEAR(centroid(b), (y4 + y7) / 2, 0.04 * d);
    EXPECT_NEAR(energy(a), energy(b), 0.1);
    // First come the direct parts, (-gain)^stages of what passes the lowpass.
    const double passed = 1 - std::exp(-100000 / double(rate));
    EXPECT_NEAR(a[0], passed * (std::pow(0.3, 4) + std::pow(0.3, 3)), 1e-5);
    EXPECT_NEAR(b[0], passed * (std::pow(0.3, 4) - std::pow(0.3, 3)), 1e-5);
}

// The resonators' rate is high, so that whole samples make good cents.
constexpr float fineRate = 192000;

struct Resonators : Player {
    explicit Resonators(const Values& values) : Player{effect::tunedResonators, values, fineRate} {
        set({{0, 1}, {8, 1}});
        unit().setSampleRate(fineRate);
    }
};

StereoSignal ring(Player& player, double seconds) {
    Signal x(static_cast<std::size_t>(seconds * double(fineRate)));
    Signal burst = noise(2000);
    std::copy(burst.begin(), burst.end(), x.begin());
    return player.play(x, x);
}

/// A strong partial, within so many cents.
void expectTone(const Signal& x, double hz, double tolerance) {
    const double found = measure::frequencyNear(x, double(fineRate), hz);
    EXPECT_NEAR(measure::cents(found, hz), 0, tolerance) << hz;
    EXPECT_GT(measure::levelAt(x, double(fineRate), found), 0.01 * measure::rms(x)) << hz;
}

TEST(TunedResonators, SoundTheChordOfSpacingAndRoot) {
    const struct {
        float root, detune, spacing;
        double hz;
        std::vector<double> cents;
    } cases[] = {
        {0.5f, 0.5f, 0.92f, 261.63, {0, 200, 300, 500, 700, 800, 1000}},
        {0.5f, 0.5f, 1.0f, 261.63, {0, 200, 400, 500, 700, 900, 1100}},
        {0.25f, 1.0f, 0.9f, 92.50 * 1.02930, {0, 200, 400, 600, 800, 1000, 1200}},
        {0.6f, 0.0f, 0.45f, 392.00 * 0.97153, {0, 100, 200, 300, 400, 500, 600}},
    };
    for (const auto& c : cases) {
        Resonators player{{{2, 1}, {3, c.root}, {4, c.detune}, {5, c.spacing}, {6, 0.8f}}};
        const Signal x = ring(player, 1).left;
        for (const double cents : c.cents) {
            SCOPED_TRACE(cents);
            expectTone(x, c.hz * std::exp2(cents / 1200), 6);
        }
    }
}

TEST(TunedResonators, DecayAsToldAndFasterWithoutKey) {
    // Decay, release, a key held, dB a second. Release adds 0.04 * 0.5^4 per sample of 44.1 kHz:
    // 957 dB/s at the end of the range.
    const Rows<float, float, bool, double> cases = {{0.5f, 0.5f, false, 10.0},
                                                    {0.25f, 0.5f, false, 99.5},
                                                    {0.5f, 0.25f, true, 10.0},
                                                    {0.5f, 0.25f, false, 10.0 + 59.9},
                                                    {0.5f, 0.75f, false, 10.0 + 59.9}};
    for (const auto& [decay, release, held, dbPerSecond] : cases) {
        Resonators player{{{2, 0}, {4, 0.5f}, {6, decay}, {10, release}}};
        player.key(held ? std::log(32.0f) : -10.0f);
        const Signal x = ring(player, 0.6).left;
        const auto levelFrom = [&x](double seconds) {
            const auto from = x.begin() + static_cast<std::ptrdiff_t>(seconds * double(fineRate));
            return measure::levelAt({from, from + 30000}, double(fineRate), 261.63);
        };
        EXPECT_NEAR(measure::decibels(levelFrom(0.05) / levelFrom(0.35)) / 0.3, dbPerSecond,
                    1 + 0.03 * dbPerSecond)
            << decay << " " << release << " " << held;
    }
}

TEST(TunedResonators, FollowTheKeyInOctavesThatFit) {
    const Rows<double, float, double> cases = {
        {69, 1.0f, 440},
        {72, 0.0f, 261.63},   // fixed
        {12, 1.0f, 32.70},    // 16.35 Hz is too long for a line
        {96, 1.0f, 2081.3}};  // 2093 Hz in 92 samples and a quarter of the damping's
    for (const auto& [note, tracking, hz] : cases) {
        Resonators player{{{2, 0}, {3, 0.5f}, {4, 0.5f}, {6, 0.8f}, {10, tracking}}};
        player.key(static_cast<float>(note / 12 * std::log(2.0)));
        const Signal x = ring(player, 1).left;
        expectTone(x, hz, 6);
        EXPECT_LT(measure::levelAt(x, double(fineRate), hz / 2),
                  0.03 * measure::levelAt(x, double(fineRate), hz))
            << note;
    }
}

TEST(TunedResonators, SpreadTheirBands) {
    const auto levels = [](float width) {
        Resonators player{{{2, 0.2f}, {4, 0.5f}, {5, 0.9f}, {6, 0.8f}, {9, width}}};  // two bands
        const StereoSignal out = ring(player, 1);
        std::array<double, 4> db{};
        for (std::size_t i = 0; i < 4; ++i)
            db[i] = measure::decibels(measure::levelAt(
                i < 2 ? out.left : out.right, double(fineRate), i % 2 == 0 ? 261.63 : 293.66));
        return db;
    };
    const auto wide = levels(1), narrow = levels(0);
    EXPECT_GT(wide[2], wide[0] + 30);  // the root on the right
    EXPECT_GT(wide[1], wide[3] + 30);  // the second on the left
    EXPECT_NEAR(narrow[0], narrow[2], 0.01);
    EXPECT_NEAR(narrow[1], narrow[3], 0.01);
    Player player{effect::tunedResonators, {{0, 1}, {2, 0.2f}, {6, 1}, {8, 1}, {9, 1}}};
    const StereoSignal first = player.respond(0.1);
    EXPECT_GT(first.right[start(first.right)], 0);  // every other band is turned over
    EXPECT_LT(first.left[start(first.left)], 0);
}

TEST(Reverb, DisplaysTellTheirUnits) {
    struct Shown {
        int index;
        float value;
        std::string_view label, text;
    };
    const Rows<const EffectType&, std::vector<Shown>> cases = {
        {effect::reverb, {{2, 0.5f, "Time", "1.69 s"}, {4, 0.75f, "High EQ", "25 %"}}},
        {effect::hallReverb, {{3, 0.5f, "Pre Del", "100 ms"}, {6, 1.0f, "Hi EQ", "0 %"}}},
        {effect::plateReverb, {{2, 1.0f, "Time", "10.00 s"}}},
        {effect::roomReverb, {{2, 0.5f, "Time", "3.8 sec"}, {3, 0.5f, "Pre Del", "62.5 ms"}}},
        {effect::reverseReverb, {{1, 1.0f, "Sync", "ON"}, {2, 0.3f, "Time", "300 ms"}}},
        {effect::nonLinearReverb, {{2, 1.0f, "Time", "0.50 s"}}},
        {effect::earlyReflections, {{2, 1.0f, "Time", "250 ms"}}},
        {effect::tunedResonators, {{2, 1.0f, "Bands", "7"}, {3, 0.5f, "Root", "C3"}}},
        {effect::tunedResonators, {{4, 0.5f, "Detune", "+0 cent"}}},
        {effect::tunedResonators, {{5, 0.45f, "Spacing", "100 cent"}}},
        {effect::tunedResonators, {{5, 0.9f, "Spacing", "200 cent"}}},
        {effect::tunedResonators, {{5, 0.92f, "Spacing", "Minor"}}},
        {effect::tunedResonators, {{5, 0.96f, "Spacing", "Major"}}},
        {effect::tunedResonators, {{6, 0.5f, "Decay", "10.0 dB/s"}}},
        {effect::tunedResonators, {{10, 0.0f, "Key/Rel", "100 Fix"}}},
        {effect::tunedResonators, {{10, 0.75f, "Key/Rel", "50 Trk"}}},
    };
    for (const auto& [type, all] : cases)
        for (const auto& [index, value, label, text] : all) {
            EXPECT_EQ(shownEffectValue(type.number, index, {{index, value}}), text) << label;
            EXPECT_EQ(type.rows[static_cast<std::size_t>(index)].label, label);
        }
    EXPECT_EQ(shownEffectValue(effect::reverseReverb.number, 2, {{1, 1}, {2, 1}}), "8/4");
}

}  // namespace
}  // namespace stratovane
