#include <gtest/gtest.h>

#include "content_part.h"
#include "measure/measure.h"
#include "voice/part_engine.h"

namespace stratovane {
namespace {

/// Zones of all formats, with and without loops, stereo and mono; an organ of noise.
void putContent(ContentPart& content) {
    BankFileSource bank;
    const auto wave = sine(50, 6000);
    for (const SampleFormat format :
         {SampleFormat::pcm16, SampleFormat::delta, SampleFormat::float32})
        for (const int channels : {1, 2})
            bank.samples.push_back(
                writeSampleData({.values = wave, .channels = channels, .rateHz = 22050}, format));
    std::vector<Zone> zones;
    for (int i = 0; i < 16; ++i)
        zones.push_back({.key = ((8 * i + 7) * 256 + 127) * 65536,
                         .sampleNumber = 1 + i % 6,
                         .rootFromKeyRange = i % 3 == 0,
                         .frames = 2000 + 300 * i,
                         .loopFrames = i % 2 ? 37 * i : 0,
                         .loopTuneSemitones = 0.3f,
                         .pan = 0.1f});
    bank.items = {{"Set", "", writeSampleSet(zones), {}}};
    content.put("Samples/020 Mixed", bank);

    Random random{9};
    std::vector<std::int16_t> loop;
    for (int i = 0; i < 8 * 97; ++i)
        loop.push_back(static_cast<std::int16_t>(random.draw() - 16384));
    ToneWheelLoops loops;
    loops.fill(loop);
    content.put("Drawbars/020 Organ",
                BankFileSource{.items = {{"Set", "", writeToneWheels(0.1f, loops), {}}}});
}

void fill(Patch& patch, ContentLibrary& library, Random& random) {
    patch.setPlace({.library = &library});
    patch.makeSawtooth();
    patch.setElementCount(6);
    for (int e = 1; e <= 6; ++e) {
        ContentPart::choose(patch, e, e % 2 ? ElementType::sample : ElementType::drawbar);
        for (const int index : {20, 21, 22, 23, 24, 25, 28, 29, 33,  34,  36,  57,
                                59, 60, 67, 68, 69, 76, 83, 98, 103, 104, 106, tone::release})
            if (random.draw() % 2) patch.set(e, index, random.unipolar());
        for (int i = 0; i < 10; ++i)
            patch.set(e, elementIndex::firstModulationRow + i, random.unipolar());
    }
}

/// A storm of notes, pedals and settings, changes of content and type among them; the same whatever
/// the longest piece rendered at once.
std::vector<float> play(ContentPart& content, double rate, int longestPiece, std::uint32_t seed) {
    EngineShared shared;
    PartEngine engine{shared, 1, 1, 0, &content.library};
    engine.setSampleRate(rate, 1024);
    Random random{seed};
    fill(engine.patch(), content.library, random);
    content.load();
    engine.patch().handOver();
    constexpr int frames = 30000;
    std::vector<float> left(frames), right(frames);
    float* out[] = {left.data(), right.data()};
    std::uint8_t touched[2] = {};
    for (int frame = 0, next = 0; frame < frames;) {
        if (frame == next) {
            const int kind = random.draw() % 12;
            const auto note = static_cast<std::uint8_t>(24 + random.draw() % 90);
            const auto second = static_cast<std::uint8_t>(1 + random.draw() % 127);
            if (kind < 10)
                engine.handleEvent({std::uint8_t(kind < 6 ? 0x90 : 0x80), note, second, 0},
                                   EventSource::host);
            else
                engine.handleEvent({0xB0, std::uint8_t(kind == 10 ? 64 : 11), second, 0},
                                   EventSource::host);
            if (random.draw() % 4 == 0)
                engine.patch().set(1 + random.draw() % 6, 17 + random.draw() % 32,
                                   random.unipolar());
            if (random.draw() % 32 == 0)
                engine.patch().set(1 + random.draw() % 6, elementIndex::type,
                                   entry(1 + random.draw() % 2, 15.9f));
            engine.idle();
            content.load();
            next = frame + 1 + random.draw() % 300;
        }
        const int count = std::min({longestPiece, next - frame, frames - frame});
        engine.render({out, touched, 1}, frame, count, 0);
        frame += count;
    }
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST(ContentStorm, TheCutOfBlocksIsNotHeard) {
    ContentPart content;
    putContent(content);
    ASSERT_TRUE(content.library.open(content.root()));
    const auto whole = play(content, 44100, 1024, 5);
    EXPECT_GT(measure::peak(whole), 0.05);
    for (const int piece : {1, 7, 64})
        EXPECT_TRUE(play(content, 44100, piece, 5) == whole) << piece;
}

TEST(ContentStorm, StaysFinite) {
    ContentPart content;
    putContent(content);
    ASSERT_TRUE(content.library.open(content.root()));
    for (const double rate : {8000.0, 44100.0, 192000.0})
        for (std::uint32_t seed = 1; seed <= 3; ++seed) {
            const auto sound = play(content, rate, 200, seed);
            EXPECT_TRUE(measure::allFinite(sound)) << rate << " " << seed;
            EXPECT_LT(measure::peak(sound), 500) << rate << " " << seed;
        }
}

}  // namespace
}  // namespace stratovane
