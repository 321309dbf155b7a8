#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "base/trace.h"
#include "content/content_library.h"
#include "patch/editing/scene_store.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "patch/scene_table.h"
#include "support/temporary_folder.h"

namespace stratovane {
namespace {

using Record = SceneTable::Record;

Record makeScene(int notes, std::uint32_t flags = 0, float value = 0) {
    Scene scene{.name = "Song", .flags = flags};
    scene.knobs.fill(value);
    scene.arpeggiator.fill(value);
    scene.steps.fill(value);
    for (int i = 0; i < notes; ++i)
        scene.phrase.events.push_back({0.25 * i, 0.25, 0x90, static_cast<std::uint8_t>(60), 100});
    return std::make_shared<const Scene>(std::move(scene));
}
constexpr float sceneValue(int slot) { return static_cast<float>(slot) / 64.0f; }

struct Scenes : testing::Test {
    EngineShared shared;
    Patch patch{shared};

    /// What a render does with the patch before it plays.
    void render() {
        const RenderEpoch::Stay stay{shared.epoch};
        patch.applyMarked();
    }
    void setAll(float v) {
        for (const int knob : global::knobs) patch.store(0, knob, v);
        for (int i = 17; i <= 36; ++i) patch.store(0, i, v);
        for (int i = 172; i < globalParameters; ++i) patch.store(0, i, v);
    }
    const Phrase* phraseOf(int slot) { return &patch.scenes().at(slot)->phrase; }
};

TEST_F(Scenes, RecallWhatTheirFlagsNameByEveryWay) {
    enum Way { builder, editor, stored, owner };
    const auto isKept = [](int i) { return i == 18 || i == 26 || i == 27 || i > 33; };
    for (const Way way : {builder, editor, stored, owner}) {
        for (std::uint32_t flags = 0; flags < 4; ++flags) {
            Patch fresh{shared};
            const auto fill = [&](float v) {
                for (int i = 0; i < globalParameters; ++i)
                    if (i != global::currentScene) fresh.store(0, i, v);
            };
            if (way != builder) fresh.handOver();
            fill(0.25f);
            ASSERT_TRUE(storeScene(fresh, 5, flags));
            fill(0.75f);
            fresh.applyMarked();
            if (way == builder || way == editor) {
                ASSERT_TRUE(fresh.selectScene(5));
            }
            if (way == stored) fresh.store(0, global::currentScene, sceneValue(5));
            if (way == owner) fresh.set(0, global::currentScene, sceneValue(5));
            fresh.applyMarked();
            EXPECT_EQ(fresh.scenes().current(), 5);
            EXPECT_EQ(fresh.get(0, global::currentScene), sceneValue(5));
            for (int i = 0; i < globalParameters; ++i) {
                if (i == global::currentScene) continue;
                const bool isKnob = std::find(std::begin(global::knobs), std::end(global::knobs),
                                              i) != std::end(global::knobs);
                const bool isArpeggiator =
                    (i >= 17 && i <= 36 && !isKept(i)) || i >= global::firstStep;
                const bool recalled =
                    (isKnob && (flags & 1) != 0) || (isArpeggiator && (flags & 2) != 0);
                EXPECT_EQ(fresh.get(0, i), recalled ? 0.25f : 0.75f) << way << flags << ' ' << i;
            }
            EXPECT_EQ(fresh.arpeggiator().values[ArpeggiatorSettings::swing],
                      (flags & 2) != 0 ? 0.25f : 0.75f);
            EXPECT_EQ(fresh.controls().knobs[3], (flags & 1) != 0 ? 0.25f : 0.75f);
            EXPECT_EQ(fresh.lastChanged() == global::currentScene, way == stored || way == owner);
        }
    }
}

TEST_F(Scenes, AreStoredWithThePatchsPhraseInARecordOfItsSize) {
    setAll(0.4f);
    ASSERT_TRUE(storeScene(patch, 2, 3));
    const Scene& bare = *patch.scenes().at(2);
    EXPECT_EQ(bare.name, "-");
    EXPECT_EQ(bare.phrase.lengthBeats, 4.0f);
    EXPECT_EQ(sceneRecordBytes(bare), 528u);
    EXPECT_EQ(bare.arpeggiator[19], 0.4f);
    EXPECT_EQ(bare.steps[79], 0.4f);

    for (const std::uint32_t size : {0u, 900u}) {  // fresh, and as read from somewhere
        Scene own = *makeScene(2);
        own.storedBytes = size;
        patch.putScene(0, std::make_shared<const Scene>(own));
        ASSERT_TRUE(storeScene(patch, 63, 0));
        EXPECT_EQ(patch.scenes().at(63)->name, "Song");
        EXPECT_EQ(patch.scenes().at(63)->phrase, own.phrase);
        EXPECT_EQ(sceneRecordBytes(*patch.scenes().at(63)), size == 0 ? 504u + 3 * 24 : size);
    }
    EXPECT_EQ(patch.scenes().highest(), 63);
    const std::uint32_t changes = patch.changes();
    for (const int slot : {-1, 0, 64, 100}) EXPECT_FALSE(storeScene(patch, slot, 3)) << slot;
    for (const int slot : {-1, 1, 64}) EXPECT_FALSE(patch.selectScene(slot)) << slot;
    patch.store(0, global::currentScene, 1.0f);
    EXPECT_EQ(patch.scenes().current(), 0);
    EXPECT_EQ(patch.changes(), changes + 1);
}

TEST_F(Scenes, HandTheirPhraseOverUnlessTheyHaveNone) {
    patch.handOver();
    patch.putScene(3, makeScene(1));
    patch.putScene(4, makeScene(0, 3, 0.1f));
    render();
    EXPECT_EQ(patch.phrase(), nullptr);  // nothing was selected
    patch.takePhrase(makeScene(2));
    render();
    EXPECT_EQ(patch.phrase(), phraseOf(0));
    patch.selectScene(3);
    EXPECT_EQ(patch.phrase(), phraseOf(0));  // not before the render
    render();
    EXPECT_EQ(patch.phrase(), phraseOf(3));
    patch.set(0, global::currentScene, sceneValue(4));
    EXPECT_EQ(patch.get(0, global::knob1), 0.1f);
    EXPECT_EQ(patch.phrase(), phraseOf(3));  // scene 4 has none
    // The scene that is played is replaced though another one is the current: its successor comes.
    std::weak_ptr<const Scene> former;
    {
        const Record played = makeScene(3);
        former = played;
        patch.putScene(3, played);
    }
    render();
    EXPECT_EQ(patch.phrase(), phraseOf(3));
    patch.putScene(3, makeScene(4));
    EXPECT_FALSE(former.expired());
    EXPECT_EQ(patch.phrase(), phraseOf(3));
    render();
    for (int i = 0; i < 20; ++i) shared.retired.tick(shared.epoch);
    EXPECT_TRUE(former.expired());
    EXPECT_EQ(patch.phrase()->events.size(), 4u);
    patch.takePhrase(makeScene(0));  // the patch's own counts even without events
    render();
    EXPECT_EQ(patch.phrase(), nullptr);
    EXPECT_EQ(patch.get(0, global::currentScene), 0.0f);
}

TEST_F(Scenes, StoringTheCurrentOneSelectsItAgain) {
    patch.handOver();
    patch.takePhrase(makeScene(1));
    storeScene(patch, 3, 3);
    patch.selectScene(3);
    patch.putScene(0, makeScene(2));
    storeScene(patch, 3, 3);
    render();
    EXPECT_EQ(patch.phrase(), phraseOf(3));
    EXPECT_EQ(patch.phrase()->events.size(), 2u);
    EXPECT_EQ(patch.scenes().current(), 3);
}

// One thread replaces and chooses scenes while the other plays their phrases and chooses as well.
TEST_F(Scenes, AreReplacedWhileTheyPlay) {
    patch.handOver();
    for (int slot = 0; slot < 4; ++slot) patch.putScene(slot, makeScene(slot, 3));
    std::atomic<bool> done{false};
    std::size_t played = 0;
    std::thread audio{[&] {
        for (int i = 0; !done; ++i) {
            const RenderEpoch::Stay stay{shared.epoch};
            patch.applyMarked();
            if (i % 5 == 0) patch.set(0, global::currentScene, sceneValue(i % 7));
            if (const Phrase* phrase = patch.phrase())
                for (const PhraseEvent& event : phrase->events) played += event.data1;
        }
    }};
    for (int i = 0; i < 3000; ++i) {
        const int slot = i % 4;
        patch.putScene(slot, makeScene(1 + i % 3, static_cast<std::uint32_t>(i % 4), 0.5f));
        if (i % 3 == 0) patch.selectScene((i / 3) % 4);
        if (i % 5 == 0) storeScene(patch, 1 + slot, 3);
        shared.retired.tick(shared.epoch);
    }
    done = true;
    audio.join();
    EXPECT_EQ(played % 60, 0u);  // every event was whole
    patch.selectScene(2);
    render();
    EXPECT_EQ(patch.phrase(), phraseOf(2));
}

TEST(Phrases, ComeFromTheLibraryByBankAndProg) {
    const TemporaryFolder folder;
    const auto put = [&](const std::string& bank, const std::string& file, Record scene) {
        const std::string path = folder / ("Phrases/" + bank);
        std::filesystem::create_directories(path);
        const Bytes bytes = writeSceneRecord(*scene);
        folder.put("Phrases/" + bank + "/" + file,
                   std::string{reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    };
    std::filesystem::create_directories(folder / "Patches/001 Any");
    put("000 First", "000 None.phr", makeScene(9));
    put("005 Five", "003 Three.phr", makeScene(3));
    put("010 Ten", "127 Last.phr", makeScene(2));
    put("010 Ten", "001 Empty.phr", makeScene(0));
    folder.put("Phrases/005 Five/004 Broken.phr", "not a phrase");
    Trace trace;
    ContentLibrary library{trace};
    ASSERT_TRUE(library.open(folder / ""));

    EngineShared shared;
    const auto number = [](int n) { return (static_cast<float>(n) + 0.5f) / 128.9f; };
    const struct {
        int bank, item;
        std::size_t notes;
        bool passThrough;
    } cases[] = {{5, 3, 3, false}, {10, 127, 2, true}, {0, 0, 1, false},
                 {5, 4, 1, false}, {5, 5, 1, false},   {128, 128, 1, false}};
    for (const bool live : {false, true})
        for (const auto& c : cases) {
            Patch patch{shared};
            patch.setPlace({.library = &library});
            patch.takePhrase(makeScene(1));
            patch.putScene(7, makeScene(5));
            patch.selectScene(7);
            if (live) patch.handOver();
            patch.store(0, global::phraseBank, number(c.bank));
            patch.set(0, global::phraseProgram, number(c.item));
            patch.applyMarked();
            const Scene& own = *patch.scenes().at(0);
            if (live) {
                EXPECT_EQ(own.phrase.events.size(), 1u);  // no file is read by whoever plays
            }
            patch.applyLoading();
            patch.applyMarked();
            const Scene& loaded = *patch.scenes().at(0);
            EXPECT_EQ(loaded.phrase.events.size(), c.notes) << c.bank << ' ' << c.item;
            EXPECT_EQ(loaded.phrase.passThrough, c.passThrough);
            const bool found = c.notes > 1;
            EXPECT_EQ(patch.scenes().current(), found ? 0 : 7);
            EXPECT_EQ(patch.phrase(), &patch.scenes().at(found ? 0 : 7)->phrase);
        }
    // The library's own stays as it is, and nothing passes through a phrase that has no event.
    EXPECT_FALSE(
        readSceneRecord(*library.itemData(ContentKind::phrases, 10, 127))->phrase.passThrough);
    Patch patch{shared};
    patch.setPlace({.library = &library});
    patch.store(0, global::phraseBank, number(10));
    patch.store(0, global::phraseProgram, number(1));
    EXPECT_FALSE(patch.scenes().at(0)->phrase.passThrough);
    EXPECT_EQ(patch.phrase(), nullptr);
}

}  // namespace
}  // namespace stratovane
