// Whole setups saved, restored, refused and damaged.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "engine/transport.h"
#include "patch/scene_table.h"
#include "persistence/chunk_layout.h"
#include "persistence/global_block.h"
#include "persistence/setup_rig.h"

namespace stratovane {
namespace {

constexpr std::size_t elementBytes = recordLayout::elementBytes;
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

struct Dice {
    std::mt19937 generator;
    float value() { return std::uniform_real_distribution<float>{0.0f, 1.0f}(generator); }
    int below(int count) { return static_cast<int>(generator() % static_cast<unsigned>(count)); }
};

void shufflePart(SetupRig& rig, int part, Dice& dice) {
    auto instance = rig.engine.makeInstance(part);
    Patch& patch = instance->patch();
    patch.setText(0, "Part " + std::to_string(dice.below(1000)));
    patch.setElementCount(dice.below(4));
    for (int i = 0; i < globalParameters; ++i) patch.recall(0, i, 0.99f * dice.value());
    patch.recall(0, global::type, 0.34f);
    patch.recall(0, global::eco, rig.settings.memoryUse);
    for (int number = 1; number <= elementTotal; ++number) {
        if (number > patch.elementCount() && number < firstSendSlot) continue;
        patch.setText(number, "Element " + std::to_string(dice.below(1000)));
        for (int i = 0; i < elementParameters; ++i) patch.recall(number, i, dice.value());
        if (number >= firstSendSlot) patch.recall(number, elementIndex::type, 0.0f);
    }
    patch.scenes().put(dice.below(3), std::make_shared<const Scene>(Scene{.name = "Scene"}));
    // As in any patch that was ever played, the slots stand where the knobs do.
    for (const int knob : global::knobs) patch.recall(0, knob, patch.get(0, knob));
    rig.engine.adopt(part, std::move(instance));
    rig.part(part).location = dice.below(1 << 15);
}

/// Settings that no new rig has.
void mark(SetupRig& rig) {
    rig.access.setProgramName("Marked");
    rig.settings.velocitySensitivity = 0.9f;
    rig.settings.touchSensitivity = 0.4f;
    rig.settings.memoryUse = 1.0f;
    rig.settings.lift = 0.8f;
    rig.multi.tune.semitones = 3;
    rig.multi.tune.fraction = -0.25f;
    rig.multi.generalMidi = true;
    for (auto& entry : rig.multi.combis.entries) entry = 0x7810;
    rig.multi.combis.current = 5;
    rig.settings.combiPreload = 2;
    rig.settings.combiNextController = 7;
    rig.settings.combiPreviousController = 8;
    rig.parameters.set(0, 0.75f);
    for (const int part : {1, 3, 15}) rig.parameters.set(part * partRows + strip::link, 1.0f);
}

TEST(BankChunk, BringsEverythingBack) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        Dice dice{std::mt19937{seed}};
        SetupRig rig, other;
        mark(rig);
        for (int number = firstSendSlot; number <= elementTotal; ++number) {
            rig.engine.master().setText(number, "Master " + std::to_string(dice.below(1000)));
            for (int i = 0; i < elementParameters; ++i)
                rig.engine.master().recall(number, i, i == elementIndex::type ? 0 : dice.value());
        }
        for (int part = 0; part < parts; ++part) {
            if (dice.below(4) == 0)
                rig.patches.clear(rig.engine, part);
            else
                shufflePart(rig, part, dice);
        }
        Bytes bank = rig.bank();
        if (seed % 2 == 0) other.put(3, "Former", 0.9f);
        ASSERT_TRUE(other.read(bank));
        // Which combi was the last a song does not bring back.
        poke(bank, peek(bank, bankLayout::globalOffset) + globalLayout::currentCombi, ~0u);
        EXPECT_EQ(other.bank(), bank) << seed;
        for (int part = 0; part < parts; ++part) {
            EXPECT_EQ(other.part(part).location, rig.part(part).location);
            EXPECT_EQ(other.word(part), static_cast<std::uint32_t>(rig.part(part).location.get()));
        }
        // What follows from the values has followed.
        EXPECT_EQ(other.shared.tuningSemitones, 2.75f);
        EXPECT_EQ(other.shared.liftCompensation, Lift{}.set(0.8f, other.shared.sampleRate));
        MidiCurve velocity, touch;
        makeVelocityCurve(0.9f, velocity);
        makeTouchCurve(0.4f, touch);
        for (std::size_t i = 0; i < velocity.size(); ++i) {
            ASSERT_EQ(other.settings.velocityCurve[i].get(), velocity[i].get());
            ASSERT_EQ(other.settings.touchCurve[i].get(), touch[i].get());
        }
        for (int index = masterFirst; index < hostParameters; ++index) {
            const HostAddress a = decodeHostIndex(index);
            ASSERT_EQ(other.parameters.get(index),
                      rig.engine.master().get(firstSendSlot + a.slot, hostRow(a).target));
        }
        EXPECT_TRUE(other.multi.dirty);
    }
}

TEST(BankChunk, EverythingLiesInItsPlace) {
    SetupRig rig;
    rig.patches.clear(rig.engine, 0);
    const Bytes empty = rig.bank();
    EXPECT_EQ(empty.size(), 88u + 4 * 1056 + 620);
    EXPECT_EQ(peek(empty, 16), 0u);

    rig.put(2, "Third", 0.25f);
    rig.part(2).location = 0x0507;
    rig.multi.combis.entries[1] = 0x7801;
    rig.multi.combis.current = 1;
    rig.parameters.set(0, 0.25f);
    rig.parameters.set(2 * partRows, 1.0f);
    rig.settings.combiPreviousController = 90;
    const Bytes bank = rig.bank();
    const ByteView view{bank};
    const std::uint32_t header[] = {0x52527651, 200050508, 0, 0x142, 0, 0, 88, 0};
    for (std::size_t i = 0; i < std::size(header); ++i) EXPECT_EQ(peek(bank, 4 * i), header[i]);
    EXPECT_EQ(peek(bank, 88 + 12), 0x150u);
    EXPECT_EQ(peek(bank, 88 + 16), 0x0507u);
    const std::size_t master = peek(bank, 80), globals = peek(bank, 84);
    EXPECT_EQ(globals, master + 4224);
    EXPECT_EQ(bank.size(), globals + 620);
    const struct {
        std::size_t at;
        std::uint32_t word;
    } words[] = {{0, 608},  {4, 0x3E800000},   {8, 0x00010000}, {64, 0x3F000000}, {68, 0},
                 {80, 0},   {84, 0xFFFFFFFF},  {88, 0x7801},    {596, 1},         {600, 0},
                 {604, 90}, {608, 0xFFFFFFFF}, {612, 0},        {616, 0}};
    for (const auto& word : words) EXPECT_EQ(peek(bank, globals + word.at), word.word) << word.at;
    EXPECT_EQ(view.from(globals + 24).terminatedText(), "Stratovane 2");
    EXPECT_EQ(rig.engine.patch(2).idWord(), 0x0507u);
}

TEST(BankChunk, OldGlobalBlocksEndWhereTheySay) {
    SetupRig source;
    mark(source);
    const Bytes whole = source.bank();
    const std::size_t globals = peek(whole, bankLayout::globalOffset);
    const struct {
        std::uint32_t size;
        std::size_t texts;  // of the song that are read
    } blocks[] = {{0, 0},   {3, 0},   {4, 1},   {20, 2},  {51, 2},   {52, 3},  {63, 3},
                  {64, 4},  {79, 4},  {80, 5},  {95, 5},  {96, 6},   {592, 7}, {599, 7},
                  {600, 8}, {603, 8}, {604, 9}, {607, 9}, {608, 10}, {~0u, 10}};
    for (const auto& block : blocks) {
        Bytes bank = whole;
        poke(bank, globals, block.size);
        // As in an old bank, the data may end with the block.
        if (block.size % 8 != 0) bank.resize(globals + 4 + std::min(block.size, 608u));
        SetupRig rig;
        auto expected = rig.song();
        std::copy_n(source.song().begin(), block.texts, expected.begin());
        rig.multi.combis.lastController = 9;
        for (const int part : {0, 15}) rig.parameters.set(part * partRows + strip::lock, 1.0f);
        ASSERT_TRUE(rig.read(bank));
        EXPECT_EQ(rig.song(), expected) << block.size;
        EXPECT_EQ(rig.multi.combis.lastController, block.size > 600 ? 63 : 9);
        for (const int part : {0, 15})
            EXPECT_EQ(rig.parameters.get(part * partRows + strip::lock), 0.0f);
    }
}

TEST(BankChunk, KeepsAChainThatIsThere) {
    SetupRig source, rig;
    mark(source);
    rig.multi.combis.entries[5] = 0x7F01;
    rig.multi.combis.current = 6;
    rig.settings.combiNextController = 33;
    auto expected = rig.song();  // whose first five texts come from the bank
    std::copy_n(source.song().begin(), 5, expected.begin());
    ASSERT_TRUE(rig.read(source.bank()));
    EXPECT_EQ(rig.song(), expected);
    EXPECT_EQ(rig.multi.combis.current, 6);
}

TEST(BankChunk, LimitsWhatItReads) {
    SetupRig source, rig;
    Bytes bank = source.bank();
    const std::size_t g = peek(bank, bankLayout::globalOffset);
    const auto put = [&bank](std::size_t at, auto... values) {
        ((poke(bank, at, values), at += sizeof values), ...);
    };
    put(g + 4, nan);
    std::fill_n(bank.begin() + static_cast<std::ptrdiff_t>(g + 24), 32, 'x');  // without an end
    put(g + 56, 7.0f, -1.0f, nan, -99, std::numeric_limits<float>::infinity(), 2.0f, -5);
    put(g + 84, 5, 32767, 32768, -2);  // only the second is a combi
    put(g + 600, 77, 200, -9);
    const std::size_t effect = peek(bank, bankLayout::masterOffset) + 2 * elementBytes + 32;
    put(effect + 4 * elementIndex::type, 0.5f);
    put(effect + 4 * elementIndex::level, nan, 3.0f);
    auto expected = rig.song();
    for (const auto& [text, limited] : {std::pair{0, "0 "},
                                        {3, "1 0 0 "},
                                        {4, "-24 0 1 0 "},
                                        {5, "-1 32767 -1 -1 "},
                                        {7, "2 "},
                                        {8, "127 "}})
        expected[static_cast<std::size_t>(text)] = limited;
    expected[2] = std::string(31, 'x');
    ASSERT_TRUE(rig.read(bank));
    EXPECT_EQ(rig.song(), expected);
    EXPECT_EQ(rig.engine.master().get(67, elementIndex::type), 0.0f);  // a slot holds an effect
    EXPECT_EQ(rig.parameters.get(masterFirst + 2 * 24 + 18), 0.0f);
    EXPECT_EQ(rig.parameters.get(masterFirst + 2 * 24 + 19), 1.0f);
}

TEST(BankChunk, RefusesWhatItCannotRead) {
    User user;
    SetupRig source, rig;
    const Bytes bank = source.bank();
    const Bytes preset = source.writer.preset(source.engine, 0);
    const auto with = [](Bytes bytes, std::size_t at, std::uint32_t word) {
        poke(bytes, at, word);
        return bytes;
    };
    const auto cutTo = [](Bytes bytes, std::size_t size) {
        bytes.resize(size);
        return bytes;
    };
    const std::string later = "Sorry, this bank requires a later version of Stratovane";
    constexpr auto asBank = ChunkReader::Wanted::bank, asPreset = ChunkReader::Wanted::preset;
    const struct {
        Bytes chunk;
        ChunkReader::Wanted wanted;
        std::string message;
    } cases[] = {
        {{}, asBank, "Error loading chunk (, 0 bytes)"},
        {cutTo(bank, 3), asBank, "Error loading chunk (QvR, 3 bytes)"},
        {cutTo(bank, 999), asBank, "Error loading chunk (QvRR, 999 bytes)"},
        {cutTo(bank, 2000001), asBank, "Error loading chunk (QvRR, 2000001 bytes)"},
        {with(bank, 0, 0x64636261), asBank, "Error loading chunk (abcd, %d bytes)"},
        {with(bank, 12, 0x143), asBank, "Error loading bank (QvRR, version 2.0.508)"},
        {with(bank, 12, 0x242), asBank, "Error loading bank (QvRR, version 2.0.508)"},
        {with(bank, 4, 10030814), asBank, "Error loading bank (QvRR, version 0.0.814)"},
        {with(with(bank, 4, 123456789), 12, 0x99), asBank,
         "Error loading bank (QvRR, version 1.3.6789)"},
        {with(bank, 4, 220000000), asBank, later},
        {with(bank, 4, 220000001), asBank, later},
        {with(bank, 4, 0xF0000000), asBank, later},
        {with(with(bank, 4, 220000001), 12, 0x99), asBank, later},
        {bank, asPreset, "Error loading chunk (QvRR, %d bytes)"},
        {cutTo(preset, 1500), asPreset, "Error loading chunk (QvRR, 1500 bytes)"},
        {with(preset, 20, 65), asBank, "Error loading chunk (QvRR, %d bytes)"},
        {with(preset, 4, 220000000), asPreset, later},
    };
    rig.put(4, "Stays", 0.4f);
    rig.engine.patch(4).store(0, global::latch, 1.0f);
    const Bytes before = rig.bank();
    for (const auto& c : cases) {
        std::string expected = c.message;
        if (const auto at = expected.find("%d"); at != expected.npos)
            expected.replace(at, 2, std::to_string(c.chunk.size()));
        rig.multi.defaultPatchWanted = true;
        EXPECT_FALSE(rig.read(c.chunk, {.wanted = c.wanted, .part = 4})) << expected;
        EXPECT_EQ(user.takeSaid(), std::vector{expected});
        EXPECT_FALSE(rig.multi.defaultPatchWanted);
        EXPECT_EQ(rig.bank(), before) << expected;
    }
    EXPECT_TRUE(rig.read(cutTo(bank, 2000000)));
    Bytes oldest = bank;
    poke(oldest, 4, std::uint32_t{10030815});
    EXPECT_TRUE(rig.read(oldest));
    EXPECT_TRUE(user.takeSaid().empty());
}

TEST(BankChunk, RecordsOfOldBanksHaveNoHeaders) {
    SetupRig source, rig;
    source.put(1, "Second", 0.25f);
    source.engine.patch(1).store(1, 125, 0.5f);  // "Note-on Click", which meant something else once
    Bytes bank = source.bank();
    constexpr std::size_t offset = bankLayout::partOffsets + 4;
    const std::size_t record = peek(bank, offset);
    std::fill_n(bank.begin() + static_cast<std::ptrdiff_t>(record), 16, std::uint8_t{0xEE});
    poke(bank, offset, static_cast<std::uint32_t>(record + 16));
    poke(bank, 4, std::uint32_t{11000000});
    const Bytes given = bank;
    ASSERT_TRUE(rig.read(bank));
    EXPECT_EQ(bank, given);
    EXPECT_EQ(rig.engine.patch(1).name(), "Second");
    EXPECT_FLOAT_EQ(rig.engine.patch(1).get(1, 125), 0.15f);
    EXPECT_EQ(rig.engine.patch(0).name(), "Sawtooth");  // which has a header, of its own version
}

TEST(BankChunk, DamagedOffsetsCostOnlyWhatTheyPointAt) {
    SetupRig source;
    for (int part = 0; part < parts; ++part) source.put(part, "Here", 0.25f);
    source.parameters.set(0, 0.875f);
    const Bytes whole = source.bank();
    const auto size = static_cast<std::uint32_t>(whole.size());
    for (const std::uint32_t lie : {1u, 15u, 87u, size - 3, size, size + 1, 0x7FFFFFFFu, ~0u}) {
        SCOPED_TRACE(lie);
        Bytes bank = whole;
        for (const std::size_t at : {std::size_t{16 + 4 * 7}, std::size_t{80}, std::size_t{84}})
            poke(bank, at, lie);
        SetupRig rig;
        rig.put(7, "Former", 0.9f);
        const float volume = rig.parameters.get(0);
        ASSERT_TRUE(rig.read(bank));
        EXPECT_EQ(rig.engine.patch(6).name(), "Here");
        EXPECT_EQ(rig.engine.patch(7).name(), "");
        EXPECT_EQ(rig.engine.patch(7).elementCount(), 0);
        EXPECT_EQ(rig.engine.patch(15).name(), "Here");
        EXPECT_EQ(rig.parameters.get(0), volume);
    }
}

TEST(BankChunk, SurvivesDamageOfEveryKind) {
    User user;
    SetupRig source, rig;
    // Other damage in every run of --gtest_repeat with --gtest_shuffle.
    Dice dice{std::mt19937{static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())}};
    source.put(1, "Second", 0.25f);
    const Bytes whole = source.bank();
    const auto size = static_cast<int>(whole.size());
    const auto any = [&dice](int from, int below) {
        return static_cast<std::size_t>(from + dice.below(below - from));
    };
    Transport transport;
    transport.setSampleRate(44100);
    const PartEventLists none;
    int accepted = 0;
    constexpr int rounds = 150;
    for (int round = 0; round < rounds; ++round) {
        Bytes bank = whole;
        if (round % 3 == 0) bank.resize(any(0, size));
        if (round % 3 == 1)  // most of it where the structure is
            for (int flips = 1 + dice.below(5); flips > 0; --flips)
                bank[any(4, dice.below(3) == 0 ? size : 128)] =
                    static_cast<std::uint8_t>(dice.generator());
        if (round % 3 == 2)
            poke(bank, 4 * any(4, 22), static_cast<std::uint32_t>(any(0, size + 40)));
        if (rig.read(bank)) {
            ++accepted;
            ASSERT_FALSE(rig.bank().empty());  // what was accepted can be saved again
        } else {
            EXPECT_EQ(user.takeSaid().size(), 1u);
        }
        // It plays, and what has been replaced retires and is deleted as ever.
        for (int block = 0; block < 5; ++block)
            rig.engine.render({&none, nullptr, 32, true}, transport);
        for (int part = 0; part < 2 * parts; ++part) rig.engine.idle();
    }
    EXPECT_GT(accepted, rounds / 3);
    EXPECT_LT(accepted, rounds);
}

TEST(GlobalBlock, IsReadWithinItsBytes) {
    SetupRig source;
    mark(source);
    const Bytes bank = source.bank();
    const Bytes whole(bank.end() - globalLayout::bytes, bank.end());
    Dice dice{std::mt19937{7}};
    for (int round = 0; round < 20000; ++round) {
        Bytes block = whole;
        for (int flips = dice.below(20); flips > 0; --flips)
            block[static_cast<std::size_t>(dice.below(globalLayout::bytes))] =
                static_cast<std::uint8_t>(dice.generator());
        if (dice.below(2) == 0) poke(block, 0, static_cast<std::uint32_t>(dice.below(700)));
        // Of exactly its size, so that a byte beyond it is found out.
        const GlobalBlock read = readGlobalBlock(
            Bytes(block.begin(), block.begin() + dice.below(globalLayout::bytes + 1)));
        if (read.tuning) {
            ASSERT_LE(std::abs(read.tuning->semitones), 24);
            ASSERT_LE(std::fabs(read.tuning->fraction), 24.0f);
        }
        if (read.combis) {
            ASSERT_EQ(read.combis->preload, std::clamp(read.combis->preload, 0, 2));
        }
    }
}

TEST(BankChunk, IsRefusedOnceWhenItGrowsTooLarge) {
    User user;
    SetupRig rig;
    Scene scene{.name = "Long"};
    scene.phrase.lengthBeats = 16;
    for (int i = 0; i < 2000; ++i) scene.phrase.events.push_back({0.005 * i, 0.1, 0x90, 60, 100});
    const auto longScene = std::make_shared<const Scene>(scene);
    rig.put(0, "Long", 0.5f);
    for (int slot = 0; slot < 2; ++slot) rig.engine.patch(0).scenes().put(slot, longScene);
    const Bytes fits = rig.writer.preset(rig.engine, 0);
    EXPECT_GT(fits.size(), 97000u);
    EXPECT_TRUE(user.takeSaid().empty());
    rig.engine.patch(0).scenes().put(2, longScene);
    EXPECT_TRUE(rig.writer.preset(rig.engine, 0).empty());
    EXPECT_TRUE(rig.writer.preset(rig.engine, 0).empty());
    EXPECT_EQ(user.takeSaid().size(), 1u);
    EXPECT_FALSE(rig.bank().empty());  // there it fits
    for (int slot = 3; slot < 44; ++slot) rig.engine.patch(0).scenes().put(slot, longScene);
    EXPECT_TRUE(rig.bank().empty());
    EXPECT_EQ(user.takeSaid().size(), 1u);
}

TEST(PresetChunk, GoesIntoTheSelectedPart) {
    SetupRig source, rig;
    source.put(3, "Lead", 0.25f);
    source.part(3).location = 0x0303;
    const Bytes preset = source.writer.preset(source.engine, 3);
    EXPECT_EQ(peek(preset, 16), 0x0303u);
    rig.part(5).location = 0x0101;
    rig.part(5).pendingProgram.store(programWaits | 0x0202);
    rig.parameters.set(5 * partRows + strip::output, 0.08f);
    const auto refreshes = rig.multi.refresh.get();
    // The letter in the header decides, whatever was asked for.
    for (const auto wanted : {ChunkReader::Wanted::preset, ChunkReader::Wanted::bank})
        EXPECT_TRUE(rig.read(preset, {.wanted = wanted, .part = 5}));
    EXPECT_EQ(rig.engine.patch(5).name(), "Lead");
    EXPECT_EQ(rig.host(5, strip::level), 0.25f);
    EXPECT_EQ(rig.host(5, strip::output), 0.08f);  // the part's own
    EXPECT_EQ(rig.part(5).location, 0);
    EXPECT_EQ(rig.word(5), 0u);
    EXPECT_EQ(rig.displayUpdates, 2);
    EXPECT_EQ(rig.multi.refresh.get(), refreshes + 2);
    rig.patches.clear(rig.engine, 5);
    EXPECT_TRUE(rig.writer.preset(rig.engine, 5).empty());
}

}  // namespace
}  // namespace stratovane
