#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "content/content_support.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "content/wavetable.h"

namespace stratovane {
namespace {

using content_test::ContentFixture;
using content_test::sampleOfBytes;
using content_test::sampleSetOf;
using content_test::takeTraces;
using Kind = ContentKind;

constexpr std::int64_t mebibyte = 1 << 20;

/// Item 0 uses samples 1..16 of 4 MiB each, its ECO version sample 17 alone; item 1 samples 16
/// and 17; item 2 has no such sample.
BankFileSource largeBank() {
    BankFileSource bank{.code = 7};
    std::vector<int> all;
    for (int i = 1; i <= 16; ++i) {
        all.push_back(i);
        bank.samples.push_back(sampleOfBytes(4 * mebibyte));
    }
    bank.samples.push_back(sampleOfBytes(1000));
    bank.items = {{"All", "", sampleSetOf(all), sampleSetOf({17})},
                  {"Two", "", sampleSetOf({16, 17}), {}},
                  {"None", "", sampleSetOf({99}), {}}};
    return bank;
}

struct Residency : testing::Test, ContentFixture {
    std::int64_t memory() const { return library.memoryInUse(); }
};

TEST_F(Residency, LoadsAndFreesSixtyFourMebibytesStepByStep) {
    put("Samples/001 Large.bank", writeBankFile(largeBank()));
    ASSERT_TRUE(open());
    EXPECT_EQ(library.idle(), 0);
    const ItemSlot* slot = library.acquire(Kind::samples, 1, 0, false);
    ASSERT_NE(slot, nullptr);
    takeTraces();

    EXPECT_EQ(library.idle(), 1);  // the bank was asked in this pass
    EXPECT_TRUE(slot->empty());
    const std::int64_t set = 16 * 64;
    EXPECT_EQ(library.idle(), 1);
    EXPECT_EQ(memory(), set);
    ASSERT_NE(slot->get<SampleSet>(), nullptr);
    EXPECT_EQ(slot->get<SampleSet>()->find(0, 1)->sampleData(), nullptr);
    EXPECT_EQ(slot->get<Wavetable>(), nullptr);
    // A step ends with the sample that takes it above 8 MiB: the third.
    for (int loaded = 3; loaded < 16; loaded += 3) {
        EXPECT_EQ(library.idle(), 1);
        EXPECT_EQ(memory(), set + loaded * 4 * mebibyte);
    }
    EXPECT_EQ(library.idle(), 1);
    EXPECT_EQ(memory(), set + 64 * mebibyte);
    EXPECT_EQ(library.idle(), set + 64 * mebibyte);
    EXPECT_EQ(takeTraces(), std::vector<std::string>{"memory = 67109888"});
    EXPECT_EQ(slot->get<SampleSet>()->find(0, 1)->sampleData()->frames(), 2 * mebibyte - 8);
    EXPECT_EQ(library.sampleData(Kind::samples, 1, 1),
              slot->get<SampleSet>()->find(0, 1)->sampleData());
    for (const int number : {-1, 0, 17, 18})
        EXPECT_EQ(library.sampleData(Kind::samples, 1, number), nullptr);

    // A second item shares a sample, which stays when the first goes.
    library.acquire(Kind::samples, 1, 1, false);
    idleUntilDone();
    EXPECT_EQ(memory(), set + 2 * 64 + 64 * mebibyte + 1000);
    library.release(Kind::samples, 1, 0, false);
    const std::vector<std::int32_t> answers = idleUntilDone();
    // Waits; frees the item; then one sample a step; then nothing is left.
    ASSERT_EQ(answers.size(), 1u + 1 + 15 + 1);
    std::int64_t left = set + 2 * 64 + 64 * mebibyte + 1000;
    EXPECT_EQ(answers[0], 1);
    EXPECT_EQ(answers[1], left -= set);
    for (std::size_t i = 2; i < 17; ++i) EXPECT_EQ(answers[i], left -= 4 * mebibyte);
    EXPECT_EQ(answers[17], left);
    EXPECT_TRUE(slot->empty());
    library.release(Kind::samples, 1, 1, false);
    idleUntilDone();
    EXPECT_EQ(memory(), 0);
}

TEST_F(Residency, CountsReferencesOfBothVersions) {
    put("Samples/001 Large.bank", writeBankFile(largeBank()));
    ASSERT_TRUE(open());
    takeTraces();
    const ItemSlot* eco = library.acquire(Kind::samples, 1, 0, true);
    const ItemSlot* two = library.acquire(Kind::samples, 1, 1, true);  // has no ECO version
    EXPECT_EQ(library.acquire(Kind::samples, 1, 1, false), two);
    EXPECT_EQ(library.acquire(Kind::samples, 1, 3, false), nullptr);
    EXPECT_EQ(library.acquire(Kind::patches, 1, 0, false), nullptr);
    EXPECT_EQ(library.acquire(static_cast<Kind>(0), 1, 0, false), nullptr);
    EXPECT_EQ(takeTraces(),
              (std::vector<std::string>{"load 2.1.0e Large: All", "load 2.1.1e Large: Two",
                                        "load 2.1.1 Large: Two"}));
    idleUntilDone();
    EXPECT_EQ(memory(), 64 + 2 * 64 + 4 * mebibyte + 1000);
    library.release(Kind::samples, 1, 1, false);
    idleUntilDone();
    EXPECT_FALSE(two->empty());
    library.release(Kind::samples, 1, 1, true);
    library.release(Kind::samples, 1, 1, true);  // one too many
    idleUntilDone();
    EXPECT_TRUE(two->empty());
    EXPECT_FALSE(eco->empty());
    EXPECT_EQ(memory(), 64 + 1000);
    library.acquire(Kind::samples, 1, 1, false);
    idleUntilDone();
    EXPECT_FALSE(two->empty());
}

TEST_F(Residency, RequestLetsTheOldItemWait) {
    put("Samples/001 Large.bank", writeBankFile(largeBank()));
    ASSERT_TRUE(open());
    WaitingReleases waiting;
    const PackedItem first = PackedItem::of(1, 0, true), second = PackedItem::of(1, 1, false);
    EXPECT_NE(library.request(Kind::samples, first, {}, waiting), nullptr);
    EXPECT_TRUE(waiting.empty());
    EXPECT_NE(library.request(Kind::samples, second, first, waiting, 42), nullptr);
    EXPECT_EQ(library.request(Kind::samples, {}, second, waiting), nullptr);
    ASSERT_EQ(waiting.oldest().id.word, 2u << 24 | 1u << 16 | 1 << 8 | 0);
    EXPECT_EQ(waiting.oldest().stamp, 42u);
    idleUntilDone();
    EXPECT_GT(memory(), 0);
    while (!waiting.empty()) {
        library.release(waiting.oldest().id);
        waiting.removeOldest();
    }
    idleUntilDone();
    EXPECT_EQ(memory(), 0);
}

TEST_F(Residency, FullPreloadKeepsItemsButNotOrphanedSamples) {
    put("Samples/001 Large.bank", writeBankFile(largeBank()));
    ASSERT_TRUE(open());
    const ItemSlot* slot = library.acquire(Kind::samples, 1, 0, true);
    idleUntilDone();
    library.setPreloadMode(ContentLibrary::preloadFull);
    library.release(Kind::samples, 1, 0, true);
    idleUntilDone();
    EXPECT_FALSE(slot->empty());
    EXPECT_EQ(memory(), 64 + 1000);
    EXPECT_FALSE(library.busy());
    library.setPreloadMode(1);
    idleUntilDone();
    EXPECT_TRUE(slot->empty());
    EXPECT_EQ(memory(), 0);
}

TEST_F(Residency, TuningsAndDrawbarsStayAndCountTheirSize) {
    put("Tunings/001 Old/000 Half.tun", "note 69=6950.0\n");
    std::vector<std::int16_t> wheel(8);
    ToneWheelLoops loops;
    loops.fill(wheel);
    const Bytes wheels = writeToneWheels(0, loops), table = writeWavetable({});
    put("Drawbars/000 Organ.bank", writeBankFile({.items = {{"Set", "", wheels, {}}}}));
    put("Wavetables/000 W.bank", writeBankFile({.items = {{"T", "", table, {}}}}));
    ASSERT_TRUE(open());
    const ItemSlot* tuning = library.acquire(Kind::tunings, 1, 0, false);
    const ItemSlot* drawbar = library.acquire(Kind::drawbars, 0, 0, true);
    const ItemSlot* wave = library.acquire(Kind::wavetables, 0, 0, false);
    idleUntilDone();
    EXPECT_EQ(memory(), static_cast<std::int64_t>(tuningItemBytes + wheels.size() + table.size()));
    EXPECT_EQ(tuning->get<TuningTable>()->semitones[69], 0.5f);
    library.release(Kind::tunings, 1, 0, false);
    library.release(Kind::drawbars, 0, 0, true);
    library.release(Kind::wavetables, 0, 0, false);
    idleUntilDone();
    EXPECT_NE(tuning->get<TuningTable>(), nullptr);
    EXPECT_NE(drawbar->get<ToneWheels>(), nullptr);
    EXPECT_EQ(wave->get<Wavetable>(), nullptr);
    EXPECT_EQ(memory(), static_cast<std::int64_t>(tuningItemBytes + wheels.size()));
}

TEST_F(Residency, WhatCannotBeLoadedIsToldOnceAndTriedAgainWhenAskedAgain) {
    BankFileSource bank{.code = 1};
    bank.samples = {Bytes(20, 0xFF), sampleOfBytes(100)};
    bank.items = {{"Open", "", Bytes(64), {}}, {"Set", "", sampleSetOf({1, 2}), {}}};
    const Bytes file = writeBankFile(bank);
    put("Samples/001 S.bank", file);
    ASSERT_TRUE(open());
    takeTraces();
    const std::string path = folder / "Samples/001 S.bank";
    const ItemSlot* broken = library.acquire(Kind::samples, 1, 0, false);
    const ItemSlot* set = library.acquire(Kind::samples, 1, 1, false);
    idleUntilDone();
    EXPECT_TRUE(broken->empty());
    EXPECT_EQ(set->get<SampleSet>()->find(0, 1)->sampleData(), nullptr);
    EXPECT_NE(set->get<SampleSet>()->find(127, 1)->sampleData(), nullptr);
    auto faults = takeTraces();
    std::erase_if(faults, [](const std::string& line) { return !line.starts_with("/"); });
    EXPECT_EQ(faults, (std::vector<std::string>{
                          path + ", item 0, byte 64: the zones do not end inside the item",
                          path + ", sample 1, byte 0: the frames do not follow the header"}));
    EXPECT_EQ(memory(), 2 * 64 + 100);
    library.release(Kind::samples, 1, 1, false);
    idleUntilDone();
    EXPECT_EQ(memory(), 0);
    // The file was repaired meanwhile.
    bank.samples[0] = sampleOfBytes(20);
    put("Samples/001 S.bank", writeBankFile(bank));
    library.acquire(Kind::samples, 1, 1, false);
    idleUntilDone();
    EXPECT_NE(set->get<SampleSet>()->find(0, 1)->sampleData(), nullptr);
}

TEST_F(Residency, LoopStartsStandWhereARunFromTheStartIs) {
    std::vector<Zone> zones{content_test::zoneUpTo(60, 1), content_test::zoneUpTo(127, 1)};
    zones[0].frames = 700, zones[0].loopFrames = 300;
    zones[1].loopFrames = 5;
    const std::vector<float> wave = content_test::randomWave(2000, 23);
    BankFileSource bank{.code = 1};
    bank.samples = {writeSampleData({.values = wave, .channels = 2}, SampleFormat::delta)};
    bank.items = {{"A", "", writeSampleSet(zones), {}}, {"B", "", writeSampleSet(zones), {}}};
    put("Samples/001 S.bank", writeBankFile(bank));
    ASSERT_TRUE(open());
    for (const int item : {0, 1}) {  // the second finds the sample resident
        const ItemSlot* slot = library.acquire(Kind::samples, 1, item, false);
        idleUntilDone();
        for (const Zone& zone : slot->get<SampleSet>()->zones) {
            const SampleData& data = *zone.sampleData();
            const std::int32_t frame = zone.playedFrames(data) - zone.playedLoop(data);
            EXPECT_EQ(frame, zone.key < Zone::last ? 400 : 995);
            for (int channel = 0; channel < 2; ++channel) {
                EXPECT_EQ(zone.loopStart[static_cast<std::size_t>(channel)].value,
                          data.stateAt(frame, channel).value);
                EXPECT_NE(zone.loopStart[static_cast<std::size_t>(channel)].value, 0);
            }
        }
    }
}

TEST_F(Residency, DisposesOnTheSixthAndTwelfthIdleStep) {
    struct Thing {
        ~Thing() { ++gone; }
        int& gone;
    };
    int gone = 0;
    bool renders = false;
    put("Samples/001 S.bank", writeBankFile({}));
    ASSERT_TRUE(open());
    library.setRenderPassed([&](std::uint32_t stamp) { return stamp == 0 || !renders; });
    for (int i = 0; i < 2; ++i) library.disposeLater(std::unique_ptr<Thing>(new Thing{gone}));
    takeTraces();
    for (int step = 1; step <= 14; ++step) {
        library.idle();
        EXPECT_EQ(gone, step < 6 ? 0 : step < 12 ? 1 : 2) << step;
    }
    EXPECT_EQ(takeTraces(), (std::vector<std::string>{"memory/fx dispose", "memory/fx dispose"}));
    // A render that goes on keeps what it may see.
    renders = true;
    library.disposeLater(std::unique_ptr<Thing>(new Thing{gone}), 3);
    for (int step = 0; step < 20; ++step) library.idle();
    EXPECT_EQ(gone, 2);
    renders = false;
    library.idle();
    EXPECT_EQ(gone, 3);
    library.disposeLater(std::unique_ptr<Thing>(new Thing{gone}));
    library.close();
    EXPECT_EQ(gone, 4);
}

// The audio thread follows slots while the UI thread loads; it sees nothing half made.
TEST_F(Residency, ReadersSeeWholeItems) {
    BankFileSource bank{.code = 1};
    const std::vector<float> wave(4000, 0.5f);
    for (int i = 0; i < 8; ++i)
        bank.samples.push_back(writeSampleData({.values = wave}, SampleFormat::delta));
    Zone zone = content_test::zoneUpTo(127, 1);
    zone.loopFrames = 100;
    for (int i = 0; i < 8; ++i) {
        zone.sampleNumber = i + 1;
        bank.items.push_back({"I", "", writeSampleSet({&zone, 1}), {}});
    }
    put("Samples/001 S.bank", writeBankFile(bank));
    ASSERT_TRUE(open());
    std::vector<const ItemSlot*> slots;
    for (int i = 0; i < 8; ++i) slots.push_back(library.acquire(Kind::samples, 1, i, false));
    std::atomic<bool> wrong{false};
    std::thread reader{[&] {
        for (std::set<const ItemSlot*> seen; seen.size() < slots.size();)
            for (const ItemSlot* slot : slots) {
                const auto* set = slot->get<SampleSet>();
                const Zone* found = set != nullptr ? set->find(60, 100) : nullptr;
                const SampleData* data = found != nullptr ? found->sampleData() : nullptr;
                if (data == nullptr) continue;
                wrong = wrong || data->frames() != 4000 || found->loopStart[0].value != 0.5f;
                seen.insert(slot);
            }
    }};
    idleUntilDone();
    reader.join();
    EXPECT_FALSE(wrong);
}

}  // namespace
}  // namespace stratovane
