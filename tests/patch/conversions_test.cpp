#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "patch/piano_layers.h"

namespace stratovane {
namespace {

struct Conversions : testing::Test {
    EngineShared shared;
    Patch patch{shared};
    const PatchControls& controls = patch.controls();
    const ElementControls& sound = patch.element(1).controls();

    void SetUp() override { patch.setElementCount(1); }
};

using P = PatchControls;
using E = ElementControls;

TEST_F(Conversions, OfThePatch) {
    const struct {
        int index;
        float v;
        float (*read)(const P&);
        float expected;
    } cases[] = {
        {3, 1.0f, [](const P& c) { return float(c.glide); }, 3},
        {55, 0.0f, [](const P& c) { return float(c.transpose); }, -36},
        {56, 1.0f, [](const P& c) { return c.finePitch; }, 0.057762265f},
        {56, 0.5f, [](const P& c) { return c.finePitch; }, 0},
        {58, 1.0f, [](const P& c) { return float(c.voiceLimit); }, 64},
        {61, 1.0f, [](const P& c) { return float(c.output); }, 32},
        {61, 0.05f, [](const P& c) { return float(c.output); }, 1},
        {65, 0.5f, [](const P& c) { return c.sends[2]; }, 0.25f},
        {67, 0.5f, [](const P& c) { return c.gain; }, 0.99998f},  // trim 0.7071: unity
        {59, 1.0f, [](const P& c) { return c.gain; }, 2},
        {69, 1.0f, [](const P& c) { return float(c.redamper); }, 127},
        {70, 1.0f, [](const P& c) { return float(c.lfoRateFlags); }, 7},
        {71, 1.0f, [](const P& c) { return c.pianoCharacter; }, 0.625f},
        {74, 1.0f, [](const P& c) { return float(c.bendDown); }, 15},
        {77, 1.0f, [](const P& c) { return float(c.tuning[0].item); }, 128},
        {82, 0.0f, [](const P& c) { return float(c.tuning[1].root); }, -12},
        {83, 0.0f, [](const P& c) { return c.tuning2Depth; }, -4},
        {87, 0.5f, [](const P& c) { return c.lfo[0].freePerTick; }, 0.00145125f},
        {91, 1.0f, [](const P& c) { return c.lfo[1].freePerTick; }, 0.0435377f},
        {91, 0.5f, [](const P& c) { return c.lfo[1].tempoPerBeat; }, 1},
    };
    for (const auto& c : cases) {
        patch.store(0, c.index, c.v);
        EXPECT_NEAR(c.read(controls), c.expected, 1e-5 * std::max(1.0f, std::fabs(c.expected)))
            << c.index << " at " << c.v;
    }
    shared.tuningSemitones = -0.5f;
    patch.refreshTuning();
    EXPECT_FLOAT_EQ(controls.finePitch, -0.5f * 0.057762265f);
    patch.store(0, global::firstStep + 5 * 15 + 1, 1.0f);
    EXPECT_EQ(patch.arpeggiator().steps16[15].velocity, 2.0f);
    EXPECT_EQ(patch.arpeggiator().steps16[0].sequence2, 63);
    EXPECT_EQ(patch.arpeggiator().values[ArpeggiatorSettings::rate], 0.8f);
}

TEST_F(Conversions, OfElements) {
    constexpr auto effect = ElementType::effect, drawbar = ElementType::drawbar,
                   sample = ElementType::sample, wavetable = ElementType::wavetable,
                   fm = ElementType::fm, analog = ElementType::analog;
    const struct {
        ElementType type;
        int index;
        float v;
        float (*read)(const E&);
        float expected;
    } cases[] = {
        {analog, 55, 1.0f, [](const E& c) { return float(c.trigger); }, 0},
        {analog, 55, 0.6f, [](const E& c) { return float(c.trigger); }, 9},
        {analog, 61, 1.0f, [](const E& c) { return c.unisonDetune; }, 0.05776227f},
        {analog, 63, 1.0f, [](const E& c) { return float(c.noteDelay); }, 0},
        {analog, 65, 1.0f, [](const E& c) { return c.velocityToDelay; }, 1.5f},
        {analog, 72, 1.0f, [](const E& c) { return c.pitchOffset; }, 0.5f * 0.05776227f},
        {analog, 70, 0.75f, [](const E& c) { return c.pitchOffset; }, 2 * 0.6931472f},
        {analog, 73, 0.5f, [](const E& c) { return c.pitchKeytrack; }, 1},
        {analog, 74, 1.0f, [](const E& c) { return c.randomPitch; }, 0.6931471f},
        {analog, 78, 0.5f, [](const E& c) { return c.glideCoefficient; }, 0.0025002705f},
        {analog, 78, 0.0f, [](const E& c) { return c.glideCoefficient; }, 1},
        {analog, 79, 1.0f, [](const E& c) { return c.velocityToGlide; }, 3.465736f},
        {analog, 80, 0.0f, [](const E& c) { return c.attackBend; }, -36 * 0.05776227f},
        {analog, 87, 0.5f, [](const E& c) { return c.lfo3.freePerTick; }, 0.00145125f},
        {analog, 93, 0.0f, [](const E& c) { return c.modulation.levels[2]; }, -1},
        {analog, 97, 1.0f, [](const E& c) { return c.modulation.levels[4]; }, 1},
        {analog, 96, 0.5f, [](const E& c) { return c.modulation.ticks[3]; }, 1379.125f},
        {analog, 90, 0.0f, [](const E& c) { return c.modulation.ticks[0]; }, 1},
        {analog, 103, 1.0f, [](const E& c) { return float(c.filterMode); }, 8},
        {analog, 106, 0.5f, [](const E& c) { return c.cutoff; }, -1.6615647f},
        {analog, 107, 0.5f, [](const E& c) { return c.cutoffKeytrack; }, 1},
        {analog, 109, 1.0f, [](const E& c) { return c.randomCutoff; }, 0.5f},
        {analog, 110, 1.0f, [](const E& c) { return c.envelopeToCutoff; }, 6.931472f},
        {analog, 112, 0.5f, [](const E& c) { return c.filterEnvelope.decaySeconds; }, 1},
        {analog, 115, 1.0f, [](const E& c) { return c.filterEnvelope.releaseSeconds; }, 32},
        {analog, 114, 0.6f, [](const E& c) { return c.filterEnvelope.fadeSeconds; }, 20.085537f},
        {analog, 129, 0.3f, [](const E& c) { return c.ampEnvelope.fadeSeconds; }, -2.7182818f},
        {analog, 129, 0.5f, [](const E& c) { return c.ampEnvelope.fadeSeconds; }, 0},
        {analog, 131, 0.5f, [](const E& c) { return c.ampEnvelope.decayCurve; }, 0.0820850f},
        {analog, 132, 1.0f, [](const E& c) { return c.ampEnvelope.velocityToLevel; }, 2},
        {analog, 118, 1.0f, [](const E& c) { return c.filterEnvelope.velocityToAttack; }, -4},
        {analog, 119, 0.0f, [](const E& c) { return c.filterEnvelope.velocityToRelease; }, 2},
        {analog, 134, 0.0f, [](const E& c) { return c.ampEnvelope.velocityToDecay; }, 4},
        {analog, 120, 1.0f, [](const E& c) { return c.filterEnvelope.releaseKeytrack; }, -2},
        // The release follows the decay's key scaling only when its own control is at 0.
        {analog, 137, 0.0f, [](const E& c) { return c.ampEnvelope.releaseKeytrack; }, 0},
        {analog, 135, 0.0f, [](const E& c) { return c.ampEnvelope.releaseKeytrack; }, 0.6f},
        {analog, 137, 0.02f, [](const E& c) { return c.ampEnvelope.releaseKeytrack; }, 1.92f},
        {analog, 135, 1.0f, [](const E& c) { return c.ampEnvelope.releaseKeytrack; }, 1.92f},
        {analog, 124, 0.5f, [](const E& c) { return c.muteFadeSeconds; }, 0.25f},
        {analog, 139, 1.0f, [](const E& c) { return c.level; }, 2},
        {analog, 144, 1.0f, [](const E& c) { return float(c.priority); }, 6},
        {analog, 148, 0.0f, [](const E& c) { return float(c.undampedFrom); }, 128},
        {analog, 148, 0.5f, [](const E& c) { return float(c.undampedFrom); }, 64},
        {effect, 19, 0.5f, [](const E& c) { return float(c.effect.type); }, 64},
        {effect, 20, 1.0f, [](const E& c) { return float(c.effect.auxOut); }, 15},
        {effect, 24, 0.5f, [](const E& c) { return c.effect.sends[3]; }, 1},
        {drawbar, 18, 0.5f, [](const E& c) { return float(c.drawbar.bank); }, 64},
        {drawbar, 33, 0.5f, [](const E& c) { return float(c.drawbar.bars[8]); }, 4},
        {drawbar, 34, 1.0f, [](const E& c) { return c.drawbar.clickLevel; }, 6},
        {drawbar, 35, 0.5f, [](const E& c) { return c.drawbar.clickSamples; }, 4.1895f},
        {sample, 18, 0.08f, [](const E& c) { return float(c.sample.bank); }, 10},
        {sample, 23, 1.0f, [](const E& c) { return c.sample.velocity; }, 0.1905f},
        {sample, 24, 0.5f, [](const E& c) { return c.sample.random; }, 6},
        {sample, 29, 1.0f, [](const E& c) { return c.ampEnvelope.legatoAttackSeconds; }, 0.25f},
        {sample, 30, 1.0f, [](const E& c) { return c.filterEnvelope.legatoAttackSeconds; }, 0.25f},
        {sample, 33, 0.5f, [](const E& c) { return float(c.sample.velocityOffset); }, 0},
        {sample, 33, 1.0f, [](const E& c) { return float(c.sample.velocityOffset); }, 128},
        {sample, 34, 0.5f, [](const E& c) { return c.sample.velocityScale; }, 1},
        {wavetable, 22, 0.75f, [](const E& c) { return c.wavetable.ratio2; }, 2},
        {wavetable, 23, 1.0f, [](const E& c) { return c.wavetable.ratio2; }, 1.0293022f},
        {wavetable, 24, 1.0f, [](const E& c) { return float(c.wavetable.aliasing); }, 16383},
        {wavetable, 28, 1.0f, [](const E& c) { return float(c.wavetable.wave2); }, 6},
        {fm, 17, 0.5f, [](const E& c) { return c.fm.operators[0].coarse; }, 6},
        {fm, 17, 0.5000001f, [](const E& c) { return c.fm.operators[0].coarse; }, 6},
        {fm, 25, 1.0f, [](const E& c) { return c.fm.operators[1].coarse; }, 32},
        {fm, 26, 1.0f, [](const E& c) { return c.fm.operators[1].fine; }, 0.5f},
        {fm, 28, 0.5f, [](const E& c) { return c.fm.operators[1].depth; }, 0.75f},
        {fm, 23, 1.0f, [](const E& c) { return c.fm.operators[0].breakpoint; }, 127.9f},
        {fm, 32, 0.25f, [](const E& c) { return c.fm.operators[1].highScale; }, -0.25f},
        {fm, 27, 0.25f, [](const E& c) { return c.fm.keytrack; }, 0.75f},
        {fm, 33, 0.2f, [](const E& c) { return c.fm.envelopePerTick; }, 0.01552449f},
        {fm, 35, 0.05f, [](const E& c) { return c.fm.carrierHz; }, 0},
        {fm, 35, 1.0f, [](const E& c) { return c.fm.carrierHz; }, 50},
        {analog, 18, 1.0f, [](const E& c) { return c.analog.mix1; }, -1},
        {analog, 21, 0.5f, [](const E& c) { return c.analog.mix1; }, 0.25f},
        {analog, 19, 1.0f, [](const E& c) { return float(c.analog.wave); }, 6},
        {analog, 28, 1.0f, [](const E& c) { return float(c.analog.wave3); }, 2},
        {analog, 20, 0.1f, [](const E& c) { return c.analog.leak; }, 0.99908283f},
        {analog, 25, 0.75f, [](const E& c) { return c.analog.ratio2; }, 2},
        {analog, 24, 1.0f, [](const E& c) { return c.analog.minimumPulseWidth; }, 0.101f},
        {analog, 30, 1.0f, [](const E& c) { return c.analog.sub; }, 0.7079458f},
        {analog, 32, 1.0f, [](const E& c) { return c.analog.filterMod; }, 0.68f},
        {analog, 35, 1.0f, [](const E& c) { return c.analog.filterDistortion; }, 0.5f},
        {analog, 37, 1.0f, [](const E& c) { return float(c.analog.mute3); }, 1},
    };
    for (const auto& c : cases) {
        if (patch.element(1).type() != c.type ||
            (c.index != elementIndex::decayKeytrack && c.index != elementIndex::releaseKeytrack))
            patch.initElement(1, c.type);
        patch.store(1, c.index, c.v);
        EXPECT_NEAR(c.read(sound), c.expected, 2e-6 * std::max(1.0f, std::fabs(c.expected)))
            << c.index << " at " << c.v << " of type " << int(c.type);
    }
}

TEST_F(Conversions, FollowTheSampleRate) {
    patch.initElement(1, ElementType::analog);
    patch.store(1, elementIndex::cutoff, 0.5f);
    const float cutoff = sound.cutoff, lfo = controls.lfo[1].freePerTick;
    const float ticks = sound.modulation.ticks[3], lfo3 = sound.lfo3.freePerTick;
    patch.setSampleRate(88200);
    EXPECT_NEAR(sound.cutoff, cutoff - std::log(2.0f), 1e-6);
    EXPECT_NEAR(sound.modulation.ticks[3], 2 * ticks - 1, 1e-3);
    EXPECT_FLOAT_EQ(sound.lfo3.freePerTick, lfo3 / 2);
    EXPECT_FLOAT_EQ(controls.lfo[1].freePerTick, lfo / 2);
    patch.setSampleRate(10);  // e^(7 + 3) leaks more than all
    patch.store(1, 20, 1.0f);
    EXPECT_EQ(sound.analog.leak, 0.0f);
}

TEST_F(Conversions, LimitWhatIsSet) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const std::pair<float, float> cases[] = {{1.3f, 1}, {-0.2f, 0},    {0.7f, 0.7f},
                                             {nan, 0},  {infinity, 1}, {-infinity, 0}};
    for (const auto& [given, kept] : cases) {
        patch.store(0, global::pan, given);
        patch.set(1, elementIndex::pan, given);
        EXPECT_EQ(patch.get(0, global::pan), kept);
        EXPECT_EQ(patch.get(1, elementIndex::pan), kept);
        EXPECT_EQ(sound.pan, kept);
    }
    const auto changes = patch.changes();
    for (const auto& [element, index] : {std::pair{0, 252}, {0, 255}, {69, 0}, {-1, 0}, {255, 3}})
        patch.store(element, index, 0.1f);
    EXPECT_EQ(patch.changes(), changes);
    EXPECT_EQ(patch.lastChanged(), 256 + elementIndex::pan);
}

TEST_F(Conversions, CountChangesButNotOfTheSameTypeOrWave) {
    const std::tuple<int, int, float, bool> cases[] = {
        {0, global::type, 0.01f, false},
        {0, global::type, 0.5f, true},
        {0, global::lfo1Wave, 0.17f, false},
        {0, global::lfo2Wave, 0.9f, true},
        {0, 40, 0.0f, true},  // unnamed ones are counted
        {1, 200, 0.5f, true},
        {0, global::pan, 0.5f, true},
    };
    for (const auto& [element, index, v, counted] : cases) {
        const auto before = patch.changes();
        patch.store(element, index, v);
        EXPECT_EQ(patch.changes() - before, counted ? 1u : 0u) << index;
    }
}

TEST_F(Conversions, SilenceAMutedOrQuietElementButNoEffect) {
    EXPECT_TRUE(sound.silent);  // fresh: muted
    patch.initElement(1, ElementType::effect);
    patch.store(1, elementIndex::level, 0.0f);
    EXPECT_FALSE(sound.silent);
    patch.store(1, elementIndex::type, 1.0f / 3.0f);
    EXPECT_TRUE(sound.silent);
    patch.store(1, elementIndex::level, 0.1f);
    EXPECT_FALSE(sound.silent);
    patch.store(1, elementIndex::mute, 1.0f);
    EXPECT_TRUE(sound.silent);
}

TEST_F(Conversions, GiveABlockBackWhenTheTypeReturns) {
    patch.initElement(1, ElementType::sample);
    for (int i = elementIndex::firstBlock; i <= elementIndex::lastBlock; ++i)
        patch.store(1, i, static_cast<float>(i) / 50.0f);
    patch.store(1, 17, 0.0f);
    patch.store(1, 29, 0.8f);
    const SampleControls before = sound.sample;
    EXPECT_EQ(before.set, static_cast<int>(19 / 50.0f * 128.9f));
    EXPECT_TRUE(patch.takeLayoutChanged());
    EXPECT_FALSE(patch.takeLayoutChanged());

    patch.store(1, elementIndex::type, 1.0f / 3.0f);  // "Analog"
    EXPECT_EQ(sound.sample.set, 128);                 // released
    EXPECT_EQ(sound.ampEnvelope.legatoAttackSeconds, 0.0f);
    EXPECT_EQ(sound.analog.wave, static_cast<int>(19 / 50.0f * 7.9f));
    EXPECT_TRUE(patch.takeLayoutChanged());

    patch.store(1, elementIndex::type, 2 / 15.0f);
    EXPECT_EQ(sound.sample.set, before.set);
    EXPECT_EQ(sound.sample.bank, before.bank);
    EXPECT_EQ(sound.sample.velocityOffset, before.velocityOffset);
    EXPECT_FLOAT_EQ(sound.ampEnvelope.legatoAttackSeconds, 0.16f);
    EXPECT_FLOAT_EQ(patch.get(1, 19), 19 / 50.0f);
}

TEST_F(Conversions, LetThePatchRuleOverMonoMode) {
    const std::tuple<float, float, float, MonoMode> cases[] = {
        // patch, receive, own
        {0.0f, 1.0f, 1.0f, MonoMode::poly}, {0.5f, 1.0f, 0.3f, MonoMode::lowest},
        {1.0f, 1.0f, 0.0f, MonoMode::last}, {1.0f, 1.0f, 0.5f, MonoMode::highest},
        {0.0f, 0.0f, 1.0f, MonoMode::last}, {1.0f, 0.0f, 0.0f, MonoMode::poly},
    };
    for (const auto& [whole, receive, own, mode] : cases) {
        patch.store(1, elementIndex::monoMode, own);
        patch.store(1, elementIndex::receive, receive);
        patch.store(0, global::monoPoly, whole);
        EXPECT_EQ(sound.monoMode, mode) << whole << receive << own;
    }
}

// Each sound controller bends what reads its destination, on receiving elements alone.
TEST_F(Conversions, AreBentByMacros) {
    const auto timeOf = [](float seconds) { return std::sqrt(seconds / 4); };
    const auto& filter = sound.filterEnvelope;
    const auto& amp = sound.ampEnvelope;
    const struct {
        int controller, reader;
        std::function<float()> read;
    } cases[] = {
        {126, 98, [&] { return sound.wave; }},
        {128, 106, [&] { return (sound.cutoff + 5.1272726f) / 6.931472f; }},
        {129, 104, [&] { return sound.resonance; }},
        {130, 110, [&] { return (sound.envelopeToCutoff / 6.931472f + 1) / 2; }},
        {131, 111, [&] { return timeOf(filter.attackSeconds); }},
        {132, 112, [&] { return timeOf(filter.decaySeconds); }},
        {132, 115, [&] { return timeOf(filter.releaseSeconds); }},
        {133, 126, [&] { return timeOf(amp.attackSeconds); }},
        {134, 127, [&] { return timeOf(amp.decaySeconds); }},
        {135, 130, [&] { return timeOf(amp.releaseSeconds); }},
    };
    patch.initElement(1, ElementType::analog);
    for (const auto& [controller, reader, read] : cases) {
        SCOPED_TRACE(reader);
        const auto changes = patch.element(1).changes();
        patch.store(1, reader, 0.4f);
        EXPECT_NEAR(read(), 0.4f, 1e-5);
        patch.store(0, controller, 0.25f);  // base -0.5: 0.75 v
        EXPECT_NEAR(read(), 0.3f, 1e-5);
        patch.store(1, elementIndex::receive, 0.0f);
        EXPECT_NEAR(read(), 0.4f, 1e-5);
        patch.store(0, controller, 0.6f);  // base 0.2: 0.96 v + 0.04
        EXPECT_NEAR(read(), 0.4f, 1e-5);
        patch.store(1, elementIndex::receive, 1.0f);
        EXPECT_NEAR(read(), 0.424f, 1e-5);
        EXPECT_TRUE((reader != 98 && reader != 106) || patch.element(1).changes() != changes);
        patch.store(0, controller, 0.5f);
        EXPECT_NEAR(read(), 0.4f, 1e-5);
    }

    // Glide, and the LFO rates by their flags.
    const float glide = sound.glideCoefficient;
    patch.store(0, global::glideTime, 1.0f);  // pulled to 32 s
    EXPECT_NEAR(sound.glideCoefficient * 32, glide * 0.25f, 1e-3);
    const float rate1 = controls.lfo[0].freePerTick, rate2 = controls.lfo[1].freePerTick;
    const float rate3 = sound.lfo3.freePerTick;
    patch.store(0, global::firstMacro + 1, 0.0f);  // pulled to 0
    EXPECT_NEAR(controls.lfo[0].freePerTick * 30 * 44100 / 64, 1.0f, 1e-3);
    EXPECT_EQ(controls.lfo[1].freePerTick, rate2);
    EXPECT_EQ(sound.lfo3.freePerTick, rate3);
    patch.store(0, global::lfoRateControl, 4.5f / 7.9f);  // LFO 3 alone
    EXPECT_EQ(controls.lfo[0].freePerTick, rate1);
    EXPECT_NEAR(sound.lfo3.freePerTick * 30 * 44100 / 64, 1.0f, 1e-3);

    // A "Sample" element follows the wave macro with its formant instead.
    patch.initElement(1, ElementType::sample);
    patch.store(1, elementIndex::wave, 0.4f);
    patch.store(1, elementIndex::formant, 0.4f);
    patch.store(0, global::firstMacro, 1.0f);
    EXPECT_EQ(sound.wave, 0.4f);
    EXPECT_EQ(sound.sample.formant, 1.0f);
}

TEST_F(Conversions, BuildZones) {
    const float four = std::sqrt(3.5f / 127.9f);  // steps wide
    const float at48 = 48.5f / 127.9f, at50 = 50.5f / 127.9f, at60 = 60.5f / 127.9f;
    const float at72 = 72.5f / 127.9f;
    const struct {
        float low, high, fade;
        std::vector<std::pair<int, int>> gains;
    } cases[] = {
        {0, 1, 0, {{0, 10000}, {127, 10000}}},
        {at48, at72, 0, {{47, 0}, {48, 10000}, {72, 10000}, {73, 0}}},
        {at48, at72, four, {{44, 0}, {45, 2500}, {46, 5000}, {47, 7500}, {48, 10000}}},
        {at48, at72, four, {{73, 7500}, {75, 2500}, {76, 0}}},
        // Low above high: all but the gap, faded into from both sides.
        {at60, at50, 0, {{50, 10000}, {51, 0}, {59, 0}, {60, 10000}}},
        {at60, at50, four, {{50, 10000}, {51, 7500}, {54, 0}, {55, 0}, {57, 2500}, {59, 7500}}},
        // As wide as can be: 10000 / 128 a step.
        {1, 1, 1, {{127, 10000}, {126, 9922}, {0, 94}}},
    };
    const int firstRows[] = {global::keyLow, global::velocityMin, elementIndex::keyLow,
                             elementIndex::velocityLow};
    const ZoneTable* tables[] = {&controls.keyGain, &controls.velocityGain, &sound.keyGain,
                                 &sound.velocityGain};
    for (const auto& c : cases)
        for (int table = 0; table < 4; ++table) {
            const int element = table / 2, first = firstRows[table];
            patch.store(element, first, c.low);
            patch.store(element, first + 1, c.high);
            patch.store(element, first + 2, c.fade);
            for (const auto& [at, gain] : c.gains)
                EXPECT_EQ((*tables[table])[static_cast<std::size_t>(at)], gain) << c.low << at;
        }
}

TEST_F(Conversions, ChoosePianoLayers) {
    patch.initElement(1, ElementType::sample);
    patch.store(1, elementIndex::item, 40.5f / 128.9f);
    // By quality: set of modes 1, 2 (with "Sustain"), 5 (on "Model 2"), 8 (there with "Always").
    const int sets[3][4] = {{8, 12, 10, 14}, {7, 11, 9, 13}, {0, 2, 1, 3}};
    // Modes that sound, by model and resonance.
    const std::string_view sounding[] = {"0139", "01239", "01349", "0579", "05679", "05789"};
    for (int quality = 0; quality < 3; ++quality) {
        patch.store(0, global::pianoMode, static_cast<float>(quality) / 2);
        for (int r = 0; r < 6; ++r) {
            patch.store(0, global::pianoModel, r < 3 ? 0.0f : 1.0f);
            patch.store(0, global::pianoResonance, static_cast<float>(r % 3) / 2);
            EXPECT_EQ(controls.pianoVariant, 6 * quality + r);
            const auto& [one, two, five, eight] = sets[quality];
            const int layers[] = {40, one, two, 40, two, five, eight, 40, eight, 40};
            const auto expected = [&](int mode) {
                const bool sounds =
                    sounding[r].find(static_cast<char>('0' + mode)) != std::string_view::npos;
                return sounds ? layers[mode] : 128;
            };
            for (int mode = 0; mode < 10; ++mode) {
                EXPECT_EQ(pianoLayer(mode, 40, controls.pianoVariant), expected(mode));
                EXPECT_EQ(pianoLayer(mode, 128, controls.pianoVariant), 128);
            }
            // The element follows its own mode, and the patch's variant in every round.
            EXPECT_EQ(sound.sample.set, expected(r == 0 && quality == 0 ? 0 : 1));
            patch.store(1, elementIndex::velocityMapMode, 1.5f / 15.9f);
            EXPECT_EQ(sound.sample.set, expected(1));
        }
    }
}

TEST_F(Conversions, OfTheFirstPatch) {
    patch.makeSawtooth();
    EXPECT_EQ(patch.name(), "Sawtooth");
    EXPECT_EQ(patch.elementCount(), 1);
    EXPECT_EQ(patch.text(1), "Analog");
    EXPECT_EQ(patch.element(1).type(), ElementType::analog);
    EXPECT_FALSE(sound.silent);
    EXPECT_NEAR(controls.gain, 1.0f, 1e-4);
    EXPECT_EQ(controls.type, 5);
    EXPECT_EQ(sound.level, 0.5f);
    EXPECT_EQ(sound.randomStart, 1.0f);
    EXPECT_EQ(sound.analog.mix1, 1.0f);
    EXPECT_EQ(sound.filterMode, FilterMode::low12);
    EXPECT_EQ(patch.lastChanged(), noParameter);
    EXPECT_TRUE(patch.element(2).controls().muted);
}

TEST_F(Conversions, OfElementsThatComeAndGo) {
    patch.initElement(2, ElementType::fm);  // beyond the count
    EXPECT_EQ(patch.text(2), "");
    patch.initElement(65, ElementType::fm);  // a send slot takes effects alone
    EXPECT_EQ(patch.text(65), "");
    patch.initElement(65, ElementType::effect);
    EXPECT_EQ(patch.text(65), "Effect");

    patch.setElementCount(2);
    patch.store(1, 20, 0.9f);
    patch.store(2, 30, 0.9f);
    patch.initElement(2, ElementType::fm);
    EXPECT_EQ(patch.text(2), "FM");
    EXPECT_EQ(patch.get(2, 30), 0.5f);
    EXPECT_EQ(patch.get(2, 37), 0.0f);
    patch.setElementCount(1);
    EXPECT_TRUE(patch.element(2).controls().muted);
    EXPECT_EQ(patch.text(2), "");
    EXPECT_EQ(patch.get(2, 19), 1.0f);
    // What the patch was told meanwhile reaches an element that joins.
    patch.store(0, global::monoPoly, 1.0f);
    patch.setElementCount(2);
    EXPECT_EQ(patch.element(2).controls().monoMode, MonoMode::last);
    patch.setElementCount(65);
    EXPECT_EQ(patch.elementCount(), 64);
}

}  // namespace
}  // namespace stratovane
