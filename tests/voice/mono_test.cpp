#include <gtest/gtest.h>

#include "part_fixture.h"

namespace stratovane {
namespace {

struct MonoPart : TestPart {
    explicit MonoPart(MonoMode mode, Retrigger onLegato = Retrigger::pitchOnly,
                      Retrigger onRelease = Retrigger::pitchOnly) {
        set(1, tone::monoMode, monoMode(mode));
        set(1, tone::legatoRetrigger, retrigger(onLegato));
        set(1, tone::releaseRetrigger, retrigger(onRelease));
    }
};

TEST(Mono, EachPriorityChoosesAmongTheHeldKeys) {
    const struct {
        MonoMode mode;
        std::vector<int> sounding;  // after each of the steps below
    } cases[] = {
        {MonoMode::lowest, {64, 60, 60, 60, 64, 67, -1}},
        {MonoMode::highest, {64, 64, 67, 67, 67, 67, -1}},
        {MonoMode::first, {64, 64, 64, 64, 64, 67, -1}},
        {MonoMode::last, {64, 60, 67, 67, 67, 67, -1}},
    };
    for (const auto& c : cases) {
        MonoPart part{c.mode};
        std::vector<int> sounding;
        const auto step = [&](bool down, int note) {
            down ? part.on(note) : part.off(note);
            part.run(100);
            const Notes notes = part.playing();
            EXPECT_LE(notes.size(), 1u);
            sounding.push_back(notes.empty() ? -1 : *notes.begin());
        };
        step(true, 64);
        step(true, 60);
        step(true, 67);
        step(false, 100);  // not held
        step(false, 60);
        step(false, 64);
        step(false, 67);
        EXPECT_EQ(sounding, c.sounding) << static_cast<int>(c.mode);
    }
}

TEST(Mono, LegatoKeepsOneVoiceAndChangesItsPitchOnly) {
    MonoPart part{MonoMode::last};
    part.set(1, tone::decay, 0.3f);
    part.set(1, tone::sustain, 0.3f);
    part.on(60, 127);
    part.run(9000);
    const float level = part.voice(0).amp.level;
    part.on(64, 10);
    EXPECT_EQ(part.active(), 1);
    EXPECT_NEAR(part.semitones(0), 4, 1e-4);
    EXPECT_EQ(part.voice(0).amp.level, level);
    part.off(64);
    EXPECT_EQ(part.playing(), Notes{60});
    EXPECT_NEAR(part.semitones(0), 0, 1e-4);
    EXPECT_NEAR(part.voice(0).velocity, 1, 1e-3) << "the velocity of the first note stays";
}

TEST(Mono, RetriggerModesRestartTheEnvelopesTheyName) {
    const struct {
        Retrigger mode;
        bool amp, filter, modulation;
    } cases[] = {{Retrigger::allModulation, true, true, true},
                 {Retrigger::filterAndAmp, true, true, false},
                 {Retrigger::filter, false, true, false},
                 {Retrigger::pitchOnly, false, false, false}};
    for (const auto& c : cases) {
        MonoPart part{MonoMode::last, c.mode};
        for (const int index : {111, 126}) part.set(1, index, 0.2f);  // attacks
        part.set(1, 113, 0.4f);                                       // filter sustain
        part.set(1, tone::sustain, 0.2f);
        for (const int index : {112, 127}) part.set(1, index, 0.2f);  // decays
        part.set(1, 89, 0);                                           // first level: -1
        part.set(1, 91, 1);                                           // second: 1
        part.set(1, 90, 0.3f);
        part.set(1, 95, 0.5f);
        part.on(60);
        part.run(44100 * 3);
        const struct {
            SegmentEnvelope amp, filterEnvelope;
            ModulationEnvelope modulation;
        } before{part.voice(0).amp, part.voice(0).filterEnvelope, part.voice(0).modulation};
        EXPECT_NEAR(before.filterEnvelope.level, 0.4f * before.filterEnvelope.peak, 1e-5f);
        EXPECT_NEAR(before.amp.level, 0.2f * before.amp.peak, 1e-5f);
        part.on(62);
        part.run(2000);
        const Voice& after = part.voice(0);
        EXPECT_EQ(part.active(), 1);
        EXPECT_EQ(after.amp.level > before.amp.level * 1.05f, c.amp);
        EXPECT_EQ(after.filterEnvelope.level > before.filterEnvelope.level * 1.05f, c.filter);
        EXPECT_EQ(std::fabs(after.modulation.level - before.modulation.level) > 0.02f,
                  c.modulation);
    }
}

TEST(Mono, NewVoicesReplaceTheOldOneBothWays) {
    MonoPart part{MonoMode::last, Retrigger::newVoice, Retrigger::newVoice};
    part.set(1, tone::muteFade, 0.5f);
    part.on(60);
    part.run(500);
    part.on(64);
    EXPECT_EQ(part.playing(), Notes{64});
    EXPECT_EQ(part.fading(), 1);
    part.run(500);
    part.off(64);
    EXPECT_EQ(part.playing(), Notes{60});
    EXPECT_EQ(part.fading(), 2);
    part.off(60);
    EXPECT_EQ(part.playing(), Notes{});
}

TEST(Mono, AReturnUnderTheVoiceLimitReplacesTheRecordInPlace) {
    MonoPart part{MonoMode::last, Retrigger::newVoice, Retrigger::newVoice};
    part.set(0, global::maxVoices, 1);  // 64: no room beyond it
    for (int i = 0; i < 70; ++i) part.on(20 + i);
    part.run(100);
    for (int i = 69; i > 0; --i) {
        part.off(20 + i);
        EXPECT_EQ(part.playing(), Notes{20 + i - 1});
    }
}

TEST(Mono, UnisonSpreadsPitchAndPanAndKeepsItsPlaces) {
    MonoPart part{MonoMode::last};
    part.set(1, tone::unisonVoices, entry(3, 7.9f));  // four voices
    part.set(1, tone::unisonDetune, 1);               // a semitone times their number
    part.set(1, tone::unisonPan, 0.25f);
    const auto spread = [&] {
        std::vector<float> pitches;
        for (int i = 0; i < part.active(); ++i) pitches.push_back(part.semitones(i));
        std::ranges::sort(pitches);
        return pitches;
    };
    part.on(60);
    ASSERT_EQ(part.active(), 4);
    for (int i = 0; i < 4; ++i) {
        const auto place = static_cast<float>(i);
        EXPECT_NEAR(spread()[static_cast<std::size_t>(i)], 4 * (place / 3 - 0.5f), 1e-4f);
        EXPECT_NEAR(part.voice(i).offsets.pan, (place / 3 - 0.5f) * 0.5f, 1e-5f);
        EXPECT_NEAR(part.voice(1).offsets.level / (16 * 0.0067f + 0.6f), 1 - 0.5858f / 12, 1e-3f);
    }
    part.run(100);
    part.on(67);
    ASSERT_EQ(part.active(), 4) << "legato takes all of them over";
    EXPECT_NEAR(spread()[0], 5, 1e-4f);
    EXPECT_NEAR(spread()[3], 9, 1e-4f);
    // One more voice in unison fills the free place only.
    part.set(1, tone::unisonVoices, entry(4, 7.9f));
    part.on(72);
    std::set<int> places;
    for (int i = 0; i < part.active(); ++i) places.insert(part.voice(i).unisonIndex);
    EXPECT_EQ(places, (std::set{1, 2, 3, 4, 5}));
}

TEST(Mono, ASoundingVoicePassesTheVelocityZone) {
    MonoPart part{MonoMode::last};
    part.set(1, elementIndex::velocityLow, entry(80, 127.9f));
    part.on(60, 40);
    EXPECT_EQ(part.active(), 0);
    part.off(60);
    part.on(60, 90);
    part.run(100);
    part.on(64, 40);
    EXPECT_EQ(part.playing(), Notes{64});
}

// Where the pitch of the second of two keys starts and where it goes.
TEST(Glide, ModesOfPatchAndElement) {
    const struct {
        GlideMode element;
        PatchGlide patch;
        bool legato, detached;  // glides from the last note, with it held and without
    } cases[] = {
        {GlideMode::off, PatchGlide::byElement, false, false},
        {GlideMode::bendOnly, PatchGlide::byElement, false, false},
        {GlideMode::fingered, PatchGlide::byElement, true, false},
        {GlideMode::always, PatchGlide::byElement, true, true},
        {GlideMode::always, PatchGlide::off, false, false},
        {GlideMode::off, PatchGlide::legato, true, false},
        {GlideMode::off, PatchGlide::on, true, true},
    };
    for (const auto& c : cases) {
        for (const bool held : {true, false}) {
            TestPart part{1};
            part.set(1, tone::glideMode, glideMode(c.element));
            part.set(1, tone::glideTime, 0.5f);
            part.set(0, global::glide, entry(static_cast<int>(c.patch), 3.9f));
            part.on(65);
            part.run(64);
            if (!held) part.off(65);
            part.run(44100);
            part.on(77);
            const int last = part.active() - 1;
            const bool glides = held ? c.legato : c.detached;
            EXPECT_NEAR(part.semitones(last), glides ? 5 : 17, 1e-3f);
            part.run(44100 / 5);  // a fifth of the glide time
            const double left = glides ? 12 * std::exp(-3.45 / 5) : 0;
            EXPECT_NEAR(part.semitones(last), 17 - left, 0.02);
        }
    }
}

TEST(Glide, BendsAtAttackAndRelease) {
    for (const GlideMode mode : {GlideMode::off, GlideMode::bendOnly}) {
        TestPart part{1};
        part.set(1, tone::glideMode, glideMode(mode));
        part.set(1, tone::glideTime, 0.3f);
        part.set(1, tone::release, 0.6f);
        part.set(1, tone::attackBend, 1);   // 0.25 of 144 semitones
        part.set(1, tone::releaseBend, 0);  // -36
        const float bends = mode == GlideMode::off ? 0 : 1;
        part.on(60);
        EXPECT_NEAR(part.semitones(0), 36 * bends, 1e-2f);
        part.run(2 * 44100);
        EXPECT_NEAR(part.semitones(0), 0, 1e-2f);
        part.off(60);
        part.run(44100);
        EXPECT_NEAR(part.semitones(0), -36 * bends, 0.1f);
    }
}

TEST(Glide, ReleaseFreezesAnAnalogGlide) {
    for (const bool freezes : {true, false}) {
        TestPart part{1};
        part.set(1, tone::glideMode, glideMode(GlideMode::always));
        part.set(1, tone::glideType, freezes ? 1.0f : 0.0f);
        part.set(1, tone::glideTime, 0.5f);
        part.set(1, tone::release, 0.6f);
        part.control(84, 48);  // starts an octave below
        part.on(60);
        EXPECT_NEAR(part.semitones(0), -12, 1e-3f);
        part.run(4410);
        part.off(60);
        const float left = part.semitones(0);
        part.run(44100);
        EXPECT_NEAR(part.semitones(0), freezes ? left : 0, freezes ? 1e-3f : 0.5f);
    }
}

}  // namespace
}  // namespace stratovane
