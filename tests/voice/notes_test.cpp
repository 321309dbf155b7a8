#include <gtest/gtest.h>

#include "part_fixture.h"
#include "voice/held_notes.h"
#include "voice/note_handling.h"
#include "voice/tuning_lookup.h"

namespace stratovane {
namespace {

TEST(HeldNotes, KeepPlayOrderAndSortEachKeyOnce) {
    HeldNotes held;
    for (const int note : {64, 60, 127, 64, 0}) held.press(note);
    const auto list = [](auto span) { return std::vector<int>(span.begin(), span.end()); };
    EXPECT_EQ(list(held.played()), (std::vector{64, 60, 127, 0}));
    EXPECT_EQ(list(held.sorted()), (std::vector{0, 60, 64, 127}));
    held.release(60);
    held.release(61);
    EXPECT_EQ(list(held.played()), (std::vector{64, 127, 0}));
    EXPECT_EQ(list(held.sorted()), (std::vector{0, 64, 127}));
}

TEST(TuningLookup, ShortTablesRepeatAndLongOnesEnd) {
    const std::vector<float> octave{0, 0.1f, 0.2f};
    const std::vector<float> keyboard = [] {
        std::vector<float> t(101);
        for (int i = 0; i < 101; ++i) t[static_cast<std::size_t>(i)] = static_cast<float>(i);
        return t;
    }();
    EXPECT_FLOAT_EQ(tuningCents(octave, 4), 10);
    EXPECT_FLOAT_EQ(tuningCents(octave, -1), 20);
    EXPECT_FLOAT_EQ(tuningCents(octave, -3), 0);
    EXPECT_FLOAT_EQ(tuningCents(keyboard, -5), 0);
    EXPECT_FLOAT_EQ(tuningCents(keyboard, 500), 10000);
    EXPECT_FLOAT_EQ(tuningCents({}, 7), 0);
}

TEST(Notes, ZonesOfPartAndElementsDecideWhoPlays) {
    TestPart part{2};
    part.set(0, global::velocityMin, entry(20, 127.9f));
    part.set(0, global::keyHigh, entry(90, 127.9f));
    part.set(2, elementIndex::keyLow, entry(64, 127.9f));
    part.set(2, elementIndex::velocityLow, entry(80, 127.9f));
    part.on(60, 10);  // too soft for the part
    part.on(91);      // beyond its keys
    EXPECT_EQ(part.active(), 0);
    EXPECT_EQ(part.state.held.count(), 0);
    part.on(60);
    part.on(70);
    part.on(72, 79);
    EXPECT_EQ(part.playing(1), (Notes{60, 70, 72}));
    EXPECT_EQ(part.playing(2), (Notes{70}));
    part.event(0x90, 60, 0);  // a velocity of 0 is a note-off although outside the velocity range
    EXPECT_EQ(part.playing(1), (Notes{70, 72}));
    // Elements look at the transposed key, clamped to the keyboard.
    part.set(0, global::transpose, 1);
    part.on(40);
    EXPECT_EQ(part.playing(2), (Notes{40, 70}));
    part.set(0, global::mute, 1);
    part.on(50);
    EXPECT_FALSE(part.playing().contains(50));
    EXPECT_TRUE(part.state.held.contains(50));
}

TEST(Notes, CrossfadesScaleTheAmplitude) {
    TestPart part{1};
    part.set(0, global::keyLow, entry(60, 127.9f));
    part.set(0, global::keyFade, std::sqrt(entry(9, 127.9f)));
    part.set(1, elementIndex::keyHigh, entry(55, 127.9f));
    part.set(1, elementIndex::keyFade, std::sqrt(entry(9, 127.9f)));
    part.on(58);
    ASSERT_EQ(part.active(), 1);
    // 2 of 10 steps below the part's zone, 3 above the element's.
    EXPECT_NEAR(part.voice(0).startGain, 0.8f * 0.7f, 1e-6f);
}

TEST(Notes, TriggerConditionsChooseElements) {
    constexpr int conditions = 10;
    TestPart part{conditions};
    for (int e = 1; e <= conditions; ++e) part.set(e, tone::triggerCondition, entry(e - 1, 15.9f));
    const auto players = [&](EventSource source = EventSource::host) {
        part.event(0x90, 60, 100, 0, source);
        std::string names;
        for (int i = 0; i < part.active(); ++i)
            if (part.slot(i).key == 60) names += static_cast<char>('0' + part.slot(i).element - 1);
        part.control(120, 0);
        part.off(60);
        part.run(64);
        return names;
    };
    // 0 always, 1/2 wheel up/down, 3/4 sustain up/down, 5/6 odd/even patch note, 7/8 odd/even
    // element note, 9 not from the arpeggiator. The first note of a part is even, of an element
    // odd.
    EXPECT_EQ(players(), "023679");
    EXPECT_EQ(players(), "023589");
    part.control(1, 127);
    part.control(64, 127);
    EXPECT_EQ(players(), "014679");
    part.control(64, 0);
    EXPECT_EQ(players(EventSource::arpeggiator), "01358");
}

TEST(Notes, ArpeggiatorReleasesNothingOfAnElementThatIgnoresIt) {
    TestPart part{2};
    part.set(2, tone::triggerCondition, entry(9, 15.9f));
    part.on(60);
    part.event(0x80, 60, 0, 0, EventSource::arpeggiator);
    EXPECT_EQ(part.playing(1), Notes{});
    EXPECT_EQ(part.playing(2), Notes{60});
    part.event(0x90, 62, 100, 0, EventSource::arpeggiator);
    // Its "all notes off" ends its own notes alone.
    part.event(0xB0, 123, 0, 0, EventSource::arpeggiator);
    EXPECT_EQ(part.playing(), Notes{60});
}

TEST(Notes, MuteConditionsEndOtherVoices) {
    const struct {
        const char* name;
        int value;
        Notes left;
    } cases[] = {
        {"none", 0, {60, 60, 62, 64, 64}},       {"same note", 1, {60, 60, 62, 64}},
        {"other elements", 2, {62, 64}},         {"whole patch", 3, {64}},
        {"none again", 4, {60, 60, 62, 64, 64}}, {"group 1", 5, {60, 62, 64, 64}},
        {"group 2", 6, {60, 60, 62, 64, 64}},
    };
    for (const auto& c : cases) {
        TestPart part{3};
        const auto strike = [&](int element, int note) {
            for (int e = 1; e <= 3; ++e) part.set(e, tone::mute, e != element);
            part.on(note);
        };
        part.set(2, tone::muteCondition, entry(5, 15.9f));
        strike(1, 60);
        strike(1, 64);
        strike(2, 60);
        strike(3, 62);
        part.set(3, tone::muteCondition, entry(c.value, 15.9f));
        strike(3, 64);
        EXPECT_EQ(part.playing(), c.left) << c.name;
    }
}

TEST(Notes, AStruckDrumChokesItself) {
    TestPart part{1};
    part.set(1, tone::muteCondition, entry(1, 15.9f));
    part.set(1, tone::muteFade, 0.2f);
    part.on(42);
    part.run(5000);
    part.on(42);
    EXPECT_EQ(part.playing(), Notes{42});
    EXPECT_EQ(part.fading(), 1);
    part.run(44100);
    EXPECT_EQ(part.active(), 1);
}

TEST(Notes, AnalogEnvelopesTakeTheSameNoteUpAgain) {
    TestPart part{1};
    part.set(1, tone::envelopeMode, 1);
    part.set(1, tone::release, 0.5f);
    part.on(60, 127);
    part.run(20000);
    part.off(60);
    part.run(2000);
    const float level = part.voice(0).amp.level;
    part.on(60, 20);
    ASSERT_EQ(part.active(), 1);
    EXPECT_EQ(part.voice(0).amp.state, VoiceState::sounding);
    EXPECT_EQ(part.voice(0).amp.level, level);
    EXPECT_NEAR(part.voice(0).velocity, 19 / 63.0f - 1, 1e-3f);
    // Not after the layout changed: then a fresh voice starts.
    part.set(1, 103, 0.1f);
    part.on(60);
    EXPECT_EQ(part.active(), 2);
    part.on(60);
    EXPECT_EQ(part.active(), 2);
    part.set(1, tone::envelopeMode, 0);
    part.on(60);
    EXPECT_EQ(part.active(), 3);
}

TEST(Notes, LegatoSwitchBendsHeldVoicesToTheNewNote) {
    TestPart part{1};
    part.control(68, 127);
    part.on(60);
    part.run(100);
    part.on(67);
    EXPECT_EQ(part.playing(), (Notes{67, 67}));
    EXPECT_NEAR(part.semitones(0), 7, 1e-4);
}

TEST(Notes, BadBytesAreIgnored) {
    TestPart part{1};
    for (int status = 0; status < 256; ++status)
        for (const int first : {0, 127, 128, 200, 255})
            for (const int second : {0, 1, 127, 128, 255}) part.event(status, first, second, 128);
    part.run(100);
    for (int i = 0; i < part.active(); ++i) EXPECT_LT(part.slot(i).note, 128);
}

TEST(NoteOff, TheLowestKeyIsAKeyLikeAnyOther) {
    TestPart part{1};
    part.on(0);
    EXPECT_EQ(part.playing(), Notes{0});
    part.run(100);
    part.off(0);
    EXPECT_EQ(part.playing(), Notes{});
    part.run(44100);
    EXPECT_EQ(part.active(), 0);
}

TEST(NoteOff, UndampedNotesRingOnIfTheyDieAway) {
    for (const bool diesAway : {false, true}) {
        TestPart part{1};
        part.set(1, tone::undamped, entry(72, 128.9f));
        part.set(1, tone::fade, diesAway ? 0.2f : 0.5f);
        part.on(71);
        part.on(72);
        part.run(3000);
        part.off(71);
        part.off(72);
        part.run(32 * 200);
        Notes left;
        for (int i = 0; i < part.active(); ++i)
            if (part.voice(i).amp.level > 0.1f) left.insert(part.slot(i).note);
        EXPECT_EQ(left, diesAway ? Notes{72} : Notes{});
    }
}

TEST(NoteDelay, WaitsItsTimeThenSounds) {
    TestPart part{1};
    part.set(1, tone::noteDelay, entry(1, 7.9f));
    part.set(1, tone::delayTime, 0.1f);  // 40 ms: 1764 frames
    part.on(60);
    const auto sound = part.run(4000);
    std::size_t first = 0;
    while (first < sound.size() && sound[first] == 0) ++first;
    EXPECT_NEAR(static_cast<double>(first), 1764, 3);

    TestPart synced{1};
    synced.set(1, tone::noteDelay, entry(2, 7.9f));
    synced.set(1, tone::delayTime, 1 - entry(16, 20.9f));  // "1/16": a quarter of a beat
    synced.state.time.beatsPerFrame = 1.0 / 8000;
    synced.on(60);
    const auto later = synced.run(4000);
    first = 0;
    while (first < later.size() && later[first] == 0) ++first;
    EXPECT_NEAR(static_cast<double>(first), 2000, 3);
}

TEST(NoteDelay, AKeyLetGoWhileItWaitsNeverSounds) {
    TestPart part{1};
    part.set(1, tone::noteDelay, entry(1, 7.9f));
    part.set(1, tone::delayTime, 0.2f);
    part.on(60);
    part.run(1000);
    part.off(60);
    EXPECT_TRUE(isSilent(part.run(20000)));
    EXPECT_EQ(part.active(), 0);
    // Struck again at once, it waits anew, also where notes are taken up again.
    part.set(1, tone::envelopeMode, 1);
    part.on(60);
    part.off(60);
    part.on(60);
    EXPECT_TRUE(isSilent(part.run(7000)));  // of 160 ms
    EXPECT_FALSE(isSilent(part.run(1000)));
    EXPECT_EQ(part.playing(), Notes{60});
}

TEST(NoteDelay, AWaitingVoiceThatIsMutedLeavesAtOnce) {
    for (const int mode : {1, 2, 3}) {
        TestPart part{1};
        part.set(1, tone::noteDelay, entry(mode, 7.9f));
        part.set(1, tone::delayTime, 0.5f);
        part.set(1, tone::muteFade, 1);
        part.on(60);
        part.run(1000);
        EXPECT_EQ(part.active(), 1);
        part.control(120, 0);
        EXPECT_TRUE(isSilent(part.run(32)));
        EXPECT_EQ(part.active(), 0) << mode;
    }
}

TEST(NoteDelay, ANoteThatWaitsForReleaseFadesWithTheTimeHeld) {
    const auto loudest = [](int heldFrames, float fade) {
        TestPart part{1};
        part.set(1, tone::noteDelay, entry(3, 7.9f));
        part.set(1, tone::delayTime, fade);
        part.set(1, tone::release, 0.3f);
        part.on(60);
        EXPECT_TRUE(isSilent(part.run(heldFrames)));
        EXPECT_EQ(part.active(), 1);
        part.off(60);
        const auto sound = part.run(44100);
        EXPECT_EQ(part.active(), 0) << "it ends by itself";
        return *std::ranges::max_element(sound);
    };
    const float full = loudest(22050, 0);
    EXPECT_GT(full, 0.01f);
    // Fade time 1 s, held for half of it.
    EXPECT_NEAR(loudest(22050, 0.5f) / full, std::exp(-3.45f / 2), 0.01f);
}

}  // namespace
}  // namespace stratovane
