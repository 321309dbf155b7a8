#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "base/trace.h"
#include "patch/controller_map.h"
#include "patch/element.h"
#include "patch/record_reader.h"
#include "patch/record_writer.h"
#include "patch/scene_table.h"

namespace stratovane {
namespace {

namespace layout = recordLayout;
constexpr auto nan = std::numeric_limits<float>::quiet_NaN();
constexpr std::uint32_t before = layout::currentVersion - 1;
constexpr float effectNumber(int number) { return (static_cast<float>(number) + 0.5f) / 128.9f; }

template <class T>
void put(Bytes& bytes, std::size_t offset, T value) {
    ASSERT_LE(offset + sizeof value, bytes.size());
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}
void putGlobal(Bytes& bytes, int index, float v) {
    put(bytes, static_cast<std::size_t>(layout::globals + 4 * index), v);
}
/// Of the `place`-th block of an element's size, from 1: elements, then send slots.
void putValue(Bytes& bytes, int place, int index, float v) {
    const int slot = layout::elements + layout::elementBytes * (place - 1);
    put(bytes, static_cast<std::size_t>(slot + 32 + 4 * index), v);
}
Bytes slice(const Bytes& bytes, std::size_t count) {
    return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
}

Bytes behind(std::size_t count, const Bytes& bytes) {
    Bytes all(count + bytes.size(), 0x77);
    std::copy(bytes.begin(), bytes.end(), all.begin() + static_cast<std::ptrdiff_t>(count));
    return all;
}

/// A scene of a size, with a note when there is room for one.
Scene makeScene(std::uint32_t bytes, std::uint32_t flags = 0) {
    Scene scene{.name = "Scene", .flags = flags, .knobs = {0.75f}, .storedBytes = bytes};
    if (bytes >= 528) scene.phrase.events = {{0.5, 0.25, 0x90, 60, 100}};
    return scene;
}
void putScene(Patch& patch, int slot, const Scene& scene) {
    patch.scenes().put(slot, std::make_shared<const Scene>(scene));
}

struct Records : testing::Test {
    static inline std::vector<std::string> lines;
    EngineShared shared;
    Trace trace{[](const char* line) { lines.emplace_back(line); }};
    Patch master{shared};

    void SetUp() override { lines.clear(); }

    std::unique_ptr<Patch> read(const Bytes& bytes, const ReadOptions& options = {}) {
        auto patch = std::make_unique<Patch>(shared);
        const auto result = readPatchRecord(*patch, bytes, options, trace);
        EXPECT_TRUE(std::holds_alternative<ReadResult>(result));
        return patch;
    }
    void fillSlot(Patch& patch, int number, const char* name, int effect) {
        patch.setText(number, name);
        patch.store(number, elementIndex::mute, 0.0f);
        patch.store(number, elementIndex::item, effectNumber(effect));
    }
    /// A record with elements and everything behind them.
    Bytes sample(int elements = 2) {
        Patch patch{shared};
        patch.setText(0, "Sample");
        patch.store(0, global::type, 0.3333333f);
        patch.setElementCount(elements);
        for (int number = 1; number <= elements; ++number)
            patch.initElement(number, ElementType::analog);
        fillSlot(master, 66, "Room", 3);
        putScene(patch, 0, makeScene(528));
        putScene(patch, 2, makeScene(600, 3));
        Bytes bytes = writePatchRecord(patch, &master);
        master.store(66, elementIndex::item, 1.0f);
        return bytes;
    }
};

struct Dice {
    std::mt19937 generator;
    std::uniform_real_distribution<float> range{0.0f, 1.0f};
    float value() { return range(generator); }
    int below(int count) { return static_cast<int>(value() * (static_cast<float>(count) - 0.1f)); }
    std::string text(int longest) {
        std::string text(static_cast<std::size_t>(below(longest + 1)), ' ');
        for (char& c : text) c = static_cast<char>(1 + below(255));
        return text;
    }
};

constexpr int knobs[] = {14, 15, 103, 105, 107, 109};

void shuffle(Patch& patch, Dice& dice) {
    for (int i = 0; i < globalParameters; ++i) patch.store(0, i, dice.value());
    patch.store(0, global::pianoMode, 0.99f * dice.value());
    patch.store(0, global::type, 0.1f + 0.9f * dice.value());
    patch.setElementCount(dice.below(maxElements + 1));
    for (int number = 1; number <= elementTotal; ++number) {
        if (number > patch.elementCount() && number < firstSendSlot) continue;
        for (int i = 0; i < elementParameters; ++i) patch.store(number, i, dice.value());
        if (number >= firstSendSlot) patch.store(number, elementIndex::type, 0.0f);
        patch.setText(number, dice.text(31));
    }
    for (const RecordText& text : recordTexts)
        patch.setText(text.selector, dice.text(text.bytes - 1));
    for (int controller = 0; controller < 128; ++controller)
        patch.assignController(controller, static_cast<ParameterId>(dice.below(65536)));
    for (int scenes = dice.below(10); scenes > 0; --scenes)
        putScene(patch, dice.below(64),
                 makeScene(static_cast<std::uint32_t>(504 + dice.below(99))));
    patch.setIdWord(static_cast<std::uint32_t>(dice.generator()));
    // As in any patch that was ever played, the slots stand where the knobs do.
    for (const int knob : knobs) patch.store(0, knob, patch.get(0, knob));
}

TEST_F(Records, RandomPatchesComeBackByteForByte) {
    for (unsigned seed = 1; seed <= 24; ++seed) {
        Dice dice{std::mt19937{seed}};
        Patch patch{shared}, effects{shared}, otherMaster{shared};
        shuffle(patch, dice);
        shuffle(effects, dice);
        for (const int knob : knobs) otherMaster.store(0, knob, effects.get(0, knob));
        const Bytes written = writePatchRecord(patch, patch.elementCount() ? &effects : nullptr);
        const auto back = read(written, {.master = &otherMaster});
        const Bytes again = writePatchRecord(*back, &otherMaster);
        const auto differs =
            std::mismatch(again.begin(), again.end(), written.begin(), written.end());
        EXPECT_EQ(differs.first - again.begin(), static_cast<std::ptrdiff_t>(written.size()))
            << "first byte that differs, seed " << seed;
        for (int number = 0; number <= patch.elementCount(); ++number)
            for (int i = 0; i < elementParameters; ++i)
                ASSERT_EQ(back->get(number, i), patch.get(number, i)) << number << ' ' << i;
        EXPECT_EQ(back->elementCount(), patch.elementCount());
    }
    EXPECT_TRUE(lines.empty());
}

TEST_F(Records, EverythingLiesInItsPlace) {
    Patch patch{shared};
    EXPECT_EQ(writePatchRecord(patch, nullptr).size(), 1840u);
    patch.setIdWord(0x1234);
    patch.setElementCount(2);
    const struct {
        int selector;
        std::uint64_t at;
        const char *set, *written;
    } texts[] = {{0, 32, "Name", "Name"},     {-9, 64, "Abcd", "AbcdUser"},
                 {-10, 128, "one", "one"},    {-7, 256, "two", "two"},
                 {-8, 384, "three", "three"}, {-6, 448, "first", "first"},
                 {-1, 528, "sixth", "sixth"}, {2, 2624, "Second", "Second"}};
    for (const auto& text : texts) patch.setText(text.selector, text.set);
    patch.store(0, global::level, 0.25f);
    patch.store(2, 255, 0.75f);
    fillSlot(patch, 67, "Own", 21);
    patch.store(0, global::fxSends, 1.0f);
    fillSlot(master, 65, "Shared", 0);
    fillSlot(master, 67, "Not this", 1);
    fillSlot(master, 68, "Silent", 1);
    master.store(68, elementIndex::mute, 1.0f);
    patch.assignController(127, 0x1139);
    putScene(patch, 1, makeScene(504));
    const Bytes bytes = writePatchRecord(patch, &master);

    const ByteView view{bytes};
    const auto word = [&](std::uint64_t at) { return view.at<std::uint32_t>(at); };
    const std::uint32_t header[] = {200050508, 0, 0x150, 0x1234, 2, 0x00010002, 0};
    for (std::size_t i = 0; i < std::size(header); ++i) EXPECT_EQ(word(4 + 4 * i), header[i]) << i;
    for (const auto& text : texts)
        EXPECT_EQ(view.from(text.at).terminatedText(), text.written) << text.at;
    EXPECT_EQ(view.from(3680).terminatedText(), "Shared");
    EXPECT_EQ(view.from(3680 + 1056).terminatedText(), "Own");
    EXPECT_EQ(view.part(0, 4).text(), "QvRR");
    EXPECT_EQ(view.at<float>(544 + 4 * 67), 0.25f);
    EXPECT_EQ(word(544 + 4 * 255), 0u);
    EXPECT_EQ(view.at<float>(3680 - 4), 0.75f);
    const std::uint64_t tail = 1568 + 4 * 1056;
    EXPECT_EQ(word(tail), 2u);
    EXPECT_EQ(view.at<std::uint16_t>(tail + 4 + 2 * 127), 0x1139);
    const std::uint32_t scenes[] = {1, 0, 504};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(word(tail + 260 + 4 * i), scenes[i]) << i;
    EXPECT_EQ(bytes.size(), tail + 268 + 504 + 4);
}

TEST_F(Records, SavedPatchesAreTheUsers) {
    const std::string full(57, 'x'), room(56, 'x');
    for (const auto& [codes, saved] : std::vector<std::pair<std::string, std::string>>{
             {"", "User"}, {"AUserB", "AUserB"}, {room, room + "User"}, {full, full}}) {
        Patch patch{shared};
        patch.setText(-9, codes);
        EXPECT_EQ(read(writePatchRecord(patch, nullptr))->text(-9), saved);
        EXPECT_EQ(patch.text(-9), codes);
    }
}

TEST_F(Records, AreFoundInEveryForm) {
    const Bytes bare = sample();
    Bytes reversed = bare;
    std::memcpy(reversed.data(), "RRvQ", 4);
    const Bytes wrapped = behind(60, bare);
    Bytes longer = bare;
    longer.resize(bare.size() + 100, 0xFF);
    for (const Bytes& form : {bare, reversed, wrapped, longer}) {
        Patch otherMaster{shared};
        const auto patch = read(form, {.master = &otherMaster});
        EXPECT_EQ(writePatchRecord(*patch, &otherMaster), bare);
    }

    // Inside a bank, the second time as an old one held it: without a header of its own.
    const Bytes bank = behind(100, bare);
    const std::uint64_t body = 100 + 16;
    const auto version = [&](std::uint64_t offset, std::uint32_t ofBank) {
        return std::get<PatchRecord>(parseRecordInBank(bank, offset, ofBank)).version;
    };
    EXPECT_EQ(version(100, 10030815), 200050508u);
    EXPECT_EQ(version(body, 10030815), 10030815u);
    const auto faultAt = [&](std::uint64_t offset, std::uint32_t ofBank) {
        return std::get<RecordFault>(parseRecordInBank(bank, offset, ofBank));
    };
    EXPECT_EQ(faultAt(body, 220000000).kind, RecordFault::Kind::tooNew);
    EXPECT_EQ(faultAt(15, 10030815).sentence, "there is no room for a header before the record");
    EXPECT_EQ(faultAt(bank.size() - 3, 1).sentence, "the record lies outside the bank");
    EXPECT_EQ(faultAt(0xFFFFFFFF, 1).sentence, "the record lies outside the bank");
}

TEST_F(Records, OldVersionsAreRepaired) {
    constexpr float analog = 0.3333333f, sampleType = 0.1333333f;
    constexpr std::uint32_t current = layout::currentVersion, click = 11040105;
    const struct {
        std::uint32_t version;
        float patchType, elementType;
        int element, index;
        float stored, expected;
    } cases[] = {
        {before, analog, analog, 0, 24, 0.9f, 0.5f},
        {current, analog, analog, 0, 24, 0.9f, 0.9f},
        {before, analog, analog, 0, 24, 7.0f, 0.5f},
        {current, analog, analog, 0, 84, 1.0f, 0.7f},
        {1, analog, analog, 0, 84, 0.99f, 0.99f},
        {current, 0.05f, analog, 0, 68, 0.05f, 0.3333333f},
        {current, 0.07f, analog, 0, 68, 0.07f, 0.07f},
        {click - 1, analog, analog, 1, 125, 0.9f, 0.27f},
        {click - 1, analog, sampleType, 1, 125, 0.995f, 0.0f},
        {click - 1, analog, sampleType, 1, 125, nan, 0.0f},
        {click, analog, analog, 1, 125, 0.9f, 0.9f},
        {before, 0.2f, analog, 1, 34, 0.9f, 0.333f},
        {current, 0.2f, analog, 1, 25, 0.9f, 0.9f},
        {before, 0.2f, sampleType, 1, 25, 0.9f, 0.9f},
        {before, 0.07f, analog, 1, 25, 0.9f, 0.9f},
        {before, 0.0f, analog, 1, 25, 0.9f, 0.9f},  // unset counts as the type it becomes
        {current, analog, sampleType, 1, 139, -3.0f, 0.0f},
    };
    const Bytes made = sample(1);
    for (const auto& c : cases) {
        Bytes bytes = made;
        put(bytes, layout::version, c.version);
        putGlobal(bytes, global::type, c.patchType);
        putValue(bytes, 1, elementIndex::type, c.elementType);
        if (c.element == 0)
            putGlobal(bytes, c.index, c.stored);
        else
            putValue(bytes, 1, c.index, c.stored);
        EXPECT_FLOAT_EQ(read(bytes, {.pianoMode = 0.7f})->get(c.element, c.index), c.expected)
            << "version " << c.version << ", " << c.element << ' ' << c.index << " = " << c.stored;
    }
    // All of what old "Analog" elements did not have, and nothing else.
    Bytes bytes = made;
    put(bytes, layout::version, before);
    putGlobal(bytes, global::type, 0.2f);
    for (int i = 2; i < elementParameters; ++i) putValue(bytes, 1, i, 0.9f);
    const auto patch = read(bytes);
    std::vector<int> changed;
    for (int i = 2; i < elementParameters; ++i)
        if (patch->get(1, i) != 0.9f) changed.push_back(i);
    EXPECT_EQ(changed, (std::vector{25, 26, 27, 32, 33, 34, 35, 36, 37, 125}));
    EXPECT_TRUE(lines.empty());
}

TEST_F(Records, GlobalsOutOfRangeKeepTheirDefaults) {
    Bytes bytes = sample();
    putGlobal(bytes, 24, 2.0f);
    putGlobal(bytes, 60, 12.34567f);
    putGlobal(bytes, 149, nan);
    putGlobal(bytes, 255, -1.5f);
    const auto patch = read(bytes);
    for (const int index : {24, 60}) EXPECT_EQ(patch->get(0, index), 0.5f);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "SV2 Warning - Patch parameter 60 = 12.3457\n");
    EXPECT_EQ(lines[1].substr(0, 37), "SV2 Warning - Patch parameter 149 = n");
    EXPECT_EQ(lines[2], "SV2 Warning - Patch parameter 255 = -1.5000\n");
}

TEST_F(Records, TextsAreCutAndTheElementsBeyondEmpty) {
    Bytes bytes = sample(1);
    std::memset(bytes.data() + 32, 'n', 512);
    std::memset(bytes.data() + layout::elements, 'e', 32);
    const auto patch = read(bytes);
    EXPECT_EQ(patch->text(0), std::string(31, 'n'));
    EXPECT_EQ(patch->text(-10), std::string(127, 'n'));
    EXPECT_EQ(patch->text(-1), std::string(15, 'n'));
    EXPECT_EQ(patch->text(1), std::string(31, 'e'));
    for (const int number : {2, 64})
        for (const int index : {elementIndex::mute, elementIndex::bank, elementIndex::item})
            EXPECT_EQ(patch->get(number, index), 1.0f) << number << ' ' << index;
}

TEST_F(Records, EffectsOfTheMasterFindTheirPlace) {
    using enum MasterEffects;
    enum Place { nowhere, own, shared_ };
    const struct {
        int slot;
        std::uint8_t source;
        const char* name;
        float inMaster;  // effect of the master's slot
        int elements;
        MasterEffects policy;
        Place expected;
    } cases[] = {
        {0, 1, "Hall", 1.0f, 1, offer, own},
        {0, 9, "Hall", 1.0f, 1, offer, own},
        {0, 2, "Hall", 1.0f, 1, offer, shared_},
        {0, 2, "Hall", 0.9995f, 1, offer, shared_},
        {0, 2, "Hall", 0.999f, 1, offer, own},
        {0, 2, "Hall", 1.0f, 0, offer, own},
        {0, 2, "Long Reverb", 0.5f, 1, offer, nowhere},
        {0, 2, "GM Reverb", 0.5f, 1, offer, nowhere},
        {1, 2, "Short Reverb", 0.5f, 1, offer, nowhere},
        {1, 2, "Long Reverb", 0.5f, 1, offer, own},
        {2, 2, "GM Chorus", 0.5f, 1, offer, nowhere},
        {3, 2, "GM Chorus", 0.5f, 1, offer, own},
        {3, 2, "Hall", 1.0f, 1, stepOver, nowhere},
        {3, 1, "Hall", 1.0f, 1, stepOver, own},
    };
    for (const auto& c : cases) {
        const int number = firstSendSlot + c.slot;
        Patch source{shared}, target{shared};
        source.setElementCount(c.elements);
        fillSlot(source, number, c.name, 21);
        source.store(0, global::fxSends, 1.0f);
        Bytes bytes = writePatchRecord(source, nullptr);
        bytes[static_cast<std::size_t>(layout::sendSources + c.slot)] = c.source;
        putValue(bytes, c.elements + 1, elementIndex::type, 0.9f);
        target.store(number, elementIndex::item, c.inMaster);

        Patch patch{shared};
        const auto result =
            readPatchRecord(patch, bytes, {.master = &target, .masterEffects = c.policy}, trace);
        const auto holds = [&](const Patch& holder) {
            return holder.get(number, elementIndex::item) == effectNumber(21) &&
                   holder.get(number, elementIndex::type) == 0.0f && holder.text(number) == c.name;
        };
        EXPECT_EQ(holds(patch), c.expected == own) << c.name << ' ' << c.slot;
        EXPECT_EQ(patch.get(number, elementIndex::item) == 1.0f, c.expected != own) << c.name;
        EXPECT_TRUE(c.expected != shared_ || patch.get(number, elementIndex::bank) == 1.0f);
        EXPECT_EQ(holds(target), c.expected == shared_) << c.name << ' ' << c.slot;
        EXPECT_EQ(std::get<ReadResult>(result).filledMaster[static_cast<std::size_t>(c.slot)],
                  c.expected == shared_);
    }
}

TEST_F(Records, OldTailsNameControllersOfKnobs) {
    Bytes bytes = slice(sample(0), 1568 + 1056 + 4);
    bytes[layout::sendSources + 1] = 1;
    put(bytes, 1568 + 1056, std::uint32_t{0});
    putGlobal(bytes, 4, (1 + 0.5f) / 128.9f);
    putGlobal(bytes, 5, 0.0f);
    putGlobal(bytes, 104, 1.0f);  // 128
    putGlobal(bytes, 110, (127 + 0.5f) / 128.9f);
    for (const int index : {149, 150, 151, 30}) putGlobal(bytes, index, 0.6f);
    const auto patch = read(bytes);
    ControllerMap expected = defaultControllerMap(5);
    expected[1] = global::knob1;
    expected[127] = global::knob6;
    for (int controller = 0; controller < 128; ++controller)
        EXPECT_EQ(patch->storedTarget(controller), expected[static_cast<std::size_t>(controller)])
            << controller;
    for (const auto& [index, v] : {std::pair{149, 0.0f}, {150, 0.0f}, {151, 1.0f}, {30, 1.0f}})
        EXPECT_EQ(patch->get(0, index), v) << index;

    put(bytes, 1568 + 1056, std::int32_t{-7});
    EXPECT_EQ(read(bytes)->storedTarget(127), noParameter);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "SV2 Warning - unexpected patch data endmark -7\n");
}

TEST_F(Records, ScenesComeWithThePatch) {
    Patch patch{shared};
    patch.store(0, global::currentScene, (3 + 0.5f) / 64.9f);
    patch.store(0, global::knob1, 0.25f);
    const Scene three = makeScene(536, 3);
    Bytes badCount = writeSceneRecord(makeScene(528));
    put(badCount, 500, 2);
    ByteWriter out;
    out.append(slice(writePatchRecord(patch, nullptr), 1568 + 4 + 256));
    out.put(66);
    for (int slot = 0; slot <= 66; ++slot) {
        if (slot == 1) out.append(badCount);
        if (slot == 3) out.append(writeSceneRecord(three));
        if (slot == 64) out.append(writeSceneRecord(makeScene(600)));
        if (slot != 1 && slot != 3 && slot != 64) out.put(0);
    }
    out.put(0);
    Bytes bytes = out.take();

    const auto back = read(bytes);
    const SceneTable& scenes = back->scenes();
    EXPECT_EQ(scenes.highest(), 3);
    EXPECT_EQ(scenes.current(), 3);
    for (const int slot : {0, 2, 64}) EXPECT_EQ(scenes.at(slot), nullptr);
    EXPECT_TRUE(scenes.at(1)->phrase.events.empty());
    EXPECT_EQ(*scenes.at(3), three);
    EXPECT_EQ(back->get(0, global::knob1), 0.25f);  // nothing was recalled
    EXPECT_EQ(back->phrase(), &scenes.at(3)->phrase);
    Patch copy{shared};
    copy.copyFrom(*back);
    EXPECT_EQ(copy.scenes().at(3), scenes.at(3));
    EXPECT_EQ(copy.phrase(), back->phrase());

    put(bytes, 1568 + 4 + 256, std::int32_t{-1});
    EXPECT_EQ(read(bytes)->scenes().highest(), 0);
}

TEST_F(Records, DamageIsRefusedAndChangesNothing) {
    using enum RecordFault::Kind;
    const Bytes good = sample(2);
    const std::size_t sends = 1568 + 2 * 1056, tail = sends + 1056, scenes = tail + 264;
    const std::size_t whole = good.size();
    const struct {
        const char* damage;
        std::size_t size, at;
        std::uint32_t word;  // written there when the record has its whole size
        RecordFault::Kind kind;
        std::size_t offset;  // of the fault
    } cases[] = {
        {"nothing at all", 0, 0, 0, noRecord, 0},
        {"no tag", whole, 0, 0x52527650, noRecord, 0},
        {"a bank", whole, 12, 0x142, noRecord, 12},
        {"half a header", 15, 0, 0, damaged, 0},
        {"a later version", whole, 4, 220000000, tooNew, 16},
        {"a version above 2^31", whole, 4, 0x80000000, tooNew, 16},
        {"globals cut off", 1567, 0, 0, damaged, 16},
        {"65 elements", whole, 20, 65, damaged, 20},
        {"-1 elements", whole, 20, 0xFFFFFFFF, damaged, 20},
        {"64 elements announced", whole, 20, 64, damaged, 1568},
        {"four send slots announced", whole, 24, 0x01010101, damaged, tail + 1056},
        {"a send slot cut off", tail - 1, 0, 0, damaged, sends},
        {"no end mark", tail + 3, 0, 0, damaged, tail},
        {"map cut off", tail + 259, 0, 0, damaged, tail + 4},
        {"no number of scenes", tail + 263, 0, 0, damaged, tail + 260},
        {"too many scenes", whole, tail + 260, 0x7FFFFFFF, damaged, whole},
        {"a short scene", whole, scenes, 503, damaged, scenes},
        {"an endless scene", whole, scenes, 0xFFFFFFFF, damaged, scenes},
        {"no last word", whole - 1, 0, 0, damaged, whole - 4},
    };
    for (const auto& c : cases) {
        Bytes bytes = slice(good, c.size);
        if (c.size == whole) put(bytes, c.at, c.word);
        Patch patch{shared};
        const std::uint32_t changes = patch.changes(), masterChanges = master.changes();
        const auto result = readPatchRecord(patch, bytes, {.master = &master}, trace);
        const auto* fault = std::get_if<RecordFault>(&result);
        ASSERT_NE(fault, nullptr) << c.damage;
        EXPECT_EQ(fault->kind, c.kind) << c.damage;
        EXPECT_EQ(fault->offset, c.offset) << c.damage << ": " << fault->sentence;
        EXPECT_EQ(patch.changes() - changes + master.changes() - masterChanges, 0u) << c.damage;
    }
}

TEST_F(Records, MutationsNeverLeaveTheirBounds) {
    const Bytes good = sample(1);
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_TRUE(std::holds_alternative<RecordFault>(parsePatchRecord(slice(good, size))))
            << size;

    Dice dice{std::mt19937{7}};
    // Where a wrong bit changes the shape, and everywhere.
    const std::size_t tail = 1568 + 2 * 1056;
    const std::pair<std::size_t, std::size_t> regions[] = {
        {0, 32}, {tail, 4}, {tail + 260, 8}, {tail + 264 + 496, 8}, {0, good.size()}};
    int filled = 0;
    for (int i = 0; i < 4000; ++i) {
        const auto [from, count] = regions[dice.below(5)];
        Bytes bytes = good;
        for (int flips = 1 + dice.below(3); flips > 0; --flips)
            bytes[from + dice.generator() % count] ^= static_cast<std::uint8_t>(1 << dice.below(8));
        const auto parsed = parsePatchRecord(bytes);
        if (std::holds_alternative<RecordFault>(parsed) || i % 16 != 0) continue;
        ++filled;
        Patch patch{shared}, otherMaster{shared};
        fillPatch(patch, std::get<PatchRecord>(parsed), {.master = &otherMaster}, trace);
        for (int number = 0; number <= elementTotal; ++number)
            for (int index = 0; index < elementParameters; ++index) {
                const float v = patch.get(number, index);
                ASSERT_TRUE(v >= 0.0f && v <= 1.0f) << number << ' ' << index << ' ' << v;
            }
        // What was repaired on reading stays as it is.
        const Bytes once = writePatchRecord(patch, nullptr);
        ASSERT_EQ(writePatchRecord(*read(once), nullptr), once) << i;
    }
    EXPECT_GT(filled, 50);
}

}  // namespace
}  // namespace stratovane
