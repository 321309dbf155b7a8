#include <gtest/gtest.h>

#include <cmath>

#include "arpeggiator_fixture.h"

namespace stratovane {
namespace {

using Mode = ArpeggiatorMode;
using Sync = ArpeggiatorView::Sync;
using S = ArpeggiatorSettings;

TEST(Arpeggiator, PatternsWalkTheKeys) {
    constexpr int off = 0, c = 1, fSharp = 7;  // "Scale"
    const struct {
        Mode mode;
        int octaves, scale;
        std::vector<int> keys;  // in play order
        const char* notes;      // of eight steps
    } cases[] = {
        {Mode::up, 1, off, {64, 60, 67}, "60 64 67 60 64 67 60 64"},
        {Mode::up, 2, off, {64, 60, 67}, "60 64 67 72 76 79 60 64"},
        {Mode::down, 1, off, {64, 60, 67}, "67 64 60 67 64 60 67 64"},
        {Mode::down, 2, off, {64, 60, 67}, "79 76 72 67 64 60 79 76"},
        {Mode::upAndDown, 1, off, {64, 60, 67}, "60 64 67 64 60 64 67 64"},
        {Mode::upAndDown, 1, off, {60}, "60 60 60 60 60 60 60 60"},
        {Mode::upAndDown, 2, off, {60}, "60 72 60 72 60 72 60 72"},
        {Mode::upAndDown, 2, off, {60, 64}, "60 64 72 76 72 64 60 64"},
        {Mode::asPlayed, 1, off, {64, 60, 67}, "64 60 67 64 60 67 64 60"},
        {Mode::asPlayed, 4, off, {64, 60}, "64 60 76 72 88 84 100 96"},
        // Brought into range by octaves; the two lowest notes belong to no range.
        {Mode::up, 2, off, {120}, "120 120 120 120 120 120 120 120"},
        {Mode::up, 1, off, {0, 1, 2}, "12 13 2 12 13 2 12 13"},
        // Only the notes between those of the scale move.
        {Mode::up, 1, c, {60, 61, 63, 64, 66}, "60 62 64 64 67 60 62 64"},
        {Mode::up, 1, fSharp, {127}, "116 116 116 116 116 116 116 116"},
        {static_cast<Mode>(12), 1, off, {60}, ""},
    };
    for (const auto& k : cases) {
        ArpeggiatorRig rig{k.mode};
        rig.set(S::octaves, k.octaves - 1, 3.9f);
        rig.set(S::scale, k.scale, 12.9f);
        for (const int key : k.keys) EXPECT_TRUE(rig.on(key));
        EXPECT_EQ(rig.notes(8 * 250), k.notes) << static_cast<int>(k.mode) << " " << k.octaves;
    }
}

TEST(Arpeggiator, RandomDrawsOctaveAndKeyTheSameWayEachTime) {
    const auto play = [](Mode mode) {
        ArpeggiatorRig rig{mode};
        rig.set(S::octaves, 1, 3.9f);
        rig.rate(20);
        for (std::size_t i = 0; i < 16; ++i)
            rig.settings.steps16[i].note = static_cast<float>(i) / 48 + 0.5f;
        rig.steps(4);
        rig.on(60, 20);
        rig.on(64, 90);
        rig.run(400 * 63);
        return rig.played;
    };
    const auto count = [](const auto& all, int note, int velocity) {
        const auto isIt = [&](const ArpeggiatorRig::Played& p) {
            return p.bytes[0] == 0x90 && p.bytes[1] == note && p.bytes[2] == velocity;
        };
        return static_cast<int>(std::ranges::count_if(all, isIt));
    };
    const auto random = play(Mode::random);
    EXPECT_EQ(random, play(Mode::random));
    // Each key with its own velocity, a quarter of 404 steps each.
    for (const int note : {60, 72}) EXPECT_NEAR(count(random, note, 20), 101, 35) << note;
    for (const int note : {64, 76}) EXPECT_NEAR(count(random, note, 90), 101, 35) << note;
    // Only the first four steps are drawn.
    const auto sequence = play(Mode::randomSequence);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(count(sequence, 60 + i, 20), i < 4 ? 101 : 0, i < 4 ? 35 : 0) << i;
}

TEST(Arpeggiator, StepsFallOnTheGridToTheFrame) {
    for (const float swing : {0.0f, 0.37f, 1.0f}) {
        for (const int division : {20, 15, 13, 3}) {
            ArpeggiatorRig rig;
            rig.settings.values[S::swing] = swing;
            rig.rate(division);
            rig.position = 3.0625;  // where the pattern starts
            rig.run(1);
            const double begin = rig.position;
            const double step =
                1 / double{tempoDivisions[static_cast<std::size_t>(division)].perBeat};
            rig.on(60);
            // The tempo wanders; a frame's position tells where a step must have fallen.
            std::vector<double> positions;
            for (int block = 0; block < 200; ++block) {
                rig.beatsPerFrame = 1e-5 * (1 + block % 17);
                for (int i = 0; i < 777; ++i)
                    positions.push_back(rig.position + i * rig.beatsPerFrame);
                rig.run(777);
            }
            int g = 0;
            for (const auto& p : rig.played) {
                if (p.bytes[0] != 0x90) continue;
                const double due = begin + step * (g + (g % 2) * double{swing} / 3);
                const auto wanted =
                    std::ranges::find_if(positions, [due](double at) { return at > due - 1e-8; });
                ASSERT_EQ(p.frame - 1, wanted - positions.begin()) << division << " step " << g;
                ++g;
            }
            EXPECT_EQ(g, std::floor((positions.back() - begin) / step) + 1);
        }
    }
}

TEST(Arpeggiator, NotesLastForTheGateAndSoundingOnesAreTied) {
    ArpeggiatorRig rig;
    rig.chord({60, 64});
    EXPECT_EQ(rig.after(500), "0+60 126-60 250+64 376-64");
    // A full gate reaches into the next step.
    rig.settings.values[S::gate] = 1;
    EXPECT_EQ(rig.after(500), "500+60 750+64 751-60");
    rig.off(60);
    EXPECT_EQ(rig.after(1000), "");
    rig.off(64);
    EXPECT_EQ(rig.after(1000), "2001-64");
}

TEST(Arpeggiator, SequencerPlaysEveryKeyRelativeToTheStep) {
    ArpeggiatorRig rig{Mode::stepSequence};
    for (ArpeggiatorStep& step : rig.settings.steps16) step.velocity = 1;
    ArpeggiatorStep& first = rig.settings.steps16[0];
    ArpeggiatorStep& second = rig.settings.steps16[1];
    first.note = 1;  // +24
    first.gate = 1;
    first.sequence1 = 0;
    first.sequence2 = 126;
    second.note = 0;
    second.velocity = 2;
    rig.steps(3);
    rig.settings.values[S::transpose] = 25.0f / 48;  // +1
    rig.on(64, 70);
    rig.on(60, 1);
    EXPECT_EQ(rig.after(750),
              "0#128=0 0#129=126 0+89 0+85 126-89 126-85 "
              "250#128=63 250#129=63 250+41 250+37 314-41 314-37 "
              "500#128=63 500#129=63 500+65 500+61 564-65 564-61");
    EXPECT_EQ(rig.notes(500, true), "89/70 85/1 41/127 37/2");
    // Two keys that come to the same note are one, and last as long as the longer.
    rig.off(64);
    rig.off(60);
    rig.run(250);
    rig.chord({110, 122});
    rig.settings.values[S::transpose] = 1;  // +24
    rig.played.clear();
    EXPECT_EQ(rig.after(249), "1500#128=0 1500#129=126 1500+122 1626-122");
}

TEST(Arpeggiator, ElementSequencerNumbersElementsAndSwingsTheirLength) {
    ArpeggiatorRig rig{Mode::elementSequence};
    rig.set(S::phraseLowKey, 50, 128.9f);
    rig.set(S::scale, 2, 12.9f);  // moves no element
    rig.settings.values[S::swing] = 1;
    rig.settings.values[S::gate] = 1;
    for (ArpeggiatorStep& step : rig.settings.steps16) step.note = 1.0f / 16;
    EXPECT_FALSE(rig.on(49));  // plays the elements itself
    EXPECT_FALSE(rig.off(49));
    EXPECT_TRUE(rig.on(50));
    rig.settings.steps16[2].note = 1;
    // Half a gate of each step, a third more or less by swing.
    EXPECT_EQ(rig.after(750),
              "0#128=63 0#129=63 0+36 168-36 334#128=63 334#129=63 334+36 418-36 "
              "500#128=63 500#129=63 500+51 668-51");
}

TEST(Arpeggiator, ControllerSequencerLetsNotesThrough) {
    ArpeggiatorRig rig{Mode::controllerSequence};
    rig.steps(2);
    rig.numberRows();
    EXPECT_FALSE(rig.on(60));
    EXPECT_EQ(rig.after(251), "0#128=0 0#129=63 250#128=1 250#129=63");
    EXPECT_FALSE(rig.pedal(127));
    EXPECT_FALSE(rig.off(60));
    EXPECT_FALSE(rig.arpeggiator.running());
    EXPECT_EQ(rig.after(750), "");
}

TEST(Arpeggiator, StepsSendRowsWithAnArpeggioAndStartItAnew) {
    ArpeggiatorRig rig;
    rig.steps(3);
    rig.numberRows();
    rig.settings.values[S::swing] = 0.5f;
    rig.chord({60, 64});
    // Three steps of two keys; swing follows the grid, not the count.
    EXPECT_EQ(rig.after(1100),
              "0#128=0 0#129=63 0+60 126-60 292#128=1 292#129=63 292+64 418-64 "
              "500#128=2 500#129=63 500+60 626-60 792#128=0 792#129=63 792+60 918-60 "
              "1000#128=1 1000#129=63 1000+64");
}

TEST(Arpeggiator, NoteOffsAreTakenAsTheirNoteOnsWere) {
    ArpeggiatorRig rig;
    for (int key = 40; key < 57; ++key) EXPECT_TRUE(rig.on(key)) << key;  // one too many
    rig.settings.values[S::gate] = 0;
    EXPECT_EQ(rig.notes(17 * 250), "40 41 42 43 44 45 46 47 48 49 50 51 52 53 54 55 40");
    rig.settings.values[S::on] = 0;
    EXPECT_FALSE(rig.on(70));
    EXPECT_TRUE(rig.off(56));
    EXPECT_TRUE(rig.off(40));
    EXPECT_FALSE(rig.off(40));
    EXPECT_FALSE(rig.on(41));  // now its voice's
    rig.settings.values[S::on] = 1;
    EXPECT_FALSE(rig.off(41));
    EXPECT_FALSE(rig.off(70));
}

TEST(Arpeggiator, EndsWithItsLastNoteAndGoesOnUntilThen) {
    ArpeggiatorRig rig;
    rig.chord({60, 64});
    EXPECT_EQ(rig.after(260), "0+60 126-60 250+64");
    rig.off(60);
    rig.off(64);
    EXPECT_TRUE(rig.arpeggiator.running());
    EXPECT_EQ(rig.after(60), "");
    // A key meanwhile joins the grid; the count goes on.
    rig.chord({50, 52, 54});
    EXPECT_EQ(rig.after(440), "376-64 500+54 626-54 750+50");
    for (const int key : {50, 52, 54}) rig.off(key);
    EXPECT_EQ(rig.after(240), "876-50");
    EXPECT_FALSE(rig.arpeggiator.running());
    rig.on(70);
    EXPECT_EQ(rig.after(10), "1000+70");
    // Nothing under way: it ends at once.
    rig.run(200);
    rig.off(70);
    EXPECT_FALSE(rig.arpeggiator.running());
    // Keys change on the very frame of a step that falls between two frames.
    const Phrase phrase{.lengthBeats = 0.25f, .events = {{0, 0.251, 0x9A, 60, 64}}};
    for (const Mode mode : {Mode::up, Mode::phrase}) {
        ArpeggiatorRig legato{mode};
        legato.phrase = &phrase;
        legato.beatsPerFrame = 0.0007;
        legato.settings.values[S::gate] = 1;
        legato.on(60);
        EXPECT_EQ(legato.after(358), "0+60");
        legato.off(60);
        legato.on(62);
        EXPECT_EQ(legato.after(10), "358+62 359-60");
    }
}

TEST(Arpeggiator, LatchAndPedalKeepKeysUntilTheNextChordOrStep) {
    ArpeggiatorRig rig;
    rig.settings.values[S::latch] = 1;
    rig.chord({60, 64});
    rig.off(60);
    rig.off(64);
    EXPECT_EQ(rig.notes(750), "60 64 60");
    rig.chord({50, 52});  // replaces what was latched, on the same grid
    EXPECT_EQ(rig.after(490), "750+52 876-52 1000+50 1126-50");
    rig.off(52);
    rig.settings.values[S::latch] = 0;
    EXPECT_EQ(rig.notes(500), "50 50");
    rig.off(50);
    EXPECT_EQ(rig.notes(1000), "");

    EXPECT_TRUE(rig.pedal(64));
    rig.chord({60, 64});
    rig.off(60);
    EXPECT_EQ(rig.notes(500), "60 64");
    EXPECT_FALSE(rig.pedal(63));
    EXPECT_EQ(rig.notes(500), "64 64");
    rig.pedal(127);
    rig.off(64);
    EXPECT_EQ(rig.notes(500), "64 64");
    rig.arpeggiator.resetPedal(rig.score());  // only released keys are left
    EXPECT_EQ(rig.notes(500), "");
    EXPECT_FALSE(rig.arpeggiator.running());
}

TEST(Arpeggiator, SyncChoosesWhereAPatternBegins) {
    ArpeggiatorRig rig;
    rig.settings.values[S::swing] = 0.9f;
    rig.run(110);
    rig.on(60);
    EXPECT_EQ(rig.after(390), "110+60 236-60 435+60");
    rig.sync(Sync::eachNote);
    rig.on(50);  // begins again; what sounds goes on
    EXPECT_EQ(rig.after(251), "500+50 561-60 626-50");
    rig.arpeggiator.stop([](int) {});
    rig.sync(Sync::beat);
    rig.run(49);  // 0.8
    // The first sixteenth is the even one on 1; a key behind it waits for the odd one.
    rig.on(60);
    EXPECT_EQ(rig.after(300), "1000+60");
    rig.arpeggiator.stop([](int) {});
    rig.run(10);
    rig.on(60);
    EXPECT_EQ(rig.after(400), "1325+60 1451-60 1500+60");
}

TEST(Arpeggiator, ChangesOfRateAndSwingLandOnTheGrid) {
    ArpeggiatorRig rig;
    rig.steps(16);
    rig.numberRows();
    rig.mode(Mode::controllerSequence);
    rig.run(100);
    rig.on(60);
    EXPECT_EQ(rig.rows(300), "100=0 350=1");
    rig.rate(13);  // eighths from the pattern's start
    EXPECT_EQ(rig.rows(300), "600=2");
    rig.rate(20);
    EXPECT_EQ(rig.rows(100), "725=3 788=4");
    rig.rate(16);
    EXPECT_EQ(rig.rows(200), "850=5");
    // A step that is scheduled stays where it is, and so does the second of a pair.
    rig.settings.values[S::swing] = 0.9f;
    EXPECT_EQ(rig.rows(700), "1100=6 1425=7 1600=8");
    rig.settings.values[S::swing] = 0;
    EXPECT_EQ(rig.rows(700), "1925=9 2100=10 2350=11");
}

TEST(Arpeggiator, FollowsJumpsOfTheSongPosition) {
    const auto jump = [](Sync sync, double beats) {
        ArpeggiatorRig rig;
        rig.sync(sync);
        rig.position = 8;
        rig.run(0);
        rig.on(60);
        rig.run(300);  // from beat 8 on, whatever was expected before the first render
        rig.position += beats;
        return rig.after(500);
    };
    const std::string undisturbed = "0+60 126-60 250+60 376-60 500+60 626-60 750+60";
    EXPECT_EQ(jump(Sync::firstNote, 0), undisturbed);
    EXPECT_EQ(jump(Sync::firstNote, -7.93), undisturbed);
    EXPECT_EQ(jump(Sync::firstNote, 100), undisturbed);
    // Small differences are no jumps: times stay, and come sooner or later.
    EXPECT_EQ(jump(Sync::firstNote, 0.1), "0+60 126-60 250+60 300-60 400+60 526-60 650+60 776-60");
    EXPECT_EQ(jump(Sync::firstNote, -0.1), "0+60 126-60 250+60 476-60 600+60 726-60");
    // On the beat, from 8.3 + 0.93 = 9.23 on, steps look for the new beat; the note is tied.
    EXPECT_EQ(jump(Sync::beat, 0.93), "0+60 126-60 250+60 446-60 570+60 696-60");
    // A key waits for its frame's position, and does so once.
    ArpeggiatorRig rig;
    rig.run(100);
    rig.on(60);
    rig.position += 0.05;
    EXPECT_EQ(rig.after(240), "100+60 226-60");
    rig.position += 0.05;
    EXPECT_EQ(rig.after(100), "340+60");  // due at 350, 50 sooner by the song, which is 300
    // On the beat, the step last played holds back none behind a jump.
    ArpeggiatorRig beat;
    beat.settings.values[S::gate] = 0;
    beat.sync(Sync::beat);
    beat.on(60);
    beat.run(270);  // steps at 0 and 0.25
    beat.position -= 0.15;
    beat.run(20);
    beat.played.clear();
    beat.position += 10;
    EXPECT_EQ(beat.notes(111), "60");  // 10.14 to 10.251
}

TEST(Arpeggiator, MissedPointsAreLeftOut) {
    ArpeggiatorRig rig{Mode::controllerSequence};
    rig.rate(20);
    rig.numberRows();
    rig.on(60);
    rig.run(100);  // steps at 0 and 0.0625
    rig.played.clear();
    rig.position += 0.199;  // 0.299: 0.125 is played late, up to 0.25 all are missed
    EXPECT_EQ(rig.rows(80), "100=2 114=3 176=4");
    // Shorter than a frame: one a frame.
    rig.beatsPerFrame = 0.5;
    EXPECT_EQ(rig.rows(3), "181=5 182=6");
}

TEST(Arpeggiator, StopsAtOnceOrWithItsNotesLetGo) {
    ArpeggiatorRig rig;
    rig.chord({60, 64});
    rig.settings.values[S::gate] = 1;
    EXPECT_EQ(rig.after(250), "0+60");
    rig.settings.values[S::on] = 0;
    EXPECT_EQ(rig.after(1000), "250-60 250#123=127");
    EXPECT_FALSE(rig.arpeggiator.running());
    // Off and on again between two frames, with a new key behind it.
    rig.settings.values[S::on] = 1;
    rig.on(50);
    EXPECT_EQ(rig.after(10), "1250+50");
    rig.settings.values[S::on] = 0;
    rig.off(50);
    rig.settings.values[S::on] = 1;
    rig.on(52);
    EXPECT_EQ(rig.after(10), "1260-50 1260#123=127 1260+52");
    // Into "Phrase" without one; then keys make nothing, but are taken.
    rig.mode(Mode::phrase);
    EXPECT_EQ(rig.after(10), "1270-52 1270#123=127");
    EXPECT_TRUE(rig.on(70));
    EXPECT_FALSE(rig.arpeggiator.running());
    rig.mode(Mode::up);
    EXPECT_TRUE(rig.on(72));
    EXPECT_EQ(rig.after(10), "1280+70");
    // All sound off: nothing comes later; the part is told what it still holds.
    std::vector<int> held;
    rig.arpeggiator.stop([&](int note) { held.push_back(note); });
    EXPECT_EQ(held, std::vector{70});
    EXPECT_FALSE(rig.arpeggiator.running());
    EXPECT_EQ(rig.after(1000), "");
}

}  // namespace
}  // namespace stratovane
