// What a user does with the whole instrument, through its editor.

#include <gtest/gtest.h>

#include <filesystem>

#include "automation/host_rows.h"
#include "editor/combi_commands.h"
#include "editor/content_chooser.h"
#include "editor/element_commands.h"
#include "editor/file_commands.h"
#include "editor/keyboard_commands.h"
#include "editor/learn_commands.h"
#include "editor/parameter_commands.h"
#include "editor/part_commands.h"
#include "editor/settings_commands.h"
#include "host/synth_plugin.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "support/temporary_folder.h"
#include "support/user.h"

namespace stratovane {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

struct InstrumentCommands : testing::Test {
    static inline Texts echoed;              // what the plug-in sent to the host's other side
    static inline std::vector<int> changes;  // parameters that the host was to record

    User user;
    TemporaryFolder folder;
    const std::string settingsPath = folder / "settings.ini";
    ScopedEnvironment variable{"STRATOVANE_SETTINGS", settingsPath.c_str()};
    std::unique_ptr<SynthPlugin> plugin;

    static std::intptr_t host(EffectRecord*, std::int32_t opcode, std::int32_t index, std::intptr_t,
                              void* pointer, float) {
        const auto request = static_cast<HostRequest>(opcode);
        if (request == HostRequest::automate) changes.push_back(index);
        if (request == HostRequest::sendEvents) {
            const auto* list = static_cast<const EventList*>(pointer);
            for (std::int32_t i = 0; i < list->count; ++i) {
                const auto* event = reinterpret_cast<const MidiEvent*>(list->events[i]);
                char text[16];
                TextOut out{text};
                out.print("%02X %d %d", event->bytes[0], event->bytes[1], event->bytes[2]);
                echoed.emplace_back(out.view());
            }
        }
        return request == HostRequest::version ? 2300 : 0;
    }

    void SetUp() override {
        folder.put("settings.ini", "[Software\\Taldrimor\\Stratovane 2]\nContent Location=" +
                                       (folder / "Content/") + "\nVel Sens=0\n");
        start();
    }
    void start() {
        plugin = nullptr;
        plugin = std::make_unique<SynthPlugin>(&host);
        ask(Opcode::setBlockSize, 0, 256);
        ask(Opcode::mainsChanged, 0, 1);
        echoed.clear();
        changes.clear();
    }
    std::intptr_t ask(Opcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                      void* pointer = nullptr) {
        return plugin->record()->request(plugin->record(), static_cast<std::int32_t>(opcode), index,
                                         value, pointer, 0);
    }
    /// A library with one bank for the user's patches.
    void makeLibrary() {
        fs::create_directories(folder / "Content/Patches/100 Mine");
        fs::create_directories(folder / "Content/Patches/121 Combis");
        start();
    }
    float render(int blocks = 1) {
        float samples[2][256] = {}, *outputs[32] = {samples[0], samples[1]};
        for (; blocks > 0; --blocks)
            plugin->record()->processReplacing(plugin->record(), nullptr, outputs, 256);
        float peak = 0;
        for (const float x : samples[0]) peak = std::max(peak, std::abs(x));
        return peak;
    }
    void send(int status, int data1, int data2) {
        MidiEvent event;
        event.bytes[0] = static_cast<std::uint8_t>(status);
        event.bytes[1] = static_cast<std::uint8_t>(data1);
        event.bytes[2] = static_cast<std::uint8_t>(data2);
        EventList list;
        list.count = 1;
        list.events[0] = &event.head;
        ask(Opcode::processEvents, 0, 0, &list);
    }
    std::string stored(const std::string& name) const {
        const std::string all = folder.get("settings.ini");
        const auto at = all.find("\n" + name + "=");
        if (at == all.npos) return "";
        const auto from = at + name.size() + 2;
        return all.substr(from, all.find('\n', from) - from);
    }
    float hostValue(int part, int row) { return plugin->getParameter(part * partRows + row); }
    Editor& editor() { return plugin->editor(); }
    /// A part's patch gets a name that tells it from others.
    void makePatch(int part) {
        editor().elements()->copy(0, 1);
        editor().elements()->paste(part, 1, ElementCommands::Paste::insert);
    }
};

TEST_F(InstrumentCommands, SettingsActAtOnceAndAreStored) {
    SettingsCommands& settings = *editor().settings();
    settings.setVelocitySensitivity(0.75f);
    settings.setTouchSensitivity(7.0f);
    settings.setMidiPatches(false);
    settings.setMidiCombis(CombiUse::chain);
    settings.setInspector(1);
    settings.setOneBasedNumbers(true);
    settings.setCombiNextController(20);
    settings.setCombiPreviousController(999);
    settings.setMeterMode(2);
    settings.setMemoryUse(1.0f);
    settings.setMasterVolume(0.75f);
    settings.setLift(0.0f);
    settings.setCombiPreload(2);
    constexpr std::pair<const char*, const char*> kept[] = {
        {"Vel Sens", "50"},
        {"Touch Sens", "100"},
        {"MIDI Patches", "OFF"},
        {"MIDI Combis", "Chain"},
        {"Inspector", "1"},
        {"MIDI Numbering", "1-128"},
        {"CombiNextCC", "20"},
        {"CombiPrevCC", "127"},
        {"Meter Mode", "2"},
        {"Memory Use", "XXL"},
        {"Lift", "0"},
        {"Master Vol", "+1.0 dB"},
        {"Combi Preload Mode", "Full"},
    };
    for (const auto& [name, text] : kept) EXPECT_EQ(stored(name), text) << name;
    EXPECT_FLOAT_EQ(plugin->getParameter(0), 0.75f);
    EXPECT_EQ(changes, std::vector<int>{0});
    EXPECT_EQ(editor().combis()->label(6), "007 Empty slot");
    // Outputs are stored as well, but this instance keeps those it has.
    settings.setOutput(3, 0);
    settings.setOutput(0, 'Q');
    EXPECT_EQ(stored("Outputs"), "QQS");
    OutputProperties properties{};
    EXPECT_EQ(ask(Opcode::getOutputProperties, 7, 0, &properties), 1);
    EXPECT_STREQ(properties.label, "Strato 4");
    start();
    EXPECT_EQ(plugin->record()->outputCount, 6);
    EXPECT_NEAR(plugin->getParameter(0), 0.75f, 1e-2f);
}

TEST_F(InstrumentCommands, AsksTwiceForTheContent) {
    ContentChooser& content = *editor().content();
    fs::create_directories(folder / "Elsewhere/Patches/100 Mine");
    EXPECT_TRUE(content.asks());
    EXPECT_FALSE(content.choose(folder / "Nowhere"));
    EXPECT_TRUE(content.asks());
    EXPECT_FALSE(content.choose(""));
    EXPECT_FALSE(content.asks());
    EXPECT_EQ(stored("Content Location"), folder / "Content/");
    content.startOver();
    EXPECT_TRUE(content.choose(folder / "Elsewhere/Patches/"));  // one folder too deep
    EXPECT_FALSE(content.asks());
    EXPECT_EQ(stored("Content Location"), folder / "Elsewhere/");
}

TEST_F(InstrumentCommands, SavesPatchesAndCombisAndChainsThem) {
    makeLibrary();
    FileCommands& files = *editor().files();
    makePatch(2);
    EXPECT_EQ(files.saveToLibrary(2, 100), 100 << 8);
    EXPECT_TRUE(fs::exists(folder / "Content/Patches/100 Mine/000 Init Patch.fxp"));
    EXPECT_EQ(user.takeSaid(), Texts{});
    user.willAnswer({1});
    EXPECT_EQ(files.saveToLibrary(2, 100), 100 << 8);
    EXPECT_EQ(user.takeSaid(), Texts{"Overwrite Init Patch in Mine?"});
    EXPECT_EQ(files.saveToLibrary(2, 100), (100 << 8) + 1);  // no: beside it
    user.takeSaid();
    EXPECT_EQ(files.saveToLibrary(5, 100), -1);  // empty

    const std::int32_t combi = files.saveToLibrary(-1, 0);
    EXPECT_EQ(combi, 121 << 8);
    CombiCommands& combis = *editor().combis();
    combis.set(4, combi);
    combis.move(4, 5);
    EXPECT_EQ(combis.label(5), "005 Stratovane 2");
    ASSERT_TRUE(combis.write(folder / "Song.s2c"));
    combis.clear(5);
    EXPECT_FALSE(combis.read(folder / "Song.fxb.s2c"));
    EXPECT_EQ(user.takeSaid(), Texts{(folder / "Song.fxb.s2c") + " is not a combi chain"});
    ASSERT_TRUE(combis.read(folder / "Song.s2c"));

    PartCommands& parts = *editor().parts();
    EXPECT_TRUE(parts.move(2, 9));
    EXPECT_EQ(hostValue(2, strip::level), 0.0f);
    EXPECT_EQ(hostValue(9, strip::level), 0.5f);
    EXPECT_FALSE(parts.copy(9, 16));
    combis.select(5);
    EXPECT_EQ(hostValue(2, strip::level), 0.5f);
    EXPECT_EQ(parts.load(9, 100 << 8), 100 << 8);
    EXPECT_EQ(parts.load(9, -1), (100 << 8) + 1);  // the next one
    EXPECT_EQ(parts.load(16, 100 << 8), 0);

    ASSERT_TRUE(files.writePreset(9, folder / "One.fxp"));
    ASSERT_TRUE(files.writeBank(folder / "All.fxb"));
    parts.resetGeneralMidi();
    EXPECT_EQ(hostValue(9, strip::level), 0.0f);
    EXPECT_FALSE(files.writePreset(9, folder / "None.fxp"));
    EXPECT_TRUE(files.read(1, folder / "One.fxp"));
    EXPECT_EQ(hostValue(1, strip::level), 0.5f);
    EXPECT_TRUE(files.read(1, folder / "All.fxb"));
    EXPECT_EQ(hostValue(9, strip::level), 0.5f);
    for (const int part : {-1, 16}) EXPECT_FALSE(files.read(part, folder / "One.fxp"));
    EXPECT_EQ(user.takeSaid(), Texts{});
}

TEST_F(InstrumentCommands, ControlsTellTheHostAndLearn) {
    ParameterCommands& parameters = *editor().parameters();
    parameters.set(0, 0, global::pan, 0.25f);
    parameters.set(0, 0, 23, 0.6f);  // arpeggio rate, of which the host has the upper part
    parameters.set(16, 66, elementIndex::pan, 0.125f);
    parameters.set(0, 1, 42, 0.75f);  // no parameter of the host's
    parameters.set(99, 300, -1, 1.0f);
    EXPECT_EQ(hostValue(0, strip::pan), 0.25f);
    EXPECT_NEAR(hostValue(0, strip::arpeggiatorRate), 0.5f, 1e-6f);
    EXPECT_EQ(plugin->getParameter(masterFirst + 24 + 19), 0.125f);
    EXPECT_EQ(changes, (std::vector<int>{strip::pan, masterFirst + 24 + 19}));

    LearnCommands& learning = *editor().learning();
    const LearnTarget pan{0, 0, global::pan}, level{0, 0, global::level};
    EXPECT_FALSE(learning.open({0, 0, -1}));
    EXPECT_FALSE(learning.open({0, 65, elementIndex::pan}));  // no effect there
    learning.assign(pan, 20);
    auto menu = learning.open(pan);
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->controllers.size(), 128u);
    EXPECT_EQ(menu->controllers[0].text, "-G000. Bank MSB");
    EXPECT_FALSE(menu->controllers[0].offered);
    EXPECT_EQ(menu->controllers[20].text.rfind("020. ", 0), 0u);
    EXPECT_GT(menu->controllers[20].text.size(), 5u);
    EXPECT_TRUE(menu->controllers[20].offered && menu->offersForget);
    send(0xB0, 20, 127);
    render();
    EXPECT_EQ(hostValue(0, strip::pan), 1.0f);
    learning.learn(level);
    send(0xB0, 21, 0);
    render();
    send(0xB0, 21, 127);
    render();
    EXPECT_EQ(hostValue(0, strip::level), 1.0f);
    for (int i = 0; i < 3; ++i) learning.forget(level);
    EXPECT_EQ(learning.open(level).value().title, "CC");
    send(0xB0, 21, 0);
    render();
    EXPECT_EQ(hostValue(0, strip::level), 1.0f);
}

TEST_F(InstrumentCommands, TheKeyboardPlaysAndPanics) {
    plugin->setParameter(partRows + strip::link, 1.0f);
    KeyboardCommands& keyboard = *editor().keyboard();
    keyboard.note(0, 60, 100);
    keyboard.pitchWheel(0, 64);
    keyboard.modulationWheel(0, 3);
    keyboard.note(0, 128, 100);
    keyboard.note(16, 60, 100);
    keyboard.controller(0, 7, -1);
    EXPECT_GT(render(), 0.0f);
    EXPECT_EQ(echoed, (Texts{"90 60 100", "E0 127 64", "B0 1 3"}));
    keyboard.panic();
    render(200);
    EXPECT_EQ(render(), 0.0f);
    EXPECT_EQ(echoed.size(), 3u + 16u);
    keyboard.note(0, 60, 100);
    EXPECT_GT(render(), 0.0f);
}

TEST(EditorAlone, WorksWithoutAnInstrument) {
    Editor editor;
    EXPECT_EQ(editor.elements(), nullptr);
    EXPECT_EQ(editor.settings(), nullptr);
    EXPECT_FALSE(editor.open(nullptr));
    EXPECT_FALSE(editor.keyDown(1, 2, 3));
    editor.parameterChanged(5);
    EXPECT_EQ(editor.lastParameter(), 5);
}

}  // namespace
}  // namespace stratovane
