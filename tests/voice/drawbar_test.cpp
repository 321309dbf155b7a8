#include <gtest/gtest.h>

#include "content_part.h"
#include "measure/measure.h"
#include "voice/drawbar/drawbar_voice.h"

namespace stratovane {
namespace {

using measure::Signal;
constexpr int barFirst = 25, clickLength = 35, offClick = 36, keyClick = 34;
constexpr int percussionTrigger = 20, percussionOn = 21, loud = 22, fast = 23, third = 24;

double wheelHz(int pitchClass, int octave) {
    return 440 * std::exp2((24 + pitchClass - 69) / 12.0 + octave);
}

/// Sines with a whole number of periods in each loop, so that their pitch is `exactHz`.
struct Organ {
    static constexpr int frames = 20000;
    std::array<std::vector<std::int16_t>, 12> loops;

    Organ() {
        for (int k = 0; k < 12; ++k)
            for (int i = 0; i < frames; ++i)
                for (int j = 0; j < 8; ++j)
                    loops[static_cast<std::size_t>(k)].push_back(
                        static_cast<std::int16_t>(std::lround(
                            8000 * std::sin(2 * std::numbers::pi * exactHz(k, j) / 44100 * i))));
    }
    static double exactHz(int k, int octave) {
        return std::round(wheelHz(k, 0) / 44100 * frames) * 44100 / frames * (1 << octave);
    }
    Bytes item(float tuning = 0) const {
        ToneWheelLoops spans;
        for (std::size_t k = 0; k < 12; ++k) spans[k] = loops[k];
        return writeToneWheels(tuning, spans);
    }
};

const Organ& organ() {
    static const Organ one;
    return one;
}

struct DrawbarPart : testing::Test, ContentPart {
    void SetUp() override {
        put("Drawbars/020 Organ", BankFileSource{.items = {{"Set", "", organ().item(), {}}}});
    }
    /// Drawbars in display order; no clicks.
    void play(std::array<int, 9> bars, double rate = 44100) {
        ASSERT_NO_FATAL_FAILURE(start(ElementType::drawbar, sampleBank, rate));
        for (int i = 0; i < 9; ++i)
            part->set(1, barFirst + i, entry(bars[static_cast<std::size_t>(i)], 8.9f));
        part->set(1, keyClick, 0);
    }
    float percussionOf(int slot) const { return part->voice(slot).drawbar.percussion(); }
};

constexpr int weight(int n) { return n == 0 ? 0 : 32 * n * n + 200; }

TEST_F(DrawbarPart, EachDrawbarBringsItsPartialAtItsLevel) {
    // 16', 5 1/3', 8', 4', 2 2/3', 2', 1 3/5', 1 1/3', 1' over the key
    constexpr int semitones[] = {-12, 7, 0, 12, 19, 24, 28, 31, 36};
    for (const int key : {36, 48, 52, 61, 77}) {
        double reference = 0;
        for (int bar = 0; bar < 9; ++bar) {
            const int position = 8 - bar % 3;
            std::array<int, 9> bars{};
            bars[static_cast<std::size_t>(bar)] = position;
            play(bars);
            part->on(key);
            part->run(2000);
            const Signal x = part->run(1 << 15);
            const int wheel = key + semitones[bar];
            const double hz = Organ::exactHz(wheel % 12, wheel / 12 - 2);
            EXPECT_NEAR(measure::cents(measure::frequencyNear(x, 44100, hz), hz), 0, 0.05)
                << key << " " << bar;
            const double level = measure::levelAt(x, 44100, hz) / weight(position);
            if (bar == 0) reference = level;
            EXPECT_NEAR(level / reference, 1, 0.03) << key << " " << bar;
            EXPECT_LT(measure::inharmonicDb(measure::spectrum(x, 44100), hz, 20000), -60);
        }
    }
}

TEST_F(DrawbarPart, SoundsAtTheNotesPitchAtEveryRateAndBeyondTheKeys) {
    for (const double rate : {22050.0, 48000.0, 96000.0})
        for (const int note : {24, 60, 100, 125}) {
            play({0, 0, 8, 0, 0, 0, 0, 0, 0}, rate);
            part->on(note);
            part->run(2000);
            const Signal x = part->run(1 << 15);
            const int key = std::clamp(note, 36, 120);
            const int octave = key / 12 - 2 - (key > 114);  // folded back at the top
            const double hz = Organ::exactHz(key % 12, octave) * std::exp2((note - key) / 12.0);
            if (hz > 0.4 * rate) continue;
            EXPECT_NEAR(measure::cents(measure::frequencyNear(x, rate, hz), hz), 0, 0.1)
                << rate << " " << note;
        }
}

TEST(DrawbarWeights, FoldBackAtTheTopOfTheKeyboard) {
    constexpr std::array<std::int32_t, 9> all{8, 8, 8, 8, 8, 8, 8, 8, 8};
    constexpr std::int32_t w = 2248;
    const struct {
        int key;
        WheelWeights weights;
    } cases[] = {
        {78, {w, w, w, w, w, w, w, w, w}},
        {79, {w, w, w, w + w / 2, 0, w, w, w, w}},
        {84, {w, w, w, w + w / 2, 0, w, w + w / 2, 0, w}},
        {91, {w, w, w + (w + w / 2) / 2, 0, 0, w, w + w / 2, 0, w}},
        {96, {w, w, w + 1686, 0, 0, 0, (w + w / 2) / 2 + w, 0, w}},
        {103, {w, w + (w + 1686) / 2, 0, 0, 0, 0, 1686 + w, 0, w}},
        {115, {w + (w + 1967) / 2, 0, 0, 0, 0, 0, 1686 + w, 0, w}},
    };
    for (const auto& c : cases) EXPECT_EQ(foldedWeights(all, c.key), c.weights) << c.key;
}

/// Wheels whose octave is their value tell which ones a key reads, whatever its weights.
TEST(DrawbarWeights, NoKeyReadsPastTheLastWheel) {
    std::array<std::vector<std::int16_t>, 12> loops;
    for (auto& loop : loops)
        for (int i = 0; i < 40; ++i) loop.push_back(static_cast<std::int16_t>(1 + i % 8));
    ToneWheelLoops spans;
    for (std::size_t k = 0; k < 12; ++k) spans[k] = loops[k];
    ContentFault fault;
    const auto wheels = readToneWheels(writeToneWheels(0, spans), fault);
    constexpr std::array<std::int32_t, 9> all{8, 8, 8, 8, 8, 8, 8, 8, 8};
    constexpr int order[] = {-12, 0, 12, 24, 36, 7, 19, 31, 28};  // over the key, by slot
    Random random{3};
    for (int key = lowestDrawbarKey; key <= highestDrawbarKey; ++key) {
        ToneWheelMix mix;
        mix.start(*wheels, key, random);
        mix.setIncrement(4 * 65536 - 1);
        const WheelWeights weights = foldedWeights(all, key);
        for (std::size_t slot = 0; slot < 9; ++slot) {
            if (weights[slot] == 0) continue;
            WheelWeights alone{};
            alone[slot] = 1;
            std::int32_t sums[tickFrames];
            mix.render(alone, sums);
            int octave = (key + order[slot]) / 12 - 2;
            if (key > 95 && (slot == 6 || slot == 5)) octave -= key == 120 ? 3 : key > 107 ? 2 : 1;
            if (slot == 8) octave = std::min(octave, 7);
            for (const std::int32_t sum : sums) ASSERT_EQ(sum, octave + 1) << key << " " << slot;
        }
    }
}

TEST_F(DrawbarPart, PercussionDecaysAtItsTimesOnItsHarmonic) {
    for (const bool isFast : {false, true})
        for (const bool onThird : {false, true}) {
            play({});
            part->set(1, percussionOn, 1);
            part->set(1, fast, isFast);
            part->set(1, third, onThird);
            part->on(60);
            part->run(1024);
            const Signal x = part->run(40000);
            const double hz = onThird ? Organ::exactHz(7, 4) : Organ::exactHz(0, 4);
            EXPECT_NEAR(measure::frequencyNear(Signal(x.begin(), x.begin() + 8192), 44100, hz), hz,
                        1);
            const double perTimeConstant = 20 * std::log10(std::exp(1.0));
            EXPECT_NEAR(measure::decaySeconds(x, 44100, 2 * perTimeConstant, 0.005) / 2,
                        isFast ? 0.0676 : 0.1838, isFast ? 0.004 : 0.006);
        }
}

TEST_F(DrawbarPart, PercussionTriggers) {
    enum { normal, byVelocity, mono, poly };
    const struct {
        int mode, velocity;
        bool strikesAgain, runsOn;
    } cases[] = {{normal, 127, false, true},
                 {byVelocity, 80, false, true},
                 {byVelocity, 81, true, false},
                 {mono, 127, false, false},
                 {poly, 10, true, false}};
    for (const auto& c : cases) {
        play({0, 0, 8});
        part->set(1, percussionTrigger, entry(c.mode, 3.9f));
        part->set(1, percussionOn, 1);
        part->on(60, 50);
        EXPECT_EQ(percussionOf(0), 4000);
        part->run(4410);
        const float running = percussionOf(0);
        part->on(64, c.velocity);
        EXPECT_EQ(percussionOf(1), c.strikesAgain ? 4000 : c.runsOn ? running : 0) << c.mode;
        // Keys held by the pedal count, those let go do not.
        part->control(64, 127);
        part->off(60);
        part->off(64);
        part->run(441);
        part->on(67, 50);
        EXPECT_EQ(percussionOf(2) == 4000, c.mode == poly) << c.mode;
        part->control(64, 0);
        part->off(67);
        part->on(60, 50);
        EXPECT_EQ(percussionOf(part->active() - 1), 4000) << c.mode;
    }
}

TEST_F(DrawbarPart, LoudPercussionTakesTheDrawbarsDown) {
    const auto levelOf = [&](float isOn, float isLoud) {
        play({8, 0, 0, 0, 0, 0, 0, 0, 0});
        part->set(1, percussionOn, isOn);
        part->set(1, loud, isLoud);
        part->on(60);
        part->run(44100);
        return measure::levelAt(part->run(1 << 14), 44100, Organ::exactHz(0, 2));
    };
    const double plain = levelOf(0, 0);
    EXPECT_NEAR(levelOf(1, 0), plain, 1e-4 * plain);
    EXPECT_NEAR(levelOf(0, 1), plain, 1e-4 * plain);
    EXPECT_NEAR(levelOf(1, 1), plain / 2, 1e-4 * plain);
}

/// Told by the ticks in which a sound and the same one without clicks differ.
TEST_F(DrawbarPart, ClicksLastTheirTicksAndReturnAtTheRelease) {
    const auto record = [&](float level, float length, int velocity) {
        play({8, 0, 8, 8, 0, 8, 0, 0, 8});
        part->set(1, keyClick, level);
        part->set(1, clickLength, length);
        part->set(1, offClick, 0.7f);
        part->set(1, tone::release, 0.3f);
        part->on(60, velocity);
        Signal x = part->run(1000);
        part->off(60);
        const Signal rest = part->run(1000);
        x.insert(x.end(), rest.begin(), rest.end());
        return x;
    };
    const struct {
        float length;
        int velocity, ticks, releaseTicks;
    } cases[] = {{1, 100, 7, 7}, {0.5f, 100, 4, 4}, {1, 9, 10, 7}};
    for (const auto& c : cases) {
        const Signal clean = record(0, c.length, c.velocity),
                     clicked = record(1, c.length, c.velocity);
        std::vector<int> differing;
        for (std::size_t i = 0; i < clean.size(); ++i)
            if (clean[i] != clicked[i]) differing.push_back(static_cast<int>(i));
        ASSERT_FALSE(differing.empty());
        const auto inHalf = [&](int from) {
            std::vector<int> ticks;
            for (const int frame : differing)
                if (frame >= from && frame < from + 1000 &&
                    (ticks.empty() || ticks.back() != frame / 32))
                    ticks.push_back(frame / 32);
            return ticks;
        };
        // The first tick counts down before it sounds.
        EXPECT_EQ(inHalf(0).size(), static_cast<std::size_t>(c.ticks - 1)) << c.length;
        EXPECT_EQ(inHalf(1000).size(), static_cast<std::size_t>(c.releaseTicks)) << c.length;
        EXPECT_EQ(inHalf(1000).front(), 32);
    }
}

TEST_F(DrawbarPart, DrawbarsReachSoundingNotesAndMissingWheelsRefuseThem) {
    play({});
    part->on(60);
    EXPECT_LT(measure::peak(part->run(4000)), 1e-6);
    part->set(1, barFirst + 2, 1);
    EXPECT_GT(measure::peak(part->run(4000)), 0.01);
    start(ElementType::drawbar, 33);
    part->on(60);
    EXPECT_EQ(part->active(), 0);
}

}  // namespace
}  // namespace stratovane
