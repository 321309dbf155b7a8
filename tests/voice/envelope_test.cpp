#include "voice/envelope.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "measure/measure.h"
#include "voice/modulation_envelope.h"

namespace stratovane {
namespace {

constexpr float rate = 48000, tickSeconds = 32 / rate;
constexpr float sharpest = 0.000912f;  // the smallest decay curve

/// An envelope on a held or released key; times are read in ticks and told in seconds.
struct Player {
    EnvelopeControls controls;
    EnvelopeContext context;
    SegmentEnvelope envelope;

    explicit Player(const EnvelopeControls& c) : controls{c} {
        if (controls.decayCurve == 0) controls.decayCurve = sharpest;
        context.controls = &controls;
        context.tickSeconds = tickSeconds;
        envelope.peak = 1;
        envelope.setStage(0, context);
    }
    Player(const Player&) = delete;
    measure::Signal run(float seconds) {
        measure::Signal levels;
        for (int i = 0; i < static_cast<int>(seconds / tickSeconds); ++i) {
            envelope.tick(context);
            levels.push_back(envelope.level);
        }
        return levels;
    }
};

float seconds(std::size_t tick) { return static_cast<float>(tick + 1) * tickSeconds; }

TEST(Envelope, AttackReachesThePeakInItsTime) {
    for (float attack : {0.0f, 0.003f, 0.05f, 0.5f, 4.0f}) {
        Player p{{.attackSeconds = attack, .sustain = 1}};
        const auto levels = p.run(attack * 1.2f + 0.01f);
        const float reached = seconds(measure::firstAbove(levels, 0.9999));
        EXPECT_NEAR(reached, attack * 1.01f, attack * 0.02f + 1.5f * tickSeconds) << attack;
        EXPECT_FLOAT_EQ(levels.back(), 1);
        // Nearly straight: half the time gives about half the level.
        if (attack > 0.01f) {
            EXPECT_NEAR(levels[static_cast<std::size_t>(attack / 2 / tickSeconds)], 0.54f, 0.03f);
        }
    }
}

TEST(Envelope, VelocityKeyAndTempoScaleTimes) {
    const EnvelopeControls c{.attackSeconds = 0.1f,
                             .decaySeconds = 0.2f,
                             .sustain = 0.5f,
                             .decayCurve = 0.01f,
                             .velocityToAttack = -2,
                             .velocityToDecay = 1,
                             .decayKeytrack = -1};
    Player plain{c}, scaled{c};
    scaled.context.velocity = 0.5f;
    scaled.context.keyPitch = 1;
    scaled.context.timeFactor = 2;
    scaled.envelope.setStage(0, scaled.context);
    const auto a = plain.run(3), b = scaled.run(3);
    const auto peakA = measure::firstAbove(a, 0.9999), peakB = measure::firstAbove(b, 0.9999);
    EXPECT_NEAR(static_cast<float>(peakB) / static_cast<float>(peakA), 2 * std::exp(-1.0f), 0.02f);
    const float decayA = seconds(measure::firstBelow(a, 0.501, peakA) - peakA);
    const float decayB = seconds(measure::firstBelow(b, 0.501, peakB) - peakB);
    EXPECT_NEAR(decayB / decayA, 2 * std::exp(-1 + 0.5f), 0.05f);
}

TEST(Envelope, DecayTakesAboutTheSameTimeForEveryCurve) {
    std::vector<float> halfWay;
    for (float curve : {std::exp(-7.0f), std::exp(-4.0f), std::exp(-1.0f), std::exp(2.0f)}) {
        Player p{{.decaySeconds = 1, .sustain = 0.25f, .decayCurve = curve}};
        const auto levels = p.run(3);
        const auto reached = measure::firstBelow(levels, 0.25001);
        EXPECT_NEAR(seconds(reached), 1.2f, 0.4f) << curve;
        EXPECT_FLOAT_EQ(levels.back(), 0.25f);
        halfWay.push_back(levels[reached / 2]);
    }
    for (std::size_t i = 1; i < halfWay.size(); ++i) EXPECT_GT(halfWay[i], halfWay[i - 1]);
    EXPECT_NEAR(halfWay.back(), 0.625f, 0.03f);  // the largest is nearly straight
}

TEST(Envelope, HighSustainSkipsTheDecay) {
    Player skips{{.decaySeconds = 1, .sustain = 0.99f}},
        decays{{.decaySeconds = 1, .sustain = 0.97f}};
    EXPECT_FLOAT_EQ(skips.run(0.01f).front(), 0.99f);
    EXPECT_FLOAT_EQ(decays.run(0.01f).front(), 1);
}

TEST(Envelope, SustainFadesUpDownOrHolds) {
    struct Row {
        float fade, after, tolerance;
        VoiceState state;
    };
    // 96.8 % of the way is gone after the fade time.
    for (const Row& row : {Row{0, 0.5f, 1e-6f, VoiceState::sounding},
                           Row{0.5f, 0.984f, 0.003f, VoiceState::sounding},
                           Row{-0.5f, 0.016f, 0.003f, VoiceState::ending}}) {
        Player p{{.sustain = 0.5f, .fadeSeconds = row.fade}};
        EXPECT_NEAR(p.run(0.5f + 3 * tickSeconds).back(), row.after, row.tolerance) << row.fade;
        EXPECT_EQ(p.envelope.state, row.state) << row.fade;
    }
}

TEST(Envelope, SilentSustainEndsTheVoiceUnlessItFadesUp) {
    Player ends{{.decaySeconds = 0.1f, .sustain = 0, .decayCurve = 0.1f}};
    ends.run(0.01f);
    EXPECT_EQ(ends.envelope.state, VoiceState::ending);
    EXPECT_LT(ends.run(0.5f).back(), 0.0001f);
    Player rises{{.decaySeconds = 0.1f, .sustain = 0, .fadeSeconds = 0.3f, .decayCurve = 0.1f}};
    EXPECT_GT(rises.run(1).back(), 0.9f);
    EXPECT_EQ(rises.envelope.state, VoiceState::sounding);
}

TEST(Envelope, ReleaseAndMuteFadeTakeTheirTimes) {
    struct Row {
        int stage;
        float time;
        VoiceState state;
    };
    for (const Row& row : {Row{3, 0.4f, VoiceState::ending}, Row{4, 0.02f, VoiceState::fading},
                           Row{5, 0.1f, VoiceState::ending}}) {
        Player p{{.decaySeconds = 0.1f, .releaseSeconds = 0.4f, .sustain = 1}};
        p.context.muteFadeSeconds = 0.02f;
        p.run(0.1f);
        p.envelope.setStage(row.stage, p.context);
        EXPECT_EQ(p.envelope.state, row.state);
        const auto levels = p.run(4);
        EXPECT_NEAR(seconds(measure::firstBelow(levels, std::exp(-3.45))), row.time, tickSeconds);
        EXPECT_GT(levels.back(), 0);  // never a denormal number
    }
    Player slowed{{.releaseSeconds = 0.4f, .sustain = 1}};
    slowed.run(0.1f);
    slowed.envelope.setStage(3, slowed.context);
    slowed.envelope.scaleSpeed(0.5f);
    EXPECT_NEAR(seconds(measure::firstBelow(slowed.run(4), std::exp(-3.45))), 0.8f, 2e-3f);
}

TEST(Envelope, LegatoStartsFromTheLevelItHas) {
    Player p{{.attackSeconds = 0.1f, .sustain = 0.5f, .legatoAttackSeconds = 0.3f}};
    p.run(0.5f);
    p.envelope.setStage(3, p.context);
    EXPECT_EQ(p.envelope.state, VoiceState::ending);
    p.envelope.level = 0.2f;
    p.envelope.setStage(-1, p.context);
    EXPECT_EQ(p.envelope.state, VoiceState::sounding);
    const auto levels = p.run(1);
    EXPECT_GT(levels.front(), 0.2f);
    EXPECT_LT(levels.front(), 0.21f);
    EXPECT_NEAR(seconds(measure::firstAbove(levels, 0.999)), 0.4f * 0.8f, 0.02f);
}

TEST(Envelope, ClickStartsAtThePeakAndReleaseStartedVoicesSkipTheSustain) {
    Player click{{.attackSeconds = 1, .decaySeconds = 0.5f, .sustain = 0.2f}};
    click.envelope.setStage(1, click.context);
    EXPECT_FLOAT_EQ(click.envelope.level, 1);
    EXPECT_LT(click.run(0.1f).back(), 0.9f);

    Player released{{.releaseSeconds = 0.1f, .sustain = 0.8f}};
    released.context.startedByRelease = true;
    EXPECT_LT(released.run(0.15f).back(), 0.05f);
    EXPECT_EQ(released.envelope.state, VoiceState::ending);
}

TEST(Envelope, PeaksFollowVelocity) {
    struct Row {
        float amount, velocity, amplitude, filter;
    };  // filter by (velocity - 64) / 63
    for (const Row& row : {Row{0, 1, 0.62f, 1}, Row{0, 127, 0.62f, 1}, Row{1, 1, 0.1f, 0},
                           Row{1, 127, 1.1f, 2}, Row{-1, 1, 1.1f, 2}, Row{-1, 127, 0.1f, 0},
                           Row{2, 127, 1.06f, 2}, Row{2, 1, 0.06f, 0}, Row{2, 64, 0.31f, 0.5f}}) {
        EXPECT_NEAR(amplitudePeak(row.amount, row.velocity, 1), row.amplitude, 1e-6f);
        EXPECT_NEAR(amplitudePeak(row.amount, row.velocity, 0.5f), row.amplitude / 2, 1e-6f);
        EXPECT_NEAR(filterPeak(row.amount, (row.velocity - 64) / 63), row.filter, 1e-6f);
    }
}

TEST(ModulationEnvelope, WalksThroughItsLevels) {
    const ModulationEnvelopeControls c{.levels = {0, 1, -1, 0.5f, 0.25f}, .ticks = {8, 16, 32, 8}};
    for (float factor : {1.0f, 2.0f}) {
        for (float multiplier : {1.0f, 0.5f, 2.0f}) {
            ModulationEnvelope e;
            e.level = c.levels[0];
            e.setStage(0, c, factor);
            int tick = 0;
            const auto advance = [&](float ticks) {
                for (; static_cast<float>(tick) * multiplier < ticks * factor; ++tick)
                    e.tick(multiplier, c, factor);
            };
            advance(4);
            EXPECT_NEAR(e.level, 0.5f, 1e-5f);
            advance(8);
            EXPECT_NEAR(e.level, 1, 1e-5f);
            advance(16);
            EXPECT_NEAR(e.level, 0, 1e-5f);
            advance(40);
            EXPECT_NEAR(e.level, -0.25f, 1e-5f);
            advance(1000);
            EXPECT_FLOAT_EQ(e.level, 0.5f);
            e.setStage(4, c, factor);
            tick = 0;
            advance(4);
            EXPECT_NEAR(e.level, 0.375f, 1e-5f);
            advance(100);
            EXPECT_FLOAT_EQ(e.level, 0.25f);
        }
    }
}

TEST(ModulationEnvelope, HoldsAtRateZeroAndReleasesFromAnyStage) {
    const ModulationEnvelopeControls c{.levels = {0, 1, -1, 0.5f, -0.5f}, .ticks = {10, 20, 40, 8}};
    for (int before : {3, 15, 40, 200}) {
        ModulationEnvelope e;
        e.setStage(0, c, 1);
        for (int i = 0; i < before; ++i) e.tick(1, c, 1);
        const float held = e.level;
        for (int i = 0; i < 50; ++i) e.tick(0, c, 1);
        EXPECT_EQ(e.level, held);
        e.setStage(4, c, 1);
        EXPECT_EQ(e.level, held);
        for (int i = 0; i < 4; ++i) e.tick(1, c, 1);
        EXPECT_NEAR(e.level, (held - 0.5f) / 2, 1e-5f);
        for (int i = 0; i < 4; ++i) e.tick(1, c, 1);
        EXPECT_FLOAT_EQ(e.level, -0.5f);
    }
}

}  // namespace
}  // namespace stratovane
