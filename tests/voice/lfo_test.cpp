#include "voice/lfo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "measure/measure.h"
#include "part_fixture.h"

namespace stratovane {
namespace {

std::vector<float> values(Lfo& lfo, float halfCycles, int ticks) {
    Random random{7};
    std::vector<float> out;
    for (int i = 0; i < ticks; ++i) {
        lfo.advance(halfCycles, random);
        out.push_back(lfo.value);
    }
    return out;
}

// Eight ticks a cycle, from the start of the cycle and from 90 degrees.
TEST(Lfo, RegularWaves) {
    constexpr float r = 0.70710678f;
    const struct {
        LfoWave wave;
        float phase;
        std::vector<float> values;  // at the start and after each of nine ticks
    } cases[] = {
        {LfoWave::off, 0, std::vector<float>(10, 0.0f)},
        {LfoWave::constant, 0.4f, std::vector<float>(10, 1.0f)},
        {LfoWave::sine, 0, {0, r, 1, r, 0, -r, -1, -r, 0, r}},
        {LfoWave::sine, 0.25f, {1, r, 0, -r, -1, -r, 0, r, 1, r}},
        {LfoWave::triangle, 0, {0, 0.5f, 1, 0.5f, 0, -0.5f, -1, -0.5f, 0, 0.5f}},
        {LfoWave::triangle, 0.75f, {-1, -0.5f, 0, 0.5f, 1, 0.5f, 0, -0.5f, -1, -0.5f}},
        {LfoWave::sawtooth, 0, {1, 0.75f, 0.5f, 0.25f, 0, -0.25f, -0.5f, -0.75f, 1, 0.75f}},
        {LfoWave::sawtooth, 0.5f, {0, -0.25f, -0.5f, -0.75f, 1, 0.75f, 0.5f, 0.25f, 0, -0.25f}},
        {LfoWave::square, 0, {1, 1, 1, 1, -1, -1, -1, -1, 1, 1}},
    };
    for (const auto& c : cases) {
        Lfo lfo;
        lfo.reset(c.phase, c.wave);
        EXPECT_NEAR(lfo.value, c.values[0], 1e-6);
        const auto found = values(lfo, 0.25f, 9);
        for (std::size_t i = 0; i < 9; ++i)
            EXPECT_NEAR(found[i], c.values[i + 1], 1e-6)
                << static_cast<int>(c.wave) << " from " << c.phase << " tick " << i;
    }
}

TEST(Lfo, RandomWaves) {
    Lfo lfo;
    lfo.reset(0, LfoWave::sampleRandom);
    const auto steps = values(lfo, 0.5f, 2000);
    for (std::size_t i = 2; i + 1 < steps.size(); i += 2) {
        EXPECT_EQ(steps[i - 1], steps[i]);  // held for a half cycle
        const float up = std::fmod(steps[i + 1] - steps[i] + 4, 2.0f);
        EXPECT_TRUE(up > 0.49999f && up < 1.50001f) << up;
        EXPECT_LE(std::fabs(steps[i]), 1);
    }
    lfo.reset(0, LfoWave::sampleAlternate);
    const auto alternate = values(lfo, 1, 200);
    for (std::size_t i = 0; i < 200; ++i)
        EXPECT_TRUE(i % 2 ? alternate[i] >= 0 && alternate[i] < 1 : alternate[i] == -1);
    EXPECT_GT(std::set<float>(alternate.begin(), alternate.end()).size(), 90u);
    // Drifts: straight lines between turning points; the slow one strays at most 0.2 a time.
    for (const LfoWave wave : {LfoWave::randomDrift, LfoWave::slowDrift}) {
        Lfo drift;
        drift.reset(0, wave);
        const auto walk = values(drift, 0.125f, 80000);
        float least = 0, most = 0, strayed = 0;
        for (std::size_t i = 8; i < walk.size(); i += 8) {
            EXPECT_NEAR(walk[i - 2] - walk[i - 3], walk[i - 4] - walk[i - 5], 1e-5);
            strayed = std::max(strayed, std::fabs(walk[i] - walk[i - 8]));
            least = std::min(least, walk[i]);
            most = std::max(most, walk[i]);
        }
        EXPECT_GT(most, 0.7f);
        EXPECT_LT(least, -0.7f);
        EXPECT_LE(std::max(most, -least), 1.00001f);
        EXPECT_TRUE(wave == LfoWave::slowDrift ? strayed <= 0.20001f : strayed > 1.5f) << strayed;
    }
    Lfo none;
    none.reset(0.25f, LfoWave::sine);
    none.reset(0, static_cast<LfoWave>(12));
    for (const float v : values(none, 0.3f, 20)) EXPECT_EQ(v, 1);
}

constexpr int lfo1 = global::lfo1Wave;
constexpr float sine = 2.5f / 15.9f, sawtooth = 4.5f / 15.9f;
float sync(LfoSync mode) { return (static_cast<float>(mode) + 0.5f) / 4.9f; }

/// Frames between the sawtooth's jumps up, seen once a tick.
double sawPeriod(TestPart& part, const float& value, int frames) {
    std::vector<int> jumps;
    float last = value;
    for (int at = 0; at < frames; at += 32) {
        part.run(32);
        if (value > last + 1) jumps.push_back(at);
        last = value;
    }
    if (jumps.size() < 2) return 0;
    return static_cast<double>(jumps.back() - jumps.front()) /
           static_cast<double>(jumps.size() - 1);
}

// Part LFOs run at their rate in hertz or by tempo, with and without notes.
TEST(PartLfo, RunsAtItsRate) {
    const struct {
        LfoSync sync;
        float rate, tempo, hz;
    } cases[] = {
        {LfoSync::off, 0.5f, 120, 1},
        {LfoSync::eachNote, 1, 120, 30},
        {LfoSync::firstNote, 0.7f, 60, 3.8977f},
        {LfoSync::tempoAndBeat, 10.5f / 20.9f, 150, 2.5f},
        {LfoSync::tempoAndNote, 13.5f / 20.9f, 90, 3},
    };
    for (const double rate : {44100.0, 96000.0}) {
        for (const auto& c : cases) {
            TestPart part{1, rate};
            part.set(0, lfo1, sawtooth);
            part.set(0, lfo1 + 1, sync(c.sync));
            part.set(0, lfo1 + 2, c.rate);
            part.state.time.tempo = c.tempo;
            const PartStep& now = part.state.clock.now();
            const double frames = sawPeriod(part, now.lfo[0], static_cast<int>(4 * rate));
            EXPECT_NEAR(rate / frames / c.hz, 1, 0.002) << c.hz;
        }
    }
}

// A new note restarts them as "Sync" says, at their "Phase"; 0.5 * 1.1111 is 200 degrees.
TEST(PartLfo, RestartsByItsSync) {
    const struct {
        LfoSync sync;
        bool first, second;  // whether the first key and one more restart it
    } cases[] = {
        {LfoSync::off, false, false},          {LfoSync::firstNote, true, false},
        {LfoSync::eachNote, true, true},       {LfoSync::tempoAndNote, true, true},
        {LfoSync::tempoAndBeat, false, false},
    };
    const float start = std::sin(2 * 0.55555f * 3.14159265f);
    for (const auto& c : cases) {
        TestPart part;
        part.set(0, lfo1, sine);
        part.set(0, lfo1 + 1, sync(c.sync));
        part.set(0, lfo1 + 3, 0.5f);
        part.run(5000);
        for (const bool second : {false, true}) {
            const float before = part.state.clock.now().lfo[0];
            ASSERT_GT(std::fabs(before - start), 0.01f);
            part.on(second ? 64 : 60);
            const float after = part.state.clock.now().lfo[0];
            EXPECT_NEAR(after, (second ? c.second : c.first) ? start : before, 1e-4)
                << static_cast<int>(c.sync);
            part.run(3001);
        }
    }
    // At random phases, from a generator of its own, the same in every run.
    const auto randomStarts = [] {
        TestPart part;
        part.set(0, lfo1 + 1, sync(LfoSync::eachNote));
        part.set(0, lfo1 + 3, 1);
        std::set<float> starts;
        for (int note = 40; note < 60; ++note) {
            part.on(note);
            starts.insert(part.state.clock.now().lfo[0]);
        }
        return starts;
    };
    EXPECT_EQ(randomStarts().size(), 20u);
    EXPECT_EQ(randomStarts(), randomStarts());
}

// Steps fall on the same frames whatever restarts the LFO; voices read the last one at their tick.
TEST(PartLfo, IsReadAtTheStepBeforeATick) {
    TestPart part;
    part.set(0, lfo1, sawtooth);
    part.set(0, lfo1 + 1, sync(LfoSync::eachNote));
    part.set(0, lfo1 + 2, 1);
    const float perStep = part.state.patch.controls().lfo[0].freePerTick;
    part.run(40);
    part.on(60);
    part.run(8);  // the tick at frame 40 sees the restart, the step at 64 lies ahead
    EXPECT_NEAR(part.voice(0).step.lfo[0], 1, 1e-6);
    part.run(32);  // the tick at 72
    EXPECT_NEAR(part.voice(0).step.lfo[0], 1 - perStep, 1e-6);
}

constexpr int wave3 = 85, sync3 = 86, rate3 = 87, phase3 = 88;

TEST(Lfo3, StartsAtItsPhaseAndRunsAtItsRate) {
    TestPart part;
    part.set(1, wave3, sawtooth);
    part.set(1, sync3, sync(LfoSync::firstNote));
    part.set(1, phase3, 0.45f);  // half a cycle
    part.set(1, rate3, 0.7f);
    part.on(60);
    EXPECT_NEAR(part.voice(0).lfo3.value, 0, 1e-4);
    EXPECT_NEAR(44100 / sawPeriod(part, part.voice(0).lfo3.value, 176400), 3.8977, 0.01);
    // Twice as fast: a row adds depth 1 octave's logarithm to the factor 1.
    part.set(1, 172, 1.5f / 71.9f);
    part.set(1, 175, 7.5f / 15.9f);
    part.set(1, 176, 1);
    EXPECT_NEAR(44100 / sawPeriod(part, part.voice(0).lfo3.value, 176400), 3.8977 * 1.6931, 0.02);
    part.set(1, 176, 0);  // 1 - ln 2
    EXPECT_NEAR(44100 / sawPeriod(part, part.voice(0).lfo3.value, 176400), 3.8977 * 0.3069, 0.02);
    // Below 0 it stands.
    part.set(1, 173, 29.5f / 71.9f);
    part.set(1, 174, 1);
    part.run(64);
    const float stands = part.voice(0).lfo3.value;
    part.run(5000);
    EXPECT_EQ(part.voice(0).lfo3.value, stands);
    // By tempo: a quarter note is 0.4 s.
    part.set(1, 172, 0);
    part.set(1, 173, 0);
    part.set(1, sync3, sync(LfoSync::tempoAndBeat));
    part.set(1, rate3, 10.5f / 20.9f);
    part.state.time.tempo = 150;
    part.run(64);
    EXPECT_NEAR(44100 / sawPeriod(part, part.voice(0).lfo3.value, 176400), 2.5, 0.01);
}

TEST(Lfo3, RestartsWithALegatoNoteInEachNoteAlone) {
    for (const LfoSync mode : {LfoSync::firstNote, LfoSync::eachNote, LfoSync::tempoAndNote}) {
        for (const Retrigger how : {Retrigger::allModulation, Retrigger::filterAndAmp}) {
            TestPart part;
            part.set(1, tone::monoMode, monoMode(MonoMode::last));
            part.set(1, tone::legatoRetrigger, retrigger(how));
            part.set(1, wave3, sawtooth);
            part.set(1, sync3, sync(mode));
            part.on(60);
            part.run(3200);
            const float before = part.voice(0).lfo3.value;
            ASSERT_LT(before, 0.9f);
            part.on(64);
            const bool restarts = mode == LfoSync::eachNote && how == Retrigger::allModulation;
            EXPECT_EQ(part.voice(0).lfo3.value, restarts ? 1 : before);
        }
    }
    // Off, or a phase at random: each voice starts somewhere else.
    TestPart part;
    part.set(1, wave3, sawtooth);
    part.set(1, sync3, 0);
    std::set<float> starts;
    for (int note = 40; note < 56; ++note) part.on(note);
    for (int i = 0; i < part.active(); ++i) starts.insert(part.voice(i).lfo3.value);
    EXPECT_EQ(starts.size(), 16u);
}

}  // namespace
}  // namespace stratovane
