#include <gtest/gtest.h>

#include "measure/measure.h"
#include "part_fixture.h"
#include "voice/part_clock.h"
#include "voice/part_engine.h"
#include "voice/part_output.h"

namespace stratovane {
namespace {

/// A part as the engine sees it, with two output pairs.
struct Engine {
    EngineShared shared;
    PartEngine part;
    std::vector<float> out[4];
    std::uint8_t touched[4] = {};

    explicit Engine(double rate = 44100, int maxFrames = 1024) : part{shared, 2, 1} {
        part.setSampleRate(rate, maxFrames);
        part.patch().makeSawtooth();
        part.patch().handOver();
    }
    void event(int status, int first, int second) {
        part.handleEvent({static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(first),
                          static_cast<std::uint8_t>(second), 0},
                         EventSource::host);
    }
    void render(int frames) {
        float* buffers[4];
        const auto at = out[0].size();
        for (int i = 0; i < 4; ++i) {
            out[i].resize(at + static_cast<std::size_t>(frames));
            buffers[i] = out[i].data();
        }
        part.render({buffers, touched, 2}, static_cast<int>(at), frames, 0);
    }
};

struct TimedEvent {
    int frame, status, first, second;
};

/// A busy patch and a few hundred events on it.
std::vector<TimedEvent> storm(Random& random, int frames) {
    std::vector<TimedEvent> events;
    for (int frame = 0; frame < frames; frame += 1 + random.draw() % 400) {
        const int kind = random.draw() % 10, value = random.draw() % 128;
        if (kind < 4) events.push_back({frame, 0x90, 36 + value % 48, 1 + random.draw() % 127});
        if (kind >= 4 && kind < 7) events.push_back({frame, 0x80, 36 + value % 48, 0});
        if (kind == 7) events.push_back({frame, 0xE0, random.draw() % 128, value});
        if (kind == 8) events.push_back({frame, 0xB0, value % 2 ? 64 : 66, random.draw() % 128});
        constexpr int others[] = {1, 2, 11, 67, 68, 84, 120, 121, 126, 127};
        if (kind == 9) events.push_back({frame, 0xB0, others[value % 10], random.draw() % 128});
    }
    return events;
}

void makeBusy(Patch& patch, Random& random) {
    patch.setElementCount(6);
    for (int e = 1; e <= 6; ++e) {
        patch.initElement(e, ElementType::analog);
        for (const int index : {55, 57, 59, 60, 63, 64, 76, 83, 98, 104, 106, 140})
            patch.set(e, index, random.unipolar());
        for (const int index : {66, 74, 109, 142}) patch.set(e, index, 0.4f);
        for (const int index : {124, 126, 127, 130}) patch.set(e, index, 0.3f * random.unipolar());
        patch.set(e, 64, 0.2f * random.unipolar());
        patch.set(e, tone::click, e % 2 ? 1.0f : 0.0f);
        patch.set(e, tone::muteCondition, entry(e == 6 ? 5 : 0, 15.9f));
    }
    // Rows of every kind, and LFOs that run and restart.
    for (int e = 1; e <= 6; ++e) {
        for (int i = 0; i < 5 * 4 * (e % 4); ++i)
            patch.set(e, elementIndex::firstModulationRow + i, random.unipolar());
        for (const int index : {85, 86, 87, 88}) patch.set(e, index, random.unipolar());
    }
    for (int i = global::lfo1Wave; i <= global::lfo2Phase; ++i) patch.set(0, i, random.unipolar());
    patch.set(6, tone::mute, 0.0f);
    patch.set(0, global::maxVoices, 0.4f);
    patch.set(0, global::redamper, 0.4f);
}

std::vector<StereoFrame> play(const std::vector<TimedEvent>& events, int frames, int longestPiece) {
    TestPart part{1};
    Random random{11};
    makeBusy(part.state.patch, random);
    std::vector<StereoFrame> sound;
    std::size_t next = 0;
    for (int frame = 0; frame < frames;) {
        for (; next < events.size() && events[next].frame == frame; ++next)
            part.event(events[next].status, events[next].first, events[next].second);
        const int until = next < events.size() ? events[next].frame : frames;
        const int piece = std::min({longestPiece, until - frame, part.mix.capacity()});
        part.renderPiece(piece);
        const auto buffer = part.mix.buffer(piece);
        sound.insert(sound.end(), buffer.begin(), buffer.end());
        frame += piece;
    }
    return sound;
}

TEST(PartRender, IsTheSameForAnyCutOfBlocks) {
    constexpr int frames = 60000;
    Random random{5};
    const auto events = storm(random, frames);
    const auto whole = play(events, frames, 1024);
    float loudest = 0;
    for (const StereoFrame& f : whole) loudest = std::max(loudest, std::fabs(f.left));
    EXPECT_GT(loudest, 0.05f);
    for (const int piece : {1, 7, 64, 1000}) {
        const auto cut = play(events, frames, piece);
        ASSERT_EQ(cut.size(), whole.size());
        std::size_t same = 0;
        while (same < whole.size() && cut[same].left == whole[same].left &&
               cut[same].right == whole[same].right)
            ++same;
        EXPECT_EQ(same, whole.size()) << "pieces of " << piece;
    }
}

TEST(PartRender, EngineBlocksGiveTheSameBitsOnceGainsStand) {
    const auto play = [](int piece) {
        Engine engine;
        engine.event(0x90, 60, 100);
        engine.event(0x90, 67, 80);
        for (int frame = 0; frame < 30000; frame += piece) {
            if (frame == 3000) engine.event(0x80, 67, 0);
            engine.render(piece);
        }
        return engine.out[0];
    };
    const auto whole = play(3000);
    for (const int piece : {1, 8, 1000}) EXPECT_TRUE(play(piece) == whole) << piece;
}

TEST(PartRender, PlaysTheNoteAtItsPitch) {
    for (const double rate : {22050.0, 44100.0, 96000.0}) {
        for (const int note : {36, 57, 69, 88}) {
            Engine engine{rate};
            engine.event(0x90, note, 100);
            engine.render(65536);
            const double hz = 440 * std::exp2((note - 69) / 12.0);
            const double found = measure::frequencyNear(engine.out[0], rate, hz);
            EXPECT_NEAR(measure::cents(found, hz), 0, 0.05) << note << " at " << rate;
        }
    }
}

TEST(PartRender, ANoteBeginsOnItsFrameAndEndsForGood) {
    Engine engine;
    engine.render(777);
    EXPECT_FALSE(engine.part.sounding());
    engine.event(0x90, 60, 100);
    engine.render(3000);
    EXPECT_EQ(engine.out[0][776], 0);
    EXPECT_NE(engine.out[0][778], 0);
    EXPECT_EQ(engine.part.voiceCount(), 1);
    engine.event(0x80, 60, 0);
    engine.render(44100);
    EXPECT_FALSE(engine.part.sounding());
    EXPECT_EQ(engine.part.voiceCount(), 0);
    EXPECT_EQ(engine.part.takeHighestVoiceCount(), 1);
    std::fill(std::begin(engine.touched), std::end(engine.touched), std::uint8_t{0});
    const auto before = engine.out[0].size();
    engine.render(4096);
    EXPECT_TRUE(isSilent(
        {engine.out[0].begin() + static_cast<std::ptrdiff_t>(before), engine.out[0].end()}));
    EXPECT_EQ(engine.touched[0], 0) << "a silent part touches no output";
}

TEST(PartRender, ANoteOffOnTheNotesFrameLeavesSilence) {
    Engine engine;
    engine.event(0x90, 60, 100);
    engine.event(0x80, 60, 0);
    engine.render(64);
    EXPECT_TRUE(isSilent(engine.out[0]));
    EXPECT_FALSE(engine.part.sounding());
}

TEST(PartRender, SilentElementsAgeUnheard) {
    Engine engine;
    engine.part.patch().set(1, tone::level, 0);
    engine.event(0x90, 60, 100);
    engine.render(1000);
    EXPECT_TRUE(isSilent(engine.out[0]));
    EXPECT_TRUE(engine.part.sounding());
    engine.event(0x80, 60, 0);
    engine.render(44100);
    EXPECT_FALSE(engine.part.sounding());
}

TEST(PartRender, AParameterStoredBeforeABlockActsOnItsFirstFrame) {
    Engine engine;
    engine.part.patch().store(1, tone::pan, 1.0f);
    engine.event(0x90, 60, 100);
    engine.render(2000);
    const double side = measure::rms(engine.out[1]);
    EXPECT_GT(side, 0.001);
    EXPECT_LT(measure::rms(engine.out[0]), side * 1e-6);
}

TEST(PartRender, ARateChangeEndsVoicesAndTheSameRateDoesNot) {
    Engine engine;
    engine.event(0x90, 60, 100);
    engine.part.setSampleRate(44100, 512);
    EXPECT_TRUE(engine.part.sounding());
    engine.render(2000);  // beyond the block size that was told
    engine.part.setSampleRate(48000, 512);
    EXPECT_FALSE(engine.part.sounding());
}

TEST(PartClock, AFrameReadsTheSameStepForAnyCut) {
    constexpr int frames = 3000;
    const auto play = [](std::uint32_t seed) {
        PartClock clock;
        clock.prepare(44100, 128);
        Random random{seed};
        std::vector<float> seen;
        for (int frame = 0; frame < frames;) {
            const int piece = std::min(1 + random.draw() % 128, frames - frame);
            // Half of the time the part is silent: its frames pass all the same.
            if (random.draw() % 2) {
                clock.beginPiece(piece, 1.0f);
                for (int i = 0; i < piece; ++i) seen.push_back(clock.at(frame + i).pressure);
                clock.endPiece(piece);
            } else {
                clock.skip(piece, 1.0f);
                seen.resize(seen.size() + static_cast<std::size_t>(piece), -1.0f);
            }
            frame += piece;
        }
        return seen;
    };
    const auto one = play(1), other = play(2);
    float last = 0;
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (one[i] < 0 || other[i] < 0) continue;
        ASSERT_EQ(one[i], other[i]) << i;
        ASSERT_GE(one[i], last);
        last = one[i];
    }
    EXPECT_GT(last, 0.9f);
}

TEST(PartOutput, PanLevelPairAndTouch) {
    const std::vector<StereoFrame> buffer(2048, {1.0f, 0.5f});
    const struct {
        float pan;
        int pair;
        float left, right;
        int first;  // output
    } cases[] = {{0.5f, 1, 0.7075f, 0.35375f, 0}, {0, 2, 1, 0, 2}, {1, 9, 0, 0.5f, 2}};
    for (const auto& c : cases) {
        std::vector<std::vector<float>> out(4, std::vector<float>(buffer.size()));
        float* outputs[] = {out[0].data(), out[1].data(), out[2].data(), out[3].data()};
        std::uint8_t touched[4] = {};
        PartOutput output;
        output.add(buffer, {2.0f, c.pan, c.pair}, {outputs, touched, 2}, 0);
        const auto first = static_cast<std::size_t>(c.first);
        EXPECT_NEAR(out[first][100], 2 * c.left, 1e-5);
        EXPECT_NEAR(out[first + 1][100], 2 * c.right, 1e-5);
        EXPECT_EQ(touched[first], 1);
        EXPECT_EQ(touched[2 - first], 0);
        EXPECT_NEAR(output.takePeak(), 2 * std::max(c.left, c.right), 1e-5);
        EXPECT_EQ(output.takePeak(), 0);
        output.add(buffer, {2.0f, c.pan, 0}, {outputs, touched, 2}, 0);
        EXPECT_NEAR(out[first][100], 2 * c.left, 1e-5) << "off adds nothing";
    }
}

TEST(PartOutput, GainsGlideOverAThousandFramesOrTheWholePiece) {
    for (const int frames : {100, 1000, 4000}) {
        const std::vector<StereoFrame> buffer(static_cast<std::size_t>(frames), {1.0f, 1.0f});
        std::vector<float> left(buffer.size()), right(buffer.size());
        float* outputs[] = {left.data(), right.data()};
        std::uint8_t touched[2] = {};
        PartOutput output;
        output.add(buffer, {0.0f, 0.0f, 1}, {outputs, touched, 1}, 0);
        output.add(buffer, {1.0f, 0.0f, 1}, {outputs, touched, 1}, 0);
        const double perFrame = 1.0 / std::max(frames, 1000);
        EXPECT_NEAR(left[50], 50 * perFrame, 1e-5);
        std::ranges::fill(left, 0.0f);
        output.add(buffer, {1.0f, 0.0f, 1}, {outputs, touched, 1}, 0);
        EXPECT_NEAR(left[0], std::min(1.0, frames * perFrame), 1e-5);
    }
}

TEST(PartRender, RandomEventsStayFiniteAndBounded) {
    for (const double rate : {8000.0, 192000.0}) {
        Random random{static_cast<std::uint32_t>(rate)};
        for (int round = 0; round < 4; ++round) {
            TestPart part{1, rate};
            makeBusy(part.state.patch, random);
            const auto events = storm(random, 40000);
            int frame = 0;
            for (const TimedEvent& e : events) {
                for (const float x : part.run(e.frame - frame)) ASSERT_LT(std::fabs(x), 100.0f);
                frame = e.frame;
                part.event(e.status, e.first, e.second);
                if (random.draw() % 8 == 0)
                    part.set(1 + random.draw() % 6, random.draw() % 150, random.unipolar());
                if (random.draw() % 64 == 0) part.set(0, random.draw() % 150, random.unipolar());
            }
            part.control(121, 0);
            part.control(120, 0);
            part.setAll(tone::muteFade, 0);
        }
    }
}

}  // namespace
}  // namespace stratovane
