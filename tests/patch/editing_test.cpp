#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "content/program_files.h"
#include "effects/catalogue.h"
#include "patch/editing/clipboard.h"
#include "patch/editing/element_file.h"
#include "patch/editing/element_order.h"
#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "support/temporary_folder.h"

namespace stratovane {
namespace {

constexpr float mark(int number) { return static_cast<float>(number) / 100.0f; }

struct Editing : testing::Test {
    EngineShared shared;
    Patch patch{shared};
    Clipboard clip;

    /// Elements that tell their first number by pan and name.
    void fill(Patch& target, int count) {
        target.setElementCount(count);
        for (int number = 1; number <= count; ++number) {
            target.initElement(number, number % 2 ? ElementType::analog : ElementType::effect);
            target.setText(number, std::string{"E"}.append(std::to_string(number)));
            target.store(number, elementIndex::pan, mark(number));
        }
    }
    std::string order(const Patch& of) {
        std::string text;
        for (int number = 1; number <= of.elementCount(); ++number) {
            const std::string name{of.text(number)};
            text += name + ' ';
            // All of it came along: stored, applied and type.
            const int first = std::stoi(name.substr(1));
            EXPECT_EQ(of.get(number, elementIndex::pan), mark(first));
            EXPECT_EQ(of.element(number).controls().pan, mark(first));
            EXPECT_EQ(of.element(number).type(),
                      first % 2 ? ElementType::analog : ElementType::effect);
        }
        return text;
    }
};

TEST_F(Editing, ElementsMoveWithNameAndValues) {
    fill(patch, 4);
    removeElement(patch, 2);
    EXPECT_EQ(order(patch), "E1 E3 E4 ");
    EXPECT_EQ(patch.text(4), "");
    EXPECT_EQ(patch.get(4, elementIndex::mute), 1.0f);
    EXPECT_EQ(patch.get(4, elementIndex::item), 1.0f);
    removeElement(patch, 3);
    EXPECT_EQ(order(patch), "E1 E3 ");
    const auto effects = patch.effectElements();
    EXPECT_TRUE(effects.empty());
    makeRoom(patch, 1);
    EXPECT_EQ(order(patch), "E1 E1 E3 ");
    makeRoom(patch, 4);
    patch.setText(4, "E5");
    patch.initElement(4, ElementType::analog);
    EXPECT_EQ(patch.text(3), "E3");

    fill(patch, 62);
    EXPECT_TRUE(hasRoom(patch, 63));
    EXPECT_FALSE(hasRoom(patch, 64));
    EXPECT_FALSE(hasRoom(patch, 0));
    fill(patch, 63);
    for (const int number : {1, 63, 64}) EXPECT_FALSE(hasRoom(patch, number));
}

TEST_F(Editing, WhatIsPastedIsWhatWasCopied) {
    fill(patch, 3);
    for (int i = 2; i < elementParameters; ++i)
        patch.store(1, i, 0.3f + 0.001f * static_cast<float>(i));
    for (const bool live : {false, true}) {
        Patch target{shared};
        fill(target, 2);
        target.setText(0, "Named");
        // Its input follows the target's knobs where a slot names one.
        patch.store(1, elementIndex::firstSlotKnob, (3 + 0.5f) / 7.9f);
        patch.store(1, elementIndex::firstSlotKnob + 1, 0.0f);
        target.store(0, global::knob3, 0.9f);
        if (live) target.handOver();
        ASSERT_TRUE(clip.copy(patch, 1));
        ASSERT_TRUE(clip.paste(target, 2));
        target.applyMarked();
        for (int i = 0; i < elementParameters; ++i)
            EXPECT_EQ(target.get(2, i), i == elementIndex::firstSlotInput ? 0.9f : patch.get(1, i))
                << live << ' ' << i;
        EXPECT_EQ(target.text(2), "E1");
        EXPECT_EQ(target.text(0), "Named");
        EXPECT_EQ(target.element(2).type(), ElementType::analog);
        EXPECT_EQ(target.element(2).controls().level, patch.element(1).controls().level);
    }
}

TEST_F(Editing, PastingIntoAnEmptyPatchStartsOne) {
    fill(patch, 1);
    clip.copy(patch, 1);
    for (const float level : {0.0f, 0.009f, 0.01f, 0.9f}) {
        Patch empty{shared};
        empty.store(0, global::level, level);
        makeRoom(empty, 1);
        ASSERT_TRUE(clip.paste(empty, 1));
        EXPECT_EQ(empty.name(), "Init Patch");
        EXPECT_EQ(empty.get(0, global::level), level < 0.01f ? 0.5f : level);
    }
}

TEST_F(Editing, TheTypeOfThePatchFollowsTheHint) {
    using enum ElementType;
    const struct {
        ElementType element;
        float from, to;
        int hint, becomes;
    } cases[] = {
        {drawbar, 0.5f, 1 / 3.0f, 3, 3}, {drawbar, 0.5f, 0.09f, 3, 1}, {sample, 0.15f, 0.5f, 2, 2},
        {sample, 0.15f, 0.09f, 2, 1},    {analog, 0.09f, 0.15f, 1, 1}, {analog, 0.5f, 0.22f, 7, 3},
        {fm, 0.09f, 0.22f, 0, 3},        {effect, 0.15f, 0.5f, 0, 7},  {wavetable, 0.22f, 0, 0, 0},
    };
    for (const auto& c : cases) {
        Patch source{shared}, target{shared};
        for (Patch* each : {&source, &target}) {
            each->setElementCount(1);
            each->setText(0, "Named");
        }
        source.initElement(1, c.element);
        source.store(0, global::type, c.from);
        target.store(0, global::type, c.to);
        clip.copy(source, 1);
        EXPECT_EQ(clip.typeHint, c.hint);
        clip.paste(target, 1);
        EXPECT_EQ(target.controls().type, c.becomes) << c.from << ' ' << c.to;
    }
}

TEST_F(Editing, ThePatchsOwnValuesPasteTheirStepsAlone) {
    fill(patch, 1);
    patch.setText(0, "Source");
    for (int i = 0; i < globalParameters; ++i) patch.store(0, i, 0.3f);
    Patch target{shared};
    const auto before = [&](int i) { return Patch{shared}.get(0, i); };
    ASSERT_TRUE(clip.copy(patch, 0));
    EXPECT_EQ(clip.patchName, "Source");
    EXPECT_EQ(clip.patch[67], 0.3f);
    ASSERT_TRUE(clip.paste(target, 0));
    for (int i = 0; i < globalParameters; ++i)
        EXPECT_EQ(target.get(0, i), i >= 172 ? 0.3f : before(i)) << i;
    EXPECT_EQ(target.name(), "");
}

TEST_F(Editing, NumbersOutOfRangeChangeNothing) {
    fill(patch, 2);
    clip.copy(patch, 1);
    const std::uint32_t changes = patch.changes();
    for (const int number : {-1, 3, 64, 65, 68, 69}) {  // no sound fits a send slot
        EXPECT_FALSE(clip.paste(patch, number)) << number;
    }
    for (const int number : {-1, 3, 64, 69}) EXPECT_FALSE(clip.copy(patch, number)) << number;
    EXPECT_EQ(clip.elementName, "E1");
    EXPECT_EQ(patch.changes(), changes);
    clip.copy(patch, 2);
    EXPECT_TRUE(clip.paste(patch, 68));
    EXPECT_EQ(patch.text(68), "E2");
}

TEST_F(Editing, InitTakesWhatIsCommonFromTheTemplate) {
    patch.setElementCount(1);
    ElementValues common;
    common.fill(0.7f);
    const struct {
        ElementType type;
        int index;
        float expected;
    } cases[] = {
        {ElementType::analog, elementIndex::mute, 0.0f},
        {ElementType::analog, 2, 0.7f},
        {ElementType::analog, 16, 0.7f},
        {ElementType::analog, 37, 0.7f},
        {ElementType::analog, 255, 0.7f},
        {ElementType::analog, elementIndex::randomStart, 1.0f},
        {ElementType::fm, elementIndex::randomStart, 0.7f},
        {ElementType::fm, elementIndex::filterVelocityToAttack, 0.5f},
        {ElementType::sample, elementIndex::filterVelocityToAttack, 0.7f},
        {ElementType::effect, elementIndex::item, 1.0f},
        {ElementType::effect, 17, 0.0f},
        {ElementType::fm, 36, 0.5f},
    };
    for (const auto& c : cases) {
        for (int i = 0; i < elementParameters; ++i) patch.store(1, i, 0.2f);
        patch.initElement(1, c.type, common);
        EXPECT_EQ(patch.get(1, c.index), c.expected) << c.index;
        EXPECT_EQ(patch.element(1).type(), c.type);
    }
}

// Files.

struct ElementFiles : Editing {
    const TemporaryFolder folder;

    std::string fileOf(int type, float parameters) {
        Patch source{shared};
        source.setElementCount(1);
        source.initElement(1, ElementType::effect);
        for (int i = 0; i < elementParameters; ++i) source.store(1, i, parameters);
        source.store(1, elementIndex::type, 0.0f);
        source.store(1, elementIndex::item, storedEffectType(type));
        EXPECT_TRUE(saveElement(source, 1, folder / "  Some Effect .fxp"));
        return folder / "  Some Effect .fxp";
    }
};

TEST_F(ElementFiles, HoldTheWholeElement) {
    fill(patch, 1);
    for (int i = 0; i < elementParameters; ++i) patch.store(1, i, static_cast<float>(i) / 256.0f);
    ASSERT_TRUE(saveElement(patch, 1, folder / "One.fxp"));
    ASSERT_TRUE(saveElement(patch, 68, folder / "One.fxp"));  // over the first
    ASSERT_TRUE(saveElement(patch, 1, folder / "One.fxp"));
    const std::string file = folder.get("One.fxp");
    ASSERT_EQ(file.size(), 1252u);
    EXPECT_EQ(file.substr(0, 4) + file.substr(16, 4) + file.substr(28, 4),
              "CcnKMilEOne" + std::string(1, '\0'));
    float last = 0;
    std::memcpy(&last, file.data() + 1248, 4);
    EXPECT_EQ(last, 255 / 256.0f);
    for (const int number : {0, 2, 64, 69})
        EXPECT_FALSE(saveElement(patch, number, folder / "Two.fxp")) << number;
    EXPECT_FALSE(saveElement(patch, 1, folder / "missing/One.fxp"));
    EXPECT_FALSE(std::filesystem::exists(folder / "Two.fxp"));
}

TEST_F(ElementFiles, BecomeEffectsOfElementsAndSlots) {
    constexpr int delay = 10;
    const std::string path = fileOf(delay, 0.625f);
    fill(patch, 1);
    for (const int index : {20, elementIndex::level, elementIndex::firstSlotKnob, 146, 37})
        patch.store(1, index, 0.4f);
    for (const int element : {1, 66}) {
        ASSERT_TRUE(loadEffectFile(patch, element, path));
        EXPECT_EQ(patch.text(element), "Some Effect");
        EXPECT_EQ(patch.element(element).type(), ElementType::effect);
        EXPECT_NE(patch.element(element).unit(), nullptr);
        EXPECT_EQ(patch.get(element, elementIndex::mute), 0.0f);
        for (int i = 25; i <= 36; ++i) EXPECT_EQ(patch.get(element, i), 0.625f);
        for (const int index : {elementIndex::firstSlotKnob, 146})
            EXPECT_EQ(patch.get(element, index), 0.0f);
    }
    for (const int index : {20, elementIndex::level, 37}) EXPECT_EQ(patch.get(1, index), 0.4f);
    // An empty slot that is off is put on the first pair; one that has an effect or a pair is not.
    EXPECT_EQ(patch.get(66, 20), 0.05f);
    patch.store(66, 20, 0.0f);
    loadEffectFile(patch, 66, path);
    EXPECT_EQ(patch.get(66, 20), 0.0f);
    patch.store(67, 20, 0.5f);
    loadEffectFile(patch, 67, path);
    EXPECT_EQ(patch.get(67, 20), 0.5f);
}

TEST_F(ElementFiles, OfAnotherSizeOrNoneLeaveNoEffect) {
    const std::string path = fileOf(10, 0.5f), whole = folder.get("  Some Effect .fxp");
    folder.put("short.fxp", whole.substr(0, 1251));
    folder.put("long.fxp", whole + "x");
    folder.put("none.fxp", "");
    std::string damaged = whole;
    const float bad[] = {NAN, 3.0f, -1.0f};
    std::memcpy(damaged.data() + 228 + 4 * 25, bad, sizeof bad);
    folder.put("values.fxp", damaged);
    fill(patch, 1);
    for (const std::string name : {"short.fxp", "long.fxp", "none.fxp", "missing.fxp", ""}) {
        loadEffectFile(patch, 1, path);
        patch.store(1, elementIndex::mute, 1.0f);
        EXPECT_FALSE(loadEffectFile(patch, 1, folder / name)) << name;
        EXPECT_EQ(patch.text(1), "") << name;
        EXPECT_EQ(patch.get(1, elementIndex::item), 1.0f);
        EXPECT_EQ(patch.element(1).unit(), nullptr);
        EXPECT_EQ(patch.get(1, elementIndex::mute), 1.0f);
    }
    EXPECT_TRUE(loadEffectFile(patch, 1, folder / "values.fxp"));
    EXPECT_EQ(patch.get(1, 25), 0.0f);
    EXPECT_EQ(patch.get(1, 26), 1.0f);
    EXPECT_EQ(patch.get(1, 27), 0.0f);
    const std::uint32_t changes = patch.changes();
    for (const int number : {-1, 0, 2, 69}) EXPECT_FALSE(loadEffectFile(patch, number, path));
    EXPECT_EQ(patch.changes(), changes);
}

}  // namespace
}  // namespace stratovane
