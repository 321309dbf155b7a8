// Files that were flipped, cut and lengthened, as every format may meet them. What is read must
// stay within its limits; the sanitizers watch the rest.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "content/content_support.h"
#include "content/scene_record.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "content/wavetable.h"

namespace stratovane {
namespace {

using content_test::ContentFixture;
using Kind = ContentKind;

void flipBytes(Bytes& bytes, std::mt19937& random) {
    for (std::size_t n = 1 + random() % 4; n-- > 0 && !bytes.empty();)
        bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
}
/// A word that lies: very large, negative, or off by a little.
void lieInAWord(Bytes& bytes, std::mt19937& random) {
    if (bytes.size() < 8) return;
    const std::size_t at = random() % (std::min<std::size_t>(bytes.size(), 600) / 4) * 4;
    std::uint32_t word = 0;
    std::memcpy(&word, &bytes[at], 4);
    const std::uint32_t lies[] = {0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 0,         word + 1,
                                  word - 1,   word * 2,   0x7FC00000, 0x7F800000};
    word = lies[random() % std::size(lies)];
    std::memcpy(&bytes[at], &word, 4);
}
void truncate(Bytes& bytes, std::mt19937& random) { bytes.resize(random() % (bytes.size() + 1)); }
void lengthen(Bytes& bytes, std::mt19937& random) {
    for (std::size_t n = random() % 100; n-- > 0;)
        bytes.push_back(static_cast<std::uint8_t>(random()));
}

using Reader = std::function<void(const Bytes&)>;

void damage(const Bytes& good, int rounds, const Reader& read) {
    std::mt19937 random{29};
    read(good);
    for (int round = 0; round < rounds; ++round) {
        Bytes bytes = good;
        constexpr void (*ways[])(Bytes&, std::mt19937&) = {flipBytes, lieInAWord, truncate,
                                                           lengthen};
        ways[round % 4](bytes, random);
        if (random() % 4 == 0) lieInAWord(bytes, random);
        read(bytes);
    }
}

/// Walks through a sample as a voice would, and sums it.
double walk(const Zone& zone, const SampleData& data) {
    double sum = 0;
    const auto values = static_cast<std::size_t>(zone.playedFrames(data)) *
                        static_cast<std::size_t>(data.channels());
    for (std::size_t i = 0; i < values; ++i) switch (data.format()) {
            case SampleFormat::pcm16:
                sum += data.pcm16()[i];
                break;
            case SampleFormat::float32:
                sum += std::isfinite(data.float32()[i]) ? 0 : NAN;
                break;
            case SampleFormat::delta:
                sum += data.delta()[i];
                break;
        }
    if (data.format() == SampleFormat::delta)
        sum += static_cast<double>(data.startState(63, data.channels() - 1).value) +
               static_cast<double>(data.stateAt(data.frames(), 0).value);
    return sum;
}

TEST(Damage, Samples) {
    for (const SampleFormat format :
         {SampleFormat::pcm16, SampleFormat::float32, SampleFormat::delta}) {
        const std::vector<float> wave = content_test::randomWave(300, 31);
        damage(writeSampleData({.values = wave, .channels = 2}, format), 4000,
               [](const Bytes& bytes) {
                   ContentFault fault;
                   const auto data = readSampleData(bytes, fault);
                   if (!data) return;
                   EXPECT_TRUE(std::isfinite(walk({.frames = 1 << 30}, *data)));
               });
    }
}

TEST(Damage, SampleSets) {
    damage(content_test::sampleSetOf({1, 2, 3, 4}), 4000, [](const Bytes& bytes) {
        ContentFault fault;
        const auto set = readSampleSet(bytes, fault);
        if (!set) return;
        for (int note = 0; note < 128; note += 9)
            for (int velocity = 0; velocity < 128; velocity += 31) {
                const Zone* zone = set->find(note, velocity);
                EXPECT_TRUE(zone >= &set->zones.front() && zone <= &set->zones.back());
                EXPECT_TRUE(std::isfinite(zone->pan + zone->level + zone->tuneSemitones));
            }
    });
}

TEST(Damage, WavetablesToneWheelsAndTunings) {
    ContentFault fault;
    damage(writeWavetable({}), 400, [&](const Bytes& bytes) {
        if (const auto table = readWavetable(bytes, fault)) {
            EXPECT_EQ(writeWavetable(*table).size(), 66312u);
        }
    });
    std::vector<std::int16_t> wheel(40, 3);
    ToneWheelLoops loops;
    loops.fill(wheel);
    damage(writeToneWheels(0.5f, loops), 4000, [&](const Bytes& bytes) {
        const auto wheels = readToneWheels(bytes, fault);
        if (!wheels) return;
        EXPECT_TRUE(std::isfinite(wheels->tuning));
        for (std::size_t k = 0; k < 12; ++k) {
            // The highest value that a voice's highest wheel reads, one frame later.
            const auto last = static_cast<std::size_t>(wheels->start[k] + wheels->length[k] + 15);
            EXPECT_LT(last, wheels->values.size());
        }
    });
    damage(writeTuningItem(*readTuningText("note 1=150")), 4000, [&](const Bytes& bytes) {
        const auto table = readTuningItem(bytes, fault);
        if (!table) return;
        for (const float value : table->semitones) EXPECT_TRUE(std::isfinite(value));
    });
    const std::string text = "note 1=150.0\nnote 2=-3e4\nnote 127=12750.25\n";
    damage({text.begin(), text.end()}, 4000, [](const Bytes& bytes) {
        const auto table = readTuningText(ByteView{bytes}.text());
        ASSERT_EQ(table->semitones.size(), 128u);
        for (const float value : table->semitones) EXPECT_TRUE(std::isfinite(value));
    });
}

TEST(Damage, Scenes) {
    Scene scene{.name = "Scene"};
    for (int i = 0; i < 8; ++i) scene.phrase.events.push_back({i * 0.5, 0.25, 0x90, 60, 100});
    damage(writeSceneRecord(scene), 6000, [](const Bytes& bytes) {
        const auto read = readSceneRecord(bytes);
        if (!read) return;
        EXPECT_LE(read->name.size(), 31u);
        EXPECT_LE(read->storedBytes, bytes.size());
        double before = 0;
        for (const PhraseEvent& event : read->phrase.events) {
            EXPECT_GE(event.beats, before);
            EXPECT_TRUE(std::isfinite(event.lengthBeats));
            before = event.beats;
        }
        // What was read can be written and read again without a further change.
        const auto again = readSceneRecord(writeSceneRecord(*read));
        ASSERT_TRUE(again);
        EXPECT_EQ(again->phrase, read->phrase);
    });
}

TEST(Damage, BankFiles) {
    BankFileSource bank{.code = 1, .secondName = "Second"};
    const std::vector<float> wave = content_test::randomWave(50, 37);
    bank.samples = {writeSampleData({.values = wave}, SampleFormat::pcm16),
                    writeSampleData({.values = wave}, SampleFormat::delta)};
    for (int i = 0; i < 3; ++i)
        bank.items.push_back(
            {"Item", "I", content_test::sampleSetOf({1, 2}), content_test::sampleSetOf({2})});
    ContentFixture f;
    f.trace.setMask(0);
    damage(writeBankFile(bank), 3000, [&](const Bytes& bytes) {
        f.put("Samples/001 S.bank", bytes);
        ContentLibrary library{f.trace};
        ASSERT_TRUE(library.open(f.folder / ""));
        std::vector<const ItemSlot*> slots;
        for (int i = 0; i < 4; ++i)
            for (const bool eco : {false, true})
                if (const ItemSlot* slot = library.acquire(Kind::samples, 1, i, eco))
                    slots.push_back(slot);
        for (int i = 0; i < 12; ++i) library.idle();
        EXPECT_FALSE(library.busy());
        for (const ItemSlot* slot : slots)
            if (const auto* set = slot->get<SampleSet>())
                for (const Zone& zone : set->zones)
                    if (zone.sampleData() != nullptr) {
                        EXPECT_TRUE(std::isfinite(walk(zone, *zone.sampleData())));
                    }
        library.search("item");
        for (int i = 0; i < 4; ++i)
            for (const bool eco : {false, true, false, true})
                library.release(Kind::samples, 1, i, eco);
        for (int i = 0; i < 40; ++i) library.idle();
        EXPECT_EQ(library.memoryInUse(), 0);
    });
}

}  // namespace
}  // namespace stratovane
