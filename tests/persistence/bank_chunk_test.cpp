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

void shuffle(SetupRig& rig, Dice& dice) {
    rig.settings.memoryUse = 0.5f * static_cast<float>(dice.below(3));
    rig.settings.velocitySensitivity = dice.value();
    rig.settings.touchSensitivity = dice.value();
    rig.settings.lift = dice.value();
    rig.settings.combiPreload = dice.below(3);
    rig.settings.combiNextController = dice.below(129) - 1;
    rig.settings.combiPreviousController = dice.below(129) - 1;
    rig.multi.tune.semitones = dice.below(49) - 24;
    rig.multi.tune.fraction = dice.value() - 0.5f;
    rig.multi.generalMidi = dice.below(2) == 1;
    for (auto& entry : rig.multi.combis.entries)
        entry = dice.below(2) == 0 ? -1 : firstCombi + dice.below(1024);
    rig.access.setProgramName("Song " + std::to_string(dice.below(1000)));
    rig.parameters.set(0, dice.value());
    for (int part = 1; part < parts; ++part)
        rig.parameters.set(part * partRows + strip::link, static_cast<float>(dice.below(2)));
    for (int number = firstSendSlot; number <= elementTotal; ++number) {
        rig.engine.master().setText(number, "Master " + std::to_string(dice.below(1000)));
        for (int i = 0; i < elementParameters; ++i)
            rig.engine.master().recall(number, i, dice.value());
        rig.engine.master().recall(number, elementIndex::type, 0.0f);
    }
    for (int part = 0; part < parts; ++part) {
        if (dice.below(4) == 0)
            rig.patches.clear(rig.engine, part);
        else
            shufflePart(rig, part, dice);
    }
}

TEST(BankChunk, BringsEverythingBack) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        Dice dice{std::mt19937{seed}};
        SetupRig rig, other;
        shuffle(rig, dice);
        rig.multi.combis.current = 5;  // which a song does not bring back
        Bytes bank = rig.bank();
        if (seed % 2 == 0) other.put(3, "Former", 0.9f);
        ASSERT_TRUE(other.read(bank));
        poke(bank, peek(bank, bankLayout::globalOffset) + globalLayout::currentCombi, ~0u);
        const Bytes again = other.bank();
        ASSERT_EQ(again.size(), bank.size());
        const auto differs = std::mismatch(again.begin(), again.end(), bank.begin());
        EXPECT_EQ(differs.first - again.begin(), static_cast<std::ptrdiff_t>(bank.size()))
            << "first byte that differs, seed " << seed;

        for (int part = 0; part < parts; ++part) {
            EXPECT_EQ(other.part(part).location, rig.part(part).location);
            EXPECT_EQ(other.word(part), static_cast<std::uint32_t>(rig.part(part).location.get()));
        }
        // What follows from the values has followed.
        EXPECT_EQ(other.shared.tuningSemitones,
                  static_cast<float>(rig.multi.tune.semitones) + rig.multi.tune.fraction.get());
        EXPECT_EQ(other.shared.liftCompensation,
                  Lift{}.set(rig.settings.lift, other.shared.sampleRate));
        MidiCurve curve;
        makeVelocityCurve(rig.settings.velocitySensitivity, curve);
        for (std::size_t i = 0; i < curve.size(); ++i)
            ASSERT_EQ(other.settings.velocityCurve[i].get(), curve[i].get());
        for (int index = masterFirst; index < hostParameters; ++index) {
            const HostAddress a = decodeHostIndex(index);
            ASSERT_EQ(other.parameters.get(index),
                      rig.engine.master().get(firstSendSlot + a.slot, hostRow(a).target));
        }
        EXPECT_EQ(other.multi.combis.current, CombiTable::none);
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
    EXPECT_EQ(view.part(0, 4).text(), "QvRR");
    const std::uint32_t header[] = {200050508, 0, 0x142, 0, 0, 88, 0};
    for (std::size_t i = 0; i < std::size(header); ++i) EXPECT_EQ(peek(bank, 4 + 4 * i), header[i]);
    EXPECT_EQ(view.from(88).part(12, 1).text(), "P");
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

/// Settings that no restored bank of another rig has by chance.
void mark(SetupRig& rig) {
    rig.access.setProgramName("Marked");
    rig.settings.velocitySensitivity = 0.9f;
    rig.settings.lift = 0.8f;
    rig.multi.tune.semitones = 3;
    rig.multi.generalMidi = true;
    for (auto& entry : rig.multi.combis.entries) entry = 0x7810;
    rig.settings.combiPreload = 2;
    rig.settings.combiNextController = 7;
    rig.settings.combiPreviousController = 8;
    rig.parameters.set(0, 0.75f);
    rig.parameters.set(partRows, 1.0f);
}

TEST(BankChunk, OldGlobalBlocksEndWhereTheySay) {
    SetupRig source;
    mark(source);
    const Bytes whole = source.bank();
    const std::size_t globals = peek(whole, bankLayout::globalOffset);
    for (const std::uint32_t size : {3u, 4u, 20u, 51u, 52u, 63u, 64u, 79u, 80u, 95u, 96u, 592u,
                                     600u, 604u, 608u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(size);
        Bytes bank = whole;
        poke(bank, globals, size);
        // As in an old bank, the data may end with the block.
        if (size % 8 != 0) bank.resize(globals + 4 + std::min(size, 608u));
        SetupRig rig;
        rig.multi.combis.lastController = 9;
        rig.parameters.set(strip::lock, 1.0f);
        rig.parameters.set(15 * partRows + strip::lock, 1.0f);
        ASSERT_TRUE(rig.read(bank));
        EXPECT_EQ(rig.parameters.get(0), size >= 4 ? 0.75f : 0.5f);
        EXPECT_EQ(rig.part(0).linked, size >= 20);
        EXPECT_STREQ(rig.programName.data(), size >= 52 ? "Marked" : "Stratovane 2");
        EXPECT_EQ(rig.settings.velocitySensitivity, size >= 64 ? 0.9f : 0.5f);
        EXPECT_EQ(rig.multi.tune.semitones, size >= 80 ? 3 : 0);
        EXPECT_EQ(rig.settings.lift, size >= 80 ? 0.8f : 0.33f);
        EXPECT_EQ(rig.multi.generalMidi, size >= 80);
        const int slots = size >= 592 ? 128 : size >= 96 ? 4 : 0;
        for (int slot = 0; slot < 128; ++slot)
            ASSERT_EQ(rig.multi.combis.at(slot), slot < slots ? 0x7810 : -1) << slot;
        EXPECT_EQ(rig.settings.combiPreload, size >= 600 ? 2 : 0);
        EXPECT_EQ(rig.settings.combiPreviousController, size >= 604 ? 8 : -1);
        EXPECT_EQ(rig.settings.combiNextController, size >= 608 ? 7 : -1);
        EXPECT_EQ(rig.multi.combis.lastController, size > 600 ? 63 : 9);
        for (const int part : {0, 15})
            EXPECT_EQ(rig.parameters.get(part * partRows + strip::lock), 0.0f);
    }
}

TEST(BankChunk, KeepsAChainThatIsThere) {
    SetupRig source, rig;
    mark(source);
    rig.multi.combis.entries[5] = 0x7F01;
    rig.multi.combis.current = 5;
    rig.settings.combiNextController = 33;
    ASSERT_TRUE(rig.read(source.bank()));
    EXPECT_EQ(rig.multi.combis.at(5), 0x7F01);
    EXPECT_EQ(rig.multi.combis.at(6), -1);
    EXPECT_EQ(rig.multi.combis.current, 5);
    EXPECT_EQ(rig.settings.combiNextController, 33);
    EXPECT_EQ(rig.settings.combiPreload, 0);
    EXPECT_STREQ(rig.programName.data(), "Marked");  // the rest came
}

TEST(BankChunk, LimitsWhatItReads) {
    SetupRig source, rig;
    Bytes bank = source.bank();
    const std::size_t g = peek(bank, bankLayout::globalOffset);
    poke(bank, g + 4, nan);
    poke(bank, g + 56, 7.0f);
    poke(bank, g + 60, -1.0f);
    poke(bank, g + 64, nan);
    poke(bank, g + 68, std::int32_t{-99});
    poke(bank, g + 72, std::numeric_limits<float>::infinity());
    poke(bank, g + 76, 2.0f);
    poke(bank, g + 80, std::int32_t{-5});
    poke(bank, g + 84, std::int32_t{5});  // no combi
    poke(bank, g + 88, std::int32_t{32767});
    poke(bank, g + 600, std::int32_t{77});
    poke(bank, g + 604, std::int32_t{200});
    poke(bank, g + 608, std::int32_t{-9});
    std::fill_n(bank.begin() + static_cast<std::ptrdiff_t>(g + 24), 32, 'x');  // without an end
    const std::size_t effect = peek(bank, bankLayout::masterOffset) + 2 * elementBytes;
    poke(bank, effect + 32 + 4 * elementIndex::type, 0.5f);
    poke(bank, effect + 32 + 4 * elementIndex::level, nan);
    poke(bank, effect + 32 + 4 * elementIndex::pan, 3.0f);
    ASSERT_TRUE(rig.read(bank));
    EXPECT_EQ(rig.parameters.get(0), 0.0f);
    EXPECT_EQ(rig.settings.velocitySensitivity, 1.0f);
    EXPECT_EQ(rig.settings.touchSensitivity, 0.0f);
    EXPECT_EQ(rig.settings.memoryUse, 0.0f);
    EXPECT_EQ(rig.multi.tune.semitones, -24);
    EXPECT_EQ(rig.multi.tune.fraction, 0.0f);
    EXPECT_EQ(rig.settings.lift, 1.0f);
    EXPECT_FALSE(rig.multi.generalMidi);
    EXPECT_EQ(rig.multi.combis.at(0), -1);
    EXPECT_EQ(rig.multi.combis.at(1), 32767);
    EXPECT_EQ(rig.settings.combiPreload, 2);
    EXPECT_EQ(rig.settings.combiPreviousController, 127);
    EXPECT_EQ(rig.settings.combiNextController, -1);
    EXPECT_EQ(rig.engine.master().get(67, elementIndex::type), 0.0f);  // a slot holds an effect
    EXPECT_EQ(rig.parameters.get(masterFirst + 2 * 24 + 18), 0.0f);
    EXPECT_EQ(rig.parameters.get(masterFirst + 2 * 24 + 19), 1.0f);
    EXPECT_EQ(std::string_view{rig.programName.data()}, std::string(31, 'x'));
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
    using Wanted = ChunkReader::Wanted;
    const struct {
        Bytes chunk;
        Wanted wanted;
        std::string message;
    } cases[] = {
        {{}, Wanted::bank, "Error loading chunk (, 0 bytes)"},
        {cutTo(bank, 3), Wanted::bank, "Error loading chunk (QvR, 3 bytes)"},
        {cutTo(bank, 999), Wanted::bank, "Error loading chunk (QvRR, 999 bytes)"},
        {cutTo(bank, 2000001), Wanted::bank, "Error loading chunk (QvRR, 2000001 bytes)"},
        {with(bank, 0, 0x64636261), Wanted::bank, "Error loading chunk (abcd, %d bytes)"},
        {with(bank, 12, 0x143), Wanted::bank, "Error loading bank (QvRR, version 2.0.508)"},
        {with(bank, 12, 0x242), Wanted::bank, "Error loading bank (QvRR, version 2.0.508)"},
        {with(bank, 4, 10030814), Wanted::bank, "Error loading bank (QvRR, version 0.0.814)"},
        {with(with(bank, 4, 123456789), 12, 0x99), Wanted::bank,
         "Error loading bank (QvRR, version 1.3.6789)"},
        {with(bank, 4, 220000000), Wanted::bank, later},
        {with(bank, 4, 220000001), Wanted::bank, later},
        {with(bank, 4, 0xF0000000), Wanted::bank, later},
        {with(with(bank, 4, 220000001), 12, 0x99), Wanted::bank, later},
        {bank, Wanted::preset, "Error loading chunk (QvRR, %d bytes)"},
        {cutTo(preset, 1500), Wanted::preset, "Error loading chunk (QvRR, 1500 bytes)"},
        {with(preset, 20, 65), Wanted::bank, "Error loading chunk (QvRR, %d bytes)"},
        {with(preset, 4, 220000000), Wanted::preset, later},
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
    SetupRig source;
    // Other damage in every run of --gtest_repeat with --gtest_shuffle.
    Dice dice{std::mt19937{static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())}};
    source.put(1, "Second", 0.25f);
    const Bytes whole = source.bank();
    SetupRig rig;
    Transport transport;
    transport.setSampleRate(44100);
    const PartEventLists none;
    int accepted = 0;
    constexpr int rounds = 150;
    for (int round = 0; round < rounds; ++round) {
        Bytes bank = whole;
        switch (round % 3) {
            case 0:
                bank.resize(static_cast<std::size_t>(dice.below(static_cast<int>(whole.size()))));
                break;
            case 1:
                // Most of it where the structure is.
                for (int flips = 1 + dice.below(5); flips > 0; --flips) {
                    const int reach = dice.below(3) == 0 ? static_cast<int>(whole.size()) : 128;
                    bank[static_cast<std::size_t>(4 + dice.below(reach - 4))] =
                        static_cast<std::uint8_t>(dice.generator());
                }
                break;
            default:
                poke(bank, static_cast<std::size_t>(16 + 4 * dice.below(18)),
                     static_cast<std::uint32_t>(dice.below(static_cast<int>(whole.size()) + 40)));
        }
        if (rig.read(bank)) {
            ++accepted;
            // What was accepted can be saved again and plays.
            ASSERT_FALSE(rig.bank().empty());
        } else {
            EXPECT_EQ(user.takeSaid().size(), 1u);
        }
        // What has been replaced retires and is deleted as ever.
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
    const auto whole =
        Bytes(bank.begin() + static_cast<std::ptrdiff_t>(peek(bank, bankLayout::globalOffset)),
              bank.end());
    Dice dice{std::mt19937{7}};
    for (int round = 0; round < 20000; ++round) {
        // Of exactly its size, so that a byte beyond it is found out.
        Bytes block = whole;
        for (int flips = dice.below(20); flips > 0; --flips)
            block[static_cast<std::size_t>(dice.below(620))] =
                static_cast<std::uint8_t>(dice.generator());
        if (dice.below(2) == 0) poke(block, 0, static_cast<std::uint32_t>(dice.below(700)));
        const auto cut = static_cast<std::ptrdiff_t>(dice.below(621));
        const GlobalBlock read = readGlobalBlock(Bytes(block.begin(), block.begin() + cut));
        if (read.tuning) {
            ASSERT_LE(std::abs(read.tuning->semitones), 24);
            ASSERT_LE(std::fabs(read.tuning->fraction), 24.0f);
        }
        if (read.combis) {
            ASSERT_TRUE(read.combis->preload >= 0 && read.combis->preload <= 2);
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
