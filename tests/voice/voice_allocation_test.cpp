#include "voice/voice_allocation.h"

#include <gtest/gtest.h>

#include "part_fixture.h"

namespace stratovane {
namespace {

// Voices that last: a slow mute fade.
struct LastingPart : TestPart {
    explicit LastingPart(int elements) : TestPart{elements} { setAll(tone::muteFade, 1); }
};

float voices(int count) { return entry(count - 1, 63.9f); }

TEST(Allocation, AnElementAtItsOwnLimitTakesItsOldestVoice) {
    LastingPart part{2};
    part.set(1, tone::maxVoices, voices(2));
    for (const int note : {60, 62, 64}) {
        part.on(note);
        part.run(1000);
    }
    EXPECT_EQ(part.playing(1), (Notes{62, 64}));
    EXPECT_EQ(part.playing(2), (Notes{60, 62, 64}));
    EXPECT_EQ(part.fading(), 1);
}

TEST(Allocation, AVoiceTakenFadesInOneOfSixSlotsBeyondTheLimit) {
    LastingPart part{1};
    part.set(0, global::maxVoices, voices(4));
    for (int note = 40; note < 60; ++note) {
        part.on(note);
        part.run(64);
        EXPECT_EQ(part.active(), std::min(note - 39, 10));
        EXPECT_LE(part.playing().size(), 10u);
        EXPECT_TRUE(part.playing().contains(note));
    }
}

TEST(Allocation, TheSmallestLimitKeepsOneVoice) {
    LastingPart part{1};
    part.set(1, tone::maxVoices, 0);
    part.on(60);
    part.run(500);
    part.on(62);
    EXPECT_EQ(part.playing(), Notes{62});
    EXPECT_EQ(part.fading(), 1);
}

// All of these would be over the limit of three: which voice goes?
struct Claims {
    const char* name;
    void (*arrange)(TestPart&);
    Notes left;
};

TEST(Allocation, TheVoiceMissedLeastGoes) {
    const Claims cases[] = {
        {"the oldest of keys that are down", [](TestPart&) {}, {62, 64, 70}},
        {"a released one before those", [](TestPart& p) { p.off(64); }, {60, 62, 70}},
        {"one that a pedal holds before a key that is down",
         [](TestPart& p) {
             p.control(64, 127);
             p.off(62);
         },
         {60, 64, 70}},
        {"a low priority before an older voice",
         [](TestPart& p) { p.set(3, tone::priority, 0); },
         {60, 62, 70}},
        {"a high priority last", [](TestPart& p) { p.set(1, tone::priority, 1); }, {60, 64, 70}},
    };
    for (const Claims& c : cases) {
        LastingPart part{3};
        part.setAll(tone::release, 1);
        part.set(0, global::maxVoices, voices(3));
        // One element a key, so that priorities can differ.
        for (int e = 1; e <= 3; ++e) {
            for (int other = 1; other <= 3; ++other) part.set(other, tone::mute, e != other);
            part.on(58 + 2 * e);
            part.run(2000);
        }
        part.set(2, tone::mute, 1);
        part.set(3, tone::mute, 1);
        part.set(1, tone::mute, 0);
        c.arrange(part);
        part.run(32);
        part.on(70);
        Notes left;
        for (int i = 0; i < part.active(); ++i)
            if (part.voice(i).amp.state != VoiceState::fading) left.insert(part.slot(i).note);
        EXPECT_EQ(left, c.left) << c.name;
    }
}

TEST(Allocation, QuietVoicesGoBeforeOlderLouderOnes) {
    LastingPart part{1};
    part.set(0, global::maxVoices, voices(3));
    part.set(1, tone::release, 0.5f);
    for (const int note : {60, 62, 64}) {
        part.on(note);
        part.run(2000);
    }
    part.off(60);
    part.run(8000);
    part.off(62);
    while (part.voice(1).amp.level > 0.029f) part.run(32);
    // Now both are quiet and the older one is quieter; a free slot would not even be used.
    ASSERT_LT(part.voice(0).amp.level, part.voice(1).amp.level);
    part.set(0, global::maxVoices, voices(64));
    part.on(70);
    EXPECT_EQ(part.voice(0).amp.state, VoiceState::fading);
    EXPECT_EQ(part.voice(1).amp.state, VoiceState::ending);
    EXPECT_EQ(part.playing(), (Notes{64, 70}));
}

TEST(Allocation, AnElementsLimitHoldsBesideQuietVoicesOfOthers) {
    LastingPart part{2};
    part.set(1, tone::maxVoices, 0);
    part.set(2, tone::release, 0.5f);
    part.on(60);
    part.run(500);
    part.off(60);
    part.run(60000);
    for (const int note : {62, 64, 65}) {
        part.on(note);
        part.run(200);
        EXPECT_EQ(part.playing(1).size(), 1u);
    }
}

TEST(Allocation, RandomNotesKeepLimitsAndOrder) {
    LastingPart part{8};
    Random random{3};
    for (int step = 0; step < 4000; ++step) {
        if (step % 50 == 0) part.set(0, global::maxVoices, random.unipolar());
        if (step % 30 == 0) part.set(1 + random.draw() % 8, tone::maxVoices, random.unipolar());
        const int limit = part.state.patch.controls().voiceLimit, before = part.active();
        if (random.draw() % 3)
            part.on(30 + random.draw() % 60, 1 + random.draw() % 127);
        else
            part.off(30 + random.draw() % 60);
        ASSERT_LE(part.active(), std::max(before, std::min(limit + 6, 64)));
        for (int i = 1; i < part.active(); ++i)
            ASSERT_LE(part.slot(i - 1).element, part.slot(i).element);
        part.run(random.draw() % 40);
    }
}

}  // namespace
}  // namespace stratovane
