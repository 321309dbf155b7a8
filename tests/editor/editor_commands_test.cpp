#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "automation/host_parameters.h"
#include "editor/effect_commands.h"
#include "editor/element_commands.h"
#include "editor/scene_commands.h"
#include "effects/catalogue.h"
#include "engine/command_ring.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "engine/transport.h"
#include "patch/editing/element_file.h"
#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "patch/scene_table.h"
#include "platform/settings_store.h"
#include "settings/settings.h"
#include "support/temporary_folder.h"

namespace stratovane {
namespace {

constexpr int master = 16;
using Paste = ElementCommands::Paste;

struct EditorCommands : testing::Test {
    static inline std::vector<std::string> lines;
    EngineShared shared;
    Trace trace{[](const char* line) { lines.emplace_back(line); }};
    Settings settings;
    MultiSetup multi;
    CommandRing ring;
    HostParameters parameters{shared, multi, ring};
    std::unique_ptr<Engine> engine = std::make_unique<Engine>(shared, trace, 2);
    SettingsStore store;
    EditorAccess access{engine, parameters, multi, settings, store, ring, trace};
    ElementCommands elements{access};
    EffectCommands effects{access};
    SceneCommands scenes{access};
    Transport transport;
    PartEventLists events;

    void SetUp() override {
        lines.clear();
        trace.setMask(32);
        shared.masterGain = 0.5f;
        engine->setSampleRate(44100, 256);
        parameters.attach(*engine);
    }
    Patch& patch(int part = 0) { return engine->patch(part); }
    float render() {
        std::vector<float> samples(4 * 256);
        float* outputs[4];
        for (std::size_t i = 0; i < 4; ++i) outputs[i] = samples.data() + 256 * i;
        engine->render({&events, outputs, 256, true}, transport);
        for (auto& list : events) list.clear();
        float peak = 0;
        for (const float x : samples) peak = std::max(peak, std::abs(x));
        return peak;
    }
    void note(std::uint8_t velocity) {
        events[0].append({0, static_cast<std::uint8_t>(velocity ? 0x90 : 0x80), 60, velocity, 0});
    }
    /// Part 1 gets elements after its first one.
    void grow(int count) {
        ASSERT_TRUE(elements.copy(0, 1));
        while (patch().elementCount() < count)
            ASSERT_TRUE(elements.paste(0, patch().elementCount() + 1, Paste::insert));
        for (int number = 1; number <= count; ++number)
            patch().setText(number, std::string{"E"}.append(std::to_string(number)));
    }
    std::string order() {
        std::string text;
        for (int number = 1; number <= patch().elementCount(); ++number)
            text += std::string{patch().text(number)} + ' ';
        return text;
    }
};

TEST_F(EditorCommands, MoveElementsAndTellSo) {
    grow(3);
    elements.copy(0, 3);
    lines.clear();
    const std::uint32_t refresh = multi.refresh.get();
    const Patch* before = &patch();
    EXPECT_TRUE(elements.paste(0, 1, Paste::insert));
    EXPECT_NE(&patch(), before);  // what sounds keeps its elements
    EXPECT_EQ(order(), "E3 E1 E2 E3 ");
    before = &patch();
    EXPECT_TRUE(elements.paste(0, 2, Paste::over));
    EXPECT_EQ(&patch(), before);
    EXPECT_EQ(order(), "E3 E3 E2 E3 ");
    EXPECT_TRUE(elements.remove(0, 2));
    EXPECT_EQ(order(), "E3 E2 E3 ");
    EXPECT_TRUE(elements.init(0, 3, 4));
    EXPECT_EQ(order(), "E3 E2 FM ");
    EXPECT_EQ(multi.refresh.get(), refresh + 4);
    EXPECT_TRUE(multi.dirty);
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "SV2 insert patch 0 element 1\n", "SV2 paste patch 0 element 2\n",
                         "SV2 delete patch 0 element 2\n", "SV2 init patch 0 element 3\n"}));
    while (patch().elementCount() > 0) EXPECT_TRUE(elements.remove(0, 1));
    EXPECT_FALSE(elements.remove(0, 1));
    // An empty part begins anew; 63 elements are the most.
    EXPECT_TRUE(elements.paste(5, 1, Paste::insert));
    EXPECT_EQ(patch(5).name(), "Init Patch");
    EXPECT_EQ(patch(5).get(0, global::level), 0.5f);
    while (patch(5).elementCount() < 63) ASSERT_TRUE(elements.paste(5, 1, Paste::insert));
    EXPECT_FALSE(elements.paste(5, 1, Paste::insert));
    EXPECT_FALSE(elements.paste(5, 64, Paste::insert));
}

TEST_F(EditorCommands, NumbersOutOfRangeDoNothing) {
    grow(2);
    elements.copy(0, 1);
    const std::uint32_t changes = patch().changes(), masterChanges = engine->master().changes();
    const std::uint32_t refresh = multi.refresh.get();
    const Patch* before = &patch();
    for (const int element : {-1, 3, 64, 69, 300}) {
        EXPECT_FALSE(elements.copy(0, element)) << element;
        EXPECT_FALSE(elements.paste(0, element, Paste::over)) << element;
        EXPECT_FALSE(elements.remove(0, element)) << element;
        EXPECT_FALSE(elements.init(0, element, 5)) << element;
        EXPECT_FALSE(effects.loadPreset(0, element, 9)) << element;
        EXPECT_FALSE(effects.load(0, element, "x", EffectCommands::Name::fullPath)) << element;
        EXPECT_FALSE(effects.save(0, element, "x")) << element;
    }
    for (const int element : {-1, 4, 64, 69})
        EXPECT_FALSE(elements.paste(0, element, Paste::insert)) << element;
    EXPECT_TRUE(elements.paste(0, 0, Paste::insert));  // the arpeggiator's steps
    for (const int type : {-1, 6, 100}) EXPECT_FALSE(elements.init(0, 1, type)) << type;
    EXPECT_FALSE(elements.init(0, 65, 5));
    EXPECT_FALSE(elements.remove(0, 65));
    for (const int part : {-1, master, 99}) {
        for (const int element : {0, 1, 64, 65})  // a sound fits no send slot
            EXPECT_FALSE(elements.paste(part, element, Paste::over)) << part << ' ' << element;
        EXPECT_FALSE(elements.remove(part, 1));
        EXPECT_FALSE(scenes.store(part, 1, 3));
        EXPECT_FALSE(scenes.select(part, 0));
        EXPECT_FALSE(scenes.importPhrase(part, "x"));
    }
    EXPECT_EQ(&patch(), before);
    EXPECT_EQ(engine->master().changes(), masterChanges);
    EXPECT_EQ(patch().changes(), changes + 80);
    EXPECT_EQ(multi.refresh.get(), refresh + 1);

    std::unique_ptr<Engine> none;
    const EditorAccess early{none, parameters, multi, settings, store, ring, trace};
    EXPECT_FALSE(ElementCommands{early}.copy(0, 0));
    EXPECT_FALSE(ElementCommands{early}.paste(0, 1, Paste::insert));
    EXPECT_FALSE(ElementCommands{early}.remove(0, 1));
    EXPECT_FALSE(EffectCommands{early}.loadPreset(master, 65, 9));
    EXPECT_FALSE(SceneCommands{early}.select(0, 1));
}

TEST_F(EditorCommands, ASoundingVoiceKeepsItsElement) {
    note(100);
    const float sound = render();
    EXPECT_GT(sound, 0.0f);
    ASSERT_TRUE(elements.remove(0, 1));
    EXPECT_EQ(patch().elementCount(), 0);
    for (int i = 0; i < 4; ++i) EXPECT_GT(render(), 0.2f * sound);
    note(0);
    for (int i = 0; i < 400; ++i) render();
    EXPECT_EQ(render(), 0.0f);
    note(100);
    EXPECT_EQ(render(), 0.0f);
}

TEST_F(EditorCommands, EffectsGoIntoElementsAndMasterSlots) {
    const TemporaryFolder content;
    settings.contentLocation = content / "";
    settings.contentLocation.pop_back();  // with or without the separator
    std::filesystem::create_directories(content / "Effects");
    ASSERT_TRUE(effects.loadPreset(master, 65, 9));
    EXPECT_EQ(engine->master().text(65), "Delay");
    const int type = effectPreset(9).type;
    ASSERT_TRUE(effects.save(master, 65, content / "Effects/Echo.fxp"));
    ASSERT_TRUE(effects.load(0, 1, "Echo.fxp", EffectCommands::Name::inContent));
    ASSERT_TRUE(effects.load(0, 66, content / "Effects/Echo.fxp", EffectCommands::Name::fullPath));
    render();
    for (const int element : {1, 66}) {
        EXPECT_EQ(patch().text(element), "Echo");
        EXPECT_EQ(patch().element(element).controls().effect.type, type);
        EXPECT_NE(patch().element(element).unit(), nullptr);
    }
    // The host sees what came into the slots.
    const auto hostType = [&](HostBlock block, int slot) {
        for (int row = 0; row < effectRows; ++row)
            if (hostRow({block, 0, slot, row}).target == elementIndex::firstEffectParameter + 1)
                return parameters.stored(encodeHostIndex({block, 0, slot, row}));
        return -1.0f;
    };
    EXPECT_EQ(hostType(HostBlock::insert, 1), 1.0f);
    EXPECT_EQ(hostType(HostBlock::master, 0), 1.0f);
    // By the clipboard from slot to slot.
    elements.copy(master, 65);
    EXPECT_TRUE(elements.paste(master, 68, Paste::insert));
    EXPECT_EQ(engine->master().text(68), "Delay");
    EXPECT_TRUE(elements.paste(0, 67, Paste::insert));
    EXPECT_EQ(patch().text(67), "Delay");
    EXPECT_EQ(patch().elementCount(), 1);
    EXPECT_FALSE(effects.load(0, 66, "Missing.fxp", EffectCommands::Name::inContent));
    EXPECT_EQ(patch().text(66), "");
}

TEST_F(EditorCommands, ScenesAndPhrasesOfAPart) {
    const TemporaryFolder folder;
    using namespace std::string_literals;
    const std::string head = "MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0"s;
    folder.put("Riff.mid", head + "\x0C\0\x90\x3C\x64\x60\x80\x3C\0\0\xFF\x2F\0"s);
    folder.put("Empty.mid", head + "\x04\0\xFF\x2F\0"s);
    const std::uint32_t changes = patch().changes();
    for (const char* name : {"Empty.mid", "Missing.mid", ""})
        EXPECT_FALSE(scenes.importPhrase(0, folder / name)) << name;
    EXPECT_EQ(patch().changes(), changes);
    EXPECT_EQ(patch().scenes().at(0), nullptr);

    ASSERT_TRUE(scenes.importPhrase(0, folder / "Riff.mid"));
    render();
    ASSERT_NE(patch().phrase(), nullptr);
    EXPECT_EQ(patch().phrase()->events.size(), 1u);
    EXPECT_EQ(patch().scenes().at(0)->name, "Riff");
    patch().store(0, global::knob1, 0.2f);
    EXPECT_TRUE(scenes.store(0, 63, 1));
    EXPECT_FALSE(scenes.store(0, 0, 1));
    EXPECT_FALSE(scenes.store(0, 64, 1));
    patch().store(0, global::knob1, 0.8f);
    EXPECT_FALSE(scenes.select(0, 5));
    EXPECT_TRUE(scenes.select(0, 63));
    EXPECT_EQ(patch().get(0, global::knob1), 0.2f);
    EXPECT_EQ(multi.part[0].knobs[0], 0.2f);
    render();
    EXPECT_EQ(patch().phrase(), &patch().scenes().at(63)->phrase);
    EXPECT_EQ(patch().controls().knobs[0], 0.2f);
    // They come along when elements move.
    elements.copy(0, 1);
    elements.paste(0, 1, Paste::insert);
    render();
    EXPECT_EQ(patch().scenes().current(), 63);
    EXPECT_EQ(patch().phrase(), &patch().scenes().at(63)->phrase);
}

}  // namespace
}  // namespace stratovane
