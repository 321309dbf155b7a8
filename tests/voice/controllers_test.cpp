#include <gtest/gtest.h>

#include "part_fixture.h"
#include "voice/pitch_bend.h"

namespace stratovane {
namespace {

TEST(Bend, RangesStepsAndHarmonics) {
    const struct {
        int code;
        float position, semitones;
    } cases[] = {
        {2, 1, 2},
        {2, -0.5f, -1},
        {12, 0.25f, 3},
        {0, 1, 0},
        {13, 0.26f, 3},
        {13, -0.3f, -4},
        {14, 0, 0},
        {14, 1, 12},
        {14, -1, -12},
        {14, 0.3f, 5.005f},
        {14, -0.4f, -3.18f},
        {14, -0.6f, -6.99f},
        {14, 0.65f, 9.1325f},
        {15, -1, -24},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(bendSemitones(c.position, c.code), c.semitones, 2e-3f)
            << c.code << " at " << c.position;
    EXPECT_EQ(bendPosition(0, 64), 0);
    EXPECT_EQ(bendPosition(0, 0), -1);
    EXPECT_NEAR(bendPosition(127, 127), 1, 2e-4f);
}

TEST(Bend, ElementsFollowOrIgnoreIt) {
    TestPart part{2};
    part.set(2, tone::patchBend, 0);
    part.set(0, global::bendUp, entry(12, 15.9f));
    part.set(0, global::bendDown, entry(5, 15.9f));
    part.set(0, global::fineTune, 1);
    part.on(60);
    part.bend(127, 127);
    EXPECT_NEAR(part.semitones(0), 13, 2e-3f);
    EXPECT_NEAR(part.semitones(1), 1, 1e-4f);
    part.bend(0);
    EXPECT_NEAR(part.semitones(0), -4, 1e-4f);
    part.bend(127, 254);  // the editor's wheel, all the way up
    EXPECT_NEAR(part.semitones(0), 13, 2e-3f);
    part.bend(64, 254);
    EXPECT_NEAR(part.semitones(0), 1, 1e-6f);
    EXPECT_NEAR(part.state.controllers.highestKeyPitch, 61 * semitonePitch, 1e-4f);
    part.off(60);
    EXPECT_EQ(part.state.controllers.highestKeyPitch, Controllers::noKeyPitch);
}

TEST(Bend, SwitchesTheRotaryOfAnOrgan) {
    TestPart part{3};
    constexpr int speed = 27;
    for (const int e : {2, 3}) {
        part.state.patch.initElement(e, ElementType::effect);
        part.set(e, elementIndex::item, entry(e == 2 ? 10 : 56, 128.9f));
    }
    for (const int e : {2, 3}) part.set(e, speed, 0.5f);
    part.bend(127);
    EXPECT_EQ(part.state.patch.get(3, speed), 0.5f) << "no organ";
    part.set(0, global::type, entry(3, 15.9f));
    part.set(0, global::bendUp, 0);
    part.set(0, global::bendDown, 0);
    part.bend(127);
    EXPECT_EQ(part.state.patch.get(3, speed), 1.0f);
    part.bend(70);
    EXPECT_EQ(part.state.patch.get(3, speed), 1.0f);
    part.bend(0);
    EXPECT_EQ(part.state.patch.get(3, speed), 0.0f);
    EXPECT_EQ(part.state.patch.get(2, speed), 0.5f);
}

TEST(Pedals, SustainReleasesWhatWasLetGoMeanwhile) {
    TestPart part{1};
    part.on(60);
    part.on(64);
    part.control(64, 64);
    part.off(60);
    EXPECT_EQ(part.playing(), (Notes{60, 64}));
    EXPECT_FLOAT_EQ(part.voice(0).sustain, 64 / 127.0f);
    part.control(64, 63);
    EXPECT_EQ(part.playing(), Notes{64});
    part.control(64, 127);
    part.off(64);
    part.control(121, 0);
    EXPECT_EQ(part.playing(), Notes{}) << "a reset lifts the pedal";
}

TEST(Pedals, SostenutoHoldsOnlyTheKeysThatWereDown) {
    TestPart part{1};
    part.on(60);
    part.on(62);
    part.control(66, 127);
    part.on(64);
    part.off(60);
    part.off(64);
    EXPECT_EQ(part.playing(), (Notes{60, 62}));
    part.control(66, 0);
    EXPECT_EQ(part.playing(), Notes{62}) << "its key is still down";
    part.off(62);
    EXPECT_EQ(part.playing(), Notes{});
}

TEST(Pedals, RedamperCatchesReleasedNotesAndSlowsThem) {
    const auto levelAfter = [](float redamper, bool press) {
        TestPart part{1};
        part.set(0, global::redamper, redamper);
        part.set(1, tone::release, 0.5f);  // 1 s
        part.on(60);
        part.run(4410);
        part.off(60);
        part.run(64);
        if (press) part.control(64, 127);
        EXPECT_EQ(part.playing().size(), press && redamper > 0 ? 1u : 0u);
        const float before = part.voice(0).amp.level;
        part.run(11025);
        return part.voice(0).amp.level / before;
    };
    const float free = levelAfter(0, true);
    EXPECT_NEAR(free, std::exp(-3.45f / 4), 0.01f);
    EXPECT_EQ(levelAfter(0.5f, false), free);
    const float slower = std::exp(-0.03f * 63);
    EXPECT_NEAR(levelAfter(0.5f, true), std::exp(-3.45f / 4 * slower), 0.01f);
}

TEST(Controllers, ExpressionTurnsElementsDown) {
    const auto peakAt = [](int value) {
        TestPart part{1};
        if (value >= 0) part.control(11, value);
        part.on(60);
        const auto sound = part.run(8000);
        return *std::ranges::max_element(sound);
    };
    const float full = peakAt(-1);
    EXPECT_NEAR(peakAt(127) / full, 1, 1e-5f);
    EXPECT_NEAR(peakAt(64) / full, 64.0f * 64 / 127 / 127, 1e-4f);
    EXPECT_LT(peakAt(0), full * 1e-6f);
}

TEST(Controllers, AllSoundOffAndAllNotesOffFadeEveryVoice) {
    for (const int number : {120, 123}) {
        TestPart part{2};
        part.control(64, 127);
        part.on(60);
        part.off(60);
        part.on(64);
        part.control(number, 0);
        EXPECT_EQ(part.fading(), part.active());
        part.run(1000);
        EXPECT_EQ(part.active(), 0);
    }
}

TEST(Controllers, ResetReturnsEverythingButTheMap) {
    TestPart part{1};
    for (const int number : {1, 11, 67, 68}) part.control(number, 100);
    part.event(0xD0, 90, 0);
    part.bend(100);
    part.run(4096);
    EXPECT_GT(part.state.clock.at(part.state.clock.frame() - 1).pressure, 0.5f);
    part.control(121, 0);
    const Controllers& c = part.state.controllers;
    EXPECT_EQ(c.expression, 1);
    for (const float value : {c.modWheel, c.wheelPosition, c.softPedal, c.pressure, c.bendPosition,
                              c.bendSemitones, part.state.bendPitch()})
        EXPECT_EQ(value, 0);
    EXPECT_FALSE(c.legato);
    part.run(64);
    EXPECT_EQ(part.state.clock.at(part.state.clock.frame() - 1).pressure, 0);
}

TEST(Controllers, PressureMovesInAFiftiethOfASecond) {
    TestPart part{1};
    part.event(0xD0, 127, 0);
    part.run(882);
    EXPECT_NEAR(part.state.clock.at(part.state.clock.frame() - 1).pressure, 1 - std::exp(-1.0f),
                0.03f);
}

TEST(Controllers, MonoAndPolyModeSetThePatch) {
    TestPart part{1};
    const auto monoPoly = [&] { return part.state.patch.get(0, global::monoPoly); };
    part.control(126, 1);
    EXPECT_EQ(monoPoly(), 1);
    EXPECT_EQ(part.state.patch.element(1).controls().monoMode, MonoMode::last);
    part.control(127, 0);
    EXPECT_EQ(monoPoly(), 0);
    part.control(126, 1);
    part.control(126, 0);
    EXPECT_EQ(monoPoly(), 0);
}

TEST(Controllers, AMappedControllerDrivesItsParameterInstead) {
    TestPart part{1};
    part.state.patch.assignController(11, 1 * 256 + tone::pan);
    part.state.patch.assignController(120, 1 * 256 + tone::level);  // kept but not obeyed
    part.control(11, 0);
    EXPECT_NEAR(part.state.patch.get(1, tone::pan), 0, 1e-7f);
    EXPECT_EQ(part.state.controllers.expression, 1);
    part.on(60);
    part.control(120, 0);
    EXPECT_EQ(part.fading(), 1);
    EXPECT_GT(part.state.patch.get(1, tone::level), 0);
    // An armed instrument learns the next controller and it acts at once.
    part.state.patch.store(1, tone::cents, 0.3f);
    part.state.patch.armLearn();
    part.control(21, 127);
    EXPECT_EQ(part.state.patch.get(1, tone::cents), 1);
}

TEST(Controllers, SequencerControllersAreBipolarAndNeverMapped) {
    TestPart part{1};
    part.control(128, 0);
    part.control(129, 126);
    EXPECT_EQ(part.state.controllers.sequencer1, -1);
    EXPECT_EQ(part.state.controllers.sequencer2, 1);
}

}  // namespace
}  // namespace stratovane
