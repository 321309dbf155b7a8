#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "patch/controller_map.h"
#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "patch/parameter_marks.h"
#include "patch/patch.h"

namespace stratovane {
namespace {

TEST(Marks, ComeOutOnceAndInOrder) {
    ParameterMarks marks;
    EXPECT_FALSE(marks.any());
    const std::vector<std::pair<int, int>> set{{68, 255}, {0, 31}, {33, 7},
                                               {0, 32},   {0, 31}, {5, 0}};
    for (const auto& [element, index] : set) marks.set(element, index);
    EXPECT_TRUE(marks.any());
    std::vector<std::pair<int, int>> taken;
    const auto take = [&](int element, int index) { taken.emplace_back(element, index); };
    marks.take(take);
    EXPECT_EQ(taken,
              (std::vector<std::pair<int, int>>{{0, 31}, {0, 32}, {5, 0}, {33, 7}, {68, 255}}));
    marks.take(take);
    EXPECT_EQ(taken.size(), 5u);
    EXPECT_FALSE(marks.any());
}

// One thread turns parameters, loads and reads texts, the other plays: nothing is lost, and the
// thread sanitizer sees no two of them at one value.
TEST(Threads, StoreAndApplySideBySide) {
    EngineShared shared;
    Patch patch{shared};
    patch.setElementCount(3);
    patch.handOver();
    std::atomic<bool> done{false};
    std::thread editor{[&] {
        char buffer[64];
        for (int i = 0; i <= 20000; ++i) {
            const float v = static_cast<float>(i % 101) / 100.0f;
            patch.store(1 + i % 3, i % 256, v);
            patch.store(0, i % 252, v);
            if (i % 16 == 0) patch.applyLoading();
            TextOut out{buffer};
            patch.showName(out, 1 + i % 3, i % 256);
            patch.showValue(out, 1 + i % 3, i % 256);
            patch.armLearn();
            if (i % 64 == 0) patch.refreshTuning();
        }
        patch.store(1, elementIndex::type, 2 / 15.0f);
        patch.store(1, elementIndex::velocityMapMode, 0.0f);
        patch.store(1, elementIndex::item, 77.5f / 128.9f);
        patch.store(1, elementIndex::pan, 0.25f);
        patch.store(1, elementIndex::receive, 0.0f);
        patch.store(0, global::pan, 0.75f);
        while (patch.waits()) {
            patch.applyLoading();
            std::this_thread::yield();
        }
        done.store(true);
    }};
    float level = 0;
    for (int i = 0; !done.load(); ++i) {
        patch.applyMarked();
        patch.set(2, elementIndex::cutoff, static_cast<float>(i % 100) / 100.0f);
        patch.learn(20);
        level += patch.element(1).controls().level;
    }
    editor.join();
    // What the last marks set off while the editor looked.
    for (int i = 0; i < 4 && patch.waits(); ++i) {
        patch.applyLoading();
        patch.applyMarked();
    }
    EXPECT_FALSE(patch.waits());
    EXPECT_GE(level, 0.0f);
    const ElementControls& sound = patch.element(1).controls();
    EXPECT_EQ(patch.element(1).type(), ElementType::sample);
    EXPECT_EQ(sound.sample.set, 77);
    EXPECT_EQ(sound.pan, 0.25f);
    EXPECT_FALSE(sound.receive);
    EXPECT_EQ(patch.controls().pan, 0.75f);
}

struct Live : testing::Test {
    EngineShared shared;
    Patch patch{shared};
    const ElementControls& sound = patch.element(1).controls();

    void SetUp() override {
        patch.setElementCount(1);
        patch.initElement(1, ElementType::sample);
        patch.handOver();
        ASSERT_FALSE(patch.waits());
    }
    void settle() {
        while (patch.waits()) {
            patch.applyLoading();
            patch.applyMarked();
        }
    }
};

TEST_F(Live, WhatIsStoredWaitsForTheOwner) {
    patch.store(1, elementIndex::pan, 1.0f);
    EXPECT_EQ(patch.get(1, elementIndex::pan), 1.0f);
    EXPECT_EQ(sound.pan, 0.5f);
    EXPECT_TRUE(patch.waits());
    patch.applyMarked();
    EXPECT_EQ(sound.pan, 1.0f);
    EXPECT_FALSE(patch.waits());
    patch.set(1, elementIndex::pan, 0.0f);
    EXPECT_EQ(sound.pan, 0.0f);
    EXPECT_FALSE(patch.waits());
    shared.tuningSemitones = 1.0f;
    patch.refreshTuning();
    patch.applyMarked();
    EXPECT_FLOAT_EQ(patch.controls().finePitch, 0.057762265f);
}

TEST_F(Live, WhatLoadsWaitsForTheUiThreadFirst) {
    const int loading[] = {elementIndex::bank, elementIndex::item, elementIndex::type,
                           elementIndex::eco};
    for (const int index : loading) {
        patch.set(1, index, 0.4f);  // even the owner only asks
        patch.applyMarked();
        EXPECT_TRUE(patch.waits()) << index;
        settle();
    }
    EXPECT_EQ(patch.element(1).type(), static_cast<ElementType>(6));
    // Re-sends of the patch go the same way.
    patch.set(1, elementIndex::type, 2 / 15.0f);
    patch.set(1, elementIndex::eco, 1.0f);
    settle();
    EXPECT_FALSE(sound.eco);
    patch.set(0, global::eco, 0.0f);
    EXPECT_FALSE(sound.eco);
    settle();
    EXPECT_TRUE(sound.eco);
    for (const int index :
         {global::phraseProgram, global::pianoModel, global::pianoResonance, global::pianoMode,
          global::tuningBank1, global::tuningItem1, global::tuningBank2, global::tuningItem2}) {
        patch.store(0, index, 0.6f);
        patch.applyMarked();
        EXPECT_TRUE(patch.waits()) << index;
        settle();
    }
    EXPECT_EQ(patch.controls().tuning[1].item, 77);
}

// A plain row of the type to come is one that loads under the type still playing.
TEST_F(Live, NothingIsLoadedByTheOwnerWhileATypeChanges) {
    const int set = sound.sample.set;
    patch.store(1, elementIndex::type, 1 / 3.0f);
    patch.store(1, elementIndex::item, 0.5f);
    patch.applyMarked();
    EXPECT_EQ(sound.sample.set, set);
    settle();
    EXPECT_EQ(patch.element(1).type(), ElementType::analog);
    EXPECT_EQ(sound.analog.wave, 3);
    EXPECT_EQ(sound.sample.set, 128);
}

TEST_F(Live, LearningTakesTheNextControllerForTheLastParameter) {
    EXPECT_FALSE(patch.learn(20));  // not armed
    patch.armLearn();
    EXPECT_FALSE(patch.learn(20));  // nothing was changed
    patch.store(66, 25, 0.5f);
    patch.armLearn();
    patch.recall(1, elementIndex::pan, 0.1f);      // the instrument's own changes
    patch.recallNow(0, global::firstMacro, 0.1f);  // do not count
    for (const int refused : {0, 6, 32, 98, 99, 100, 101, 120, 121, 123, 126, 127, 128, -1})
        EXPECT_FALSE(patch.learn(refused)) << refused;
    EXPECT_TRUE(patch.learn(20));
    EXPECT_EQ(patch.controllerTarget(20), 66 * 256 + 25);
    EXPECT_FALSE(patch.learn(21));  // once
    patch.armLearn();
    patch.store(0, global::pan, 0.3f);  // another parameter disarms
    EXPECT_FALSE(patch.learn(21));
    patch.armLearn();
    patch.store(69, 0, 0.3f);  // what does not exist is nothing
    EXPECT_EQ(patch.lastChanged(), global::pan);
    EXPECT_TRUE(patch.learn(21));
}

TEST_F(Live, ControllersFollowThePatchType) {
    const struct {
        int type;
        std::vector<std::pair<int, int>> targets;
    } cases[] = {
        {1, {{7, 67}, {20, 0x115}, {22, 0x121}, {30, 0x18B}, {70, 126}}},
        {2, {{20, 0xFFFF}, {70, 71}, {71, 129}}},
        {3,
         {{12, 0x119},
          {16, 0x11D},
          {20, 0x121},
          {21, 0xFFFF},
          {31, 0x219},
          {66, 0x115},
          {72, 0x118}}},
        {4, {{77, 0x1B0}, {78, 0x1AE}, {79, 130}}},
        {15,
         {{16, 14}, {19, 105}, {65, 3}, {69, 17}, {77, 131}, {81, 109}, {94, 66}, {12, 0xFFFF}}},
        {0, {{5, 148}, {9, 0}, {10, 60}, {0, 0xFFFF}, {127, 0xFFFF}, {70, 126}}},
    };
    for (const auto& c : cases) {
        patch.store(0, global::type, static_cast<float>(c.type) / 15.0f);
        settle();
        for (const auto& [controller, id] : c.targets)
            EXPECT_EQ(patch.controllerTarget(controller), id) << c.type << " " << controller;
    }
    int assigned = 0;
    for (int i = 0; i < 128; ++i)
        assigned += defaultControllerMap(0)[static_cast<std::size_t>(i)] != 0xFFFF;
    EXPECT_EQ(assigned, 26);

    patch.assignController(21, 0xFF03);  // an element that does not exist: kept as it is
    patch.assignController(6, 60);       // data entry: kept, not obeyed
    patch.assignController(128, 60);
    patch.store(0, global::type, 0.01f);  // the type it has
    settle();
    EXPECT_EQ(patch.controllerTarget(21), 0xFF03);
    EXPECT_EQ(patch.controllerTarget(6), noParameter);
    EXPECT_EQ(patch.storedTarget(6), 60);
    EXPECT_EQ(patch.controllerTarget(128), noParameter);
}

}  // namespace
}  // namespace stratovane
