#include <gtest/gtest.h>

#include "part_fixture.h"
#include "voice/arpeggiator_log.h"
#include "voice/part_engine.h"

namespace stratovane {
namespace {

constexpr int octaves = 20, rate = 23;

float mode(ArpeggiatorMode mode) { return entry(static_cast<int>(mode), 15.9f); }

void turnOn(Patch& patch, ArpeggiatorMode which = ArpeggiatorMode::up) {
    patch.set(0, global::arpeggiatorOn, 1);
    patch.set(0, global::arpeggiatorMode, mode(which));
}

/// A part as the engine sees it, with the log that its arpeggiator fills.
struct LoggedPart {
    EngineShared shared;
    PartEngine part{shared, 1, 1, 5};
    ArpeggiatorLog log;
    std::int64_t frame = 0;
    std::vector<float> left;

    LoggedPart() {
        part.setSampleRate(44100, 1024);
        part.patch().makeSawtooth();
        part.patch().handOver();
        turnOn(part.patch());
        log.turn(true);
    }
    void event(int status, int first, int second) {
        part.handleEvent({static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(first),
                          static_cast<std::uint8_t>(second), 0},
                         EventSource::host);
    }
    /// A block of which the first frames are another's.
    void render(int frames, int offset = 0) {
        std::vector<float> l(static_cast<std::size_t>(offset + frames)), r(l.size());
        float* buffers[] = {l.data(), r.data()};
        std::uint8_t touched[2] = {};
        const double beat = static_cast<double>(frame) * MusicalTime{}.beatsPerFrame;
        part.render({buffers, touched, 1, nullptr, &log, frame - offset}, offset, frames, beat);
        left.insert(left.end(), l.begin() + offset, l.end());
        frame += frames;
    }
    std::string events() {
        std::string text;
        for (ArpeggiatorEvent e; log.take(e);) {
            EXPECT_EQ(e.part, 5);
            text += std::to_string(e.frame);
            text += e.bytes[0] == 0x90 ? '+' : '-';
            text += std::to_string(e.bytes[1]);
            text += ' ';
        }
        return text;
    }
};

TEST(ArpeggiatorInPart, PlaysAndLogsTheSameForAnyCutOfBlocks) {
    const auto play = [](int block) {
        LoggedPart part;
        part.render(500);
        part.event(0x90, 60, 100);
        part.event(0x90, 64, 100);
        for (int done = 0; done < 20480; done += block) part.render(block, done % 3);
        return std::pair{part.events(), part.left};
    };
    const auto whole = play(10240);
    EXPECT_EQ(whole.first, "500+60 3279-60 6013+64 8791-64 11525+60 14304-60 17038+64 19816-64 ");
    EXPECT_GT(*std::ranges::max_element(whole.second), 0.01f);
    for (const int block : {1, 64, 1024}) EXPECT_TRUE(play(block) == whole) << block;
}

TEST(ArpeggiatorInPart, IsNotSilentBeforeItsPatternEnds) {
    LoggedPart part;
    part.part.patch().set(0, rate, 0);  // eight beats a step
    part.part.patch().set(0, global::gate, 0);
    part.part.patch().set(1, tone::release, 0);
    part.part.patch().set(0, global::latch, 1);
    EXPECT_FALSE(part.part.sounding());
    part.event(0x90, 60, 100);
    part.event(0x80, 60, 0);
    for (int i = 0; i < 200; ++i) part.render(1024);
    EXPECT_EQ(part.part.voiceCount(), 0);
    EXPECT_TRUE(part.part.sounding());
    EXPECT_EQ(part.events(), "0+60 23-60 176400+60 176423-60 ");
    // What the engine does to an outgoing patch.
    part.part.patch().store(0, global::latch, 0);
    for (int i = 0; i < 40; ++i) part.render(1024);
    EXPECT_FALSE(part.part.sounding());
    EXPECT_EQ(part.events(), "");
}

/// Lets a part's arpeggiator play without sound.
void arpeggiate(TestPart& part, int frames) {
    Arpeggiator& arpeggiator = part.state.arpeggiator;
    for (int done = 0; done < frames;) {
        const double beat = part.state.time.position;
        const int until = arpeggiator.framesUntilNext(frames - done, beat, part.state.score());
        arpeggiator.advance(until, part.state.time.beatsPerFrame);
        part.state.time.position += until * part.state.time.beatsPerFrame;
        done += until;
        if (done == frames) return;
        for (MidiBytes bytes; arpeggiator.take(bytes);)
            handlePartEvent(part.state, bytes, EventSource::arpeggiator);
    }
}

TEST(ArpeggiatorInPart, ElementsMarkedNoArpFollowThePlayer) {
    TestPart part{3};
    part.set(2, tone::triggerCondition, entry(9, 15.9f));
    part.set(3, tone::triggerCondition, entry(9, 15.9f));
    part.set(3, tone::monoMode, monoMode(MonoMode::highest));
    turnOn(part.state.patch);
    part.set(0, octaves, entry(1, 3.9f));  // two octaves
    part.on(60);
    part.on(64);
    EXPECT_EQ(part.playing(1), Notes{});
    EXPECT_EQ(part.playing(2), (Notes{60, 64}));
    EXPECT_EQ(part.playing(3), (Notes{64}));
    arpeggiate(part, 3 * 5500);  // 60, 64 and 72
    EXPECT_EQ(part.playing(1), (Notes{}));
    EXPECT_EQ(part.playing(2), (Notes{60, 64}));
    arpeggiate(part, 200);  // and 76
    EXPECT_EQ(part.playing(1), (Notes{76}));
    EXPECT_EQ(part.playing(3), (Notes{64}));
    part.off(64);
    EXPECT_EQ(part.playing(2), (Notes{60}));
    part.off(60);
    EXPECT_EQ(part.playing(2), Notes{});
    EXPECT_EQ(part.playing(1), (Notes{76}));
    arpeggiate(part, 5600);
    EXPECT_EQ(part.playing(), Notes{});
    // A note ends by the hand that began it, whatever the element has become.
    part.on(50);
    part.set(2, tone::triggerCondition, 0);
    part.off(50);
    EXPECT_EQ(part.playing(), Notes{});
}

TEST(ArpeggiatorInPart, PedalsAndMonoRulesLeaveItsNotesAlone) {
    TestPart part{1};
    part.set(1, tone::monoMode, monoMode(MonoMode::last));
    const auto arpeggiated = [&](int status, int note) {
        part.event(status, note, 100, 0, EventSource::arpeggiator);
    };
    part.control(64, 127);
    turnOn(part.state.patch);
    arpeggiated(0x90, 60);
    arpeggiated(0x90, 64);
    arpeggiated(0x80, 64);
    EXPECT_EQ(part.playing(), Notes{});
    arpeggiated(0x80, 60);
    arpeggiated(0x90, 60);
    part.control(66, 127);
    arpeggiated(0x80, 60);
    EXPECT_EQ(part.playing(), Notes{});
    part.control(66, 0);
    part.control(64, 0);
    part.control(64, 127);  // the arpeggiator's
    EXPECT_FALSE(part.state.controllers.sustainDown);
    part.control(64, 0);
    part.set(0, global::arpeggiatorMode, mode(ArpeggiatorMode::controllerSequence));
    part.control(64, 127);
    part.on(60);
    part.off(60);
    EXPECT_EQ(part.playing(), Notes{60});
}

TEST(ArpeggiatorInPart, SoundOffForgetsWhatItHeldAndZonesKeepKeysFromIt) {
    TestPart part{1};
    turnOn(part.state.patch);
    part.set(0, global::keyLow, entry(40, 127.9f));
    part.on(39);
    arpeggiate(part, 10);
    EXPECT_EQ(part.active(), 0);
    part.on(60);
    part.on(62);
    arpeggiate(part, 10);
    EXPECT_EQ(part.playing(), Notes{60});
    EXPECT_EQ(part.state.held.count(), 1);
    part.control(123, 0);
    EXPECT_EQ(part.playing(), Notes{});
    EXPECT_EQ(part.state.held.count(), 0);
    arpeggiate(part, 44100);
    EXPECT_EQ(part.playing(), Notes{});
    part.off(60);
    part.on(64);
    arpeggiate(part, 10);
    EXPECT_EQ(part.playing(), Notes{64});
    // Switched off by its pedal, it ends its own notes and no others.
    part.set(0, global::arpeggiatorMode, mode(ArpeggiatorMode::controllerSequence));
    part.on(70);
    part.control(69, 0);
    arpeggiate(part, 10);
    EXPECT_EQ(part.playing(), Notes{70});
}

}  // namespace
}  // namespace stratovane
