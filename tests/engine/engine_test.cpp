#include "engine/engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include "engine/command_ring.h"
#include "engine/transport.h"

namespace stratovane {
namespace {

constexpr int levelIndex = 67, releaseIndex = 130;

/// An engine with two pairs of outputs, driven block by block.
struct Rig {
    EngineShared shared;
    Trace trace;
    Engine engine{shared, trace, 2};
    Transport transport;
    PartEventLists events;
    std::vector<std::vector<float>> buffers{4};

    explicit Rig(std::int32_t blockFrames = 256) {
        shared.masterGain = 0.5f;
        engine.setSampleRate(44100, blockFrames);
    }
    void note(int part, int key, int velocity, std::int32_t frame = 0) {
        events[static_cast<std::size_t>(part)].append(
            {frame, static_cast<std::uint8_t>((velocity > 0 ? 0x90 : 0x80) | part),
             static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(velocity), 0});
    }
    void render(std::int32_t frames, bool replace = true) {
        float* outputs[4];
        for (std::size_t i = 0; i < 4; ++i) {
            if (replace) buffers[i].assign(static_cast<std::size_t>(frames), 7.0f);
            outputs[i] = buffers[i].data();
        }
        engine.render({&events, outputs, frames, replace}, transport);
        for (auto& list : events) list.clear();
    }
    float peak(std::size_t output) const {
        float peak = 0;
        for (const float x : buffers[output]) peak = std::max(peak, std::fabs(x));
        return peak;
    }
    /// An instance like part 1's own, that releases at once.
    void adoptSawtooth(int part) {
        auto instance = engine.makeInstance(part);
        instance->patch().makeSawtooth();
        instance->patch().store(1, releaseIndex, 0.0f);
        engine.adopt(part, std::move(instance));
    }
};

TEST(Engine, PlaysTheFirstPartAloneAndOnItsPair) {
    Rig rig;
    rig.note(0, 60, 100);
    rig.note(1, 60, 100);
    rig.render(256);
    EXPECT_GT(rig.peak(0), 0.01f);
    EXPECT_GT(rig.peak(1), 0.01f);
    EXPECT_EQ(rig.peak(2), 0.0f);  // buffers are cleared though nobody writes into them
    EXPECT_EQ(rig.engine.takeHighestVoices(), 1);
    EXPECT_EQ(rig.engine.takeHighestVoices(), 0);
}

TEST(Engine, ActsOnTheVeryFrameOfAnEvent) {
    for (const std::int32_t frame : {0, 1, 100, 255}) {
        Rig rig;
        rig.note(0, 60, 127, frame);
        rig.render(256);
        rig.events = {};
        for (std::int32_t i = 0; i < frame; ++i)
            ASSERT_EQ(rig.buffers[0][static_cast<std::size_t>(i)], 0.0f) << frame;
        std::vector<float> sound{rig.buffers[0].begin() + frame, rig.buffers[0].end()};
        rig.render(256);
        sound.insert(sound.end(), rig.buffers[0].begin(), rig.buffers[0].end());
        sound.resize(128);
        // The same sound, only later.
        Rig first;
        first.note(0, 60, 127, 0);
        first.render(128);
        EXPECT_EQ(sound, first.buffers[0]) << frame;
    }
}

TEST(Engine, HandlesWhatLiesBeyondTheBlockAfterItsLastFrame) {
    Rig rig;
    rig.note(0, 60, 100, 5000);
    rig.render(64);
    EXPECT_EQ(rig.peak(0), 0.0f);
    rig.render(64);
    EXPECT_GT(rig.peak(0), 0.0f);
    Rig empty;
    empty.note(0, 60, 100, 0);
    empty.render(0);
    empty.render(64);
    EXPECT_EQ(empty.buffers[0], rig.buffers[0]);
}

TEST(Engine, AddsWhereItIsToldTo) {
    Rig rig;
    rig.note(0, 60, 100);
    rig.render(128);
    const auto alone = rig.buffers[0];
    Rig adding;
    adding.note(0, 60, 100);
    for (auto& b : adding.buffers) b.assign(128, 0.25f);
    adding.render(128, false);
    for (std::size_t i = 0; i < 128; ++i) EXPECT_EQ(adding.buffers[0][i], 0.25f + alone[i]);
    EXPECT_EQ(adding.buffers[2][5], 0.25f);
}

TEST(Engine, RendersBlocksLargerThanAnnounced) {
    Rig small{64}, large{1024};
    for (Rig* rig : {&small, &large}) {
        rig->note(0, 60, 100, 10);
        rig->note(0, 64, 90, 500);
        rig->note(0, 60, 0, 777);
        rig->render(1000);
    }
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_NEAR(small.buffers[0][i], large.buffers[0][i], 1e-5) << i;
}

TEST(Engine, HandsOverOneInstanceABlockAndKeepsOneRetiring) {
    Rig rig;
    rig.note(0, 60, 100);
    rig.render(256);
    rig.adoptSawtooth(0);
    rig.adoptSawtooth(0);
    PartEngine* last = &rig.engine.current(0);
    rig.render(256);
    EXPECT_GT(rig.peak(0), 0.01f);  // the old note goes on in the retiring instance
    rig.note(0, 72, 100);           // goes to the first of the two new ones
    rig.render(256);
    EXPECT_EQ(&rig.engine.current(0), last);
    EXPECT_GT(rig.peak(0), 0.01f);
    // With two retiring the older one has gone at the end of that block, its held note with it.
    rig.note(0, 72, 0);
    rig.render(256);
    for (int i = 0; i < 200; ++i) rig.render(256);
    EXPECT_EQ(rig.peak(0), 0.0f);
}

TEST(Engine, SendsNoteOffsToRetiringInstancesButNoNotes) {
    Rig rig;
    rig.engine.patch(0).store(1, releaseIndex, 0.0f);
    rig.note(0, 60, 100);
    rig.render(256);
    auto silent = rig.engine.makeInstance(0);  // an empty patch
    rig.engine.adopt(0, std::move(silent));
    rig.note(0, 64, 100);
    rig.render(256);
    EXPECT_GT(rig.peak(0), 0.01f);
    rig.note(0, 60, 0);
    for (int i = 0; i < 20; ++i) rig.render(256);
    EXPECT_EQ(rig.peak(0), 0.0f);
}

TEST(Engine, EndsTheLatchedPatternOfAPatchThatGoes) {
    constexpr int arpeggiatorOn = 17, latch = 18;
    Rig rig;
    rig.adoptSawtooth(0);
    rig.engine.patch(0).store(0, arpeggiatorOn, 1);
    rig.engine.patch(0).store(0, latch, 1);
    rig.engine.arpeggiatorLog().turn(true);
    rig.render(100);
    rig.note(0, 60, 100, 7);
    rig.note(0, 60, 0, 8);
    for (int block = 0; block < 24; ++block) rig.render(256);  // into the second sixteenth
    rig.adoptSawtooth(0);
    for (int block = 0; block < 100; ++block) rig.render(256);
    std::vector<std::int64_t> frames;
    for (ArpeggiatorEvent event; rig.engine.arpeggiatorLog().take(event);)
        frames.push_back(event.frame);
    EXPECT_EQ(frames, (std::vector<std::int64_t>{107, 2886, 5620, 8398}));
    EXPECT_EQ(rig.engine.current(0).voiceCount(), 0);
}

TEST(Engine, DeletesRetiredInstancesThreeBlocksLater) {
    std::vector<std::string> lines;
    static std::vector<std::string>* sink = nullptr;
    sink = &lines;
    Rig rig;
    rig.trace.setMask(32);
    rig.trace.setSink([](const char* line) { sink->emplace_back(line); });
    auto deleted = [&] {
        return std::count(lines.begin(), lines.end(), "SV2 Engine::idle() - deleting old patch\n");
    };
    rig.render(64);
    for (const int part : {0, 3, 15}) rig.adoptSawtooth(part);
    rig.render(64);  // nothing sounded: the old instances retire and die in this block
    for (int i = 0; i < 3; ++i) {
        rig.engine.idle();
        EXPECT_EQ(deleted(), 0);
        rig.render(64);
    }
    rig.engine.idle();
    EXPECT_EQ(deleted(), 3);
}

TEST(Engine, SilencesAnOverloadAndGoesOn) {
    std::vector<std::string> lines;
    static std::vector<std::string>* sink = nullptr;
    sink = &lines;
    Rig rig;
    rig.trace.setSink([](const char* line) { sink->emplace_back(line); });
    rig.shared.masterGain = 1e9f;
    rig.note(0, 60, 127);
    rig.render(256);
    rig.render(256);
    EXPECT_EQ(rig.peak(0), 0.0f);
    rig.trace.flush();
    EXPECT_EQ(lines, std::vector<std::string>{"SV2 Overload!\n"});
    // Every voice is gone; the next note plays as ever.
    rig.shared.masterGain = 0.5f;
    rig.render(256);
    EXPECT_EQ(rig.peak(0), 0.0f);
    for (int i = 0; i < 80; ++i) {  // the part's gain still falls, block by block
        rig.note(0, 60, 127);
        rig.render(256);
    }
    rig.render(256);
    EXPECT_GT(rig.peak(0), 0.01f);
}

TEST(Engine, EndsEveryVoiceOnAllSoundOff) {
    Rig rig;
    for (int key = 40; key < 60; ++key) rig.note(0, key, 100);
    rig.render(256);
    rig.engine.allSoundOff(0);
    for (int i = 0; i < 20; ++i) rig.render(256);
    EXPECT_EQ(rig.peak(0), 0.0f);
}

TEST(Engine, HandsOverWhileTheOtherThreadRenders) {
    Rig rig;
    std::atomic<bool> stop{false};
    std::thread audio{[&] {
        for (int block = 0; !stop; ++block) {
            rig.note(0, 40 + block % 40, block % 3 == 0 ? 0 : 90, block % 64);
            rig.render(64);
        }
    }};
    for (int i = 0; i < 300; ++i) {
        rig.adoptSawtooth(0);
        rig.engine.patch(0).store(0, levelIndex, 0.3f);
        rig.engine.patch(0).store(1, 106, static_cast<float>(i % 10) / 10);
        rig.engine.idle();
    }
    stop = true;
    audio.join();
    EXPECT_TRUE(std::isfinite(rig.peak(0)));
}

TEST(CommandRing, KeepsOrderAndLosesNoAllSoundOff) {
    CommandRing ring;
    for (int i = 0; i < 100; ++i) ring.push(CommandKind::note, i % 16, i % 128, 1);
    for (int part = 0; part < 16; ++part) ring.push(CommandKind::controller, part, 120, 0);
    ring.push(CommandKind::linkedController, 3, 120, 0);
    Command command;
    int popped = 0;
    while (ring.pop(command)) {
        EXPECT_EQ(command.data1, popped);
        EXPECT_EQ(command.part, popped % 16);
        EXPECT_TRUE(command.isNote() && !command.isLinked());
        ++popped;
    }
    EXPECT_EQ(popped, 32);
    EXPECT_EQ(ring.takeOff(), 0xFFFFu);
    EXPECT_EQ(ring.takeLinkedOff(), 8u);
    EXPECT_FALSE(ring.takePanic());
    ring.panic();
    EXPECT_EQ(ring.takeOff(), 0xFFFFu);
    EXPECT_TRUE(ring.takePanic());
}

}  // namespace
}  // namespace stratovane
