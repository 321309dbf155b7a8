// Everything a user and a host do at once: one thread plays without pause, the other loads, saves,
// edits and asks. Run under the sanitizers; STRATOVANE_OPERATIONS makes it longer.

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

#include "automation/host_rows.h"
#include "editor/combi_commands.h"
#include "editor/effect_commands.h"
#include "editor/element_commands.h"
#include "editor/file_commands.h"
#include "editor/keyboard_commands.h"
#include "editor/learn_commands.h"
#include "editor/parameter_commands.h"
#include "editor/part_commands.h"
#include "editor/scene_commands.h"
#include "editor/settings_commands.h"
#include "host/arpeggiator_request.h"
#include "host/host_support.h"
#include "host/synth_plugin.h"
#include "patch/patch.h"
#include "platform/platform.h"
#include "support/temporary_folder.h"

namespace stratovane {
namespace {

class Dice {
  public:
    explicit Dice(unsigned seed) : random_{seed} {}
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    float unit() { return static_cast<float>(below(1001)) / 1000.0f; }
    bool once(int in) { return below(in) == 0; }

  private:
    std::mt19937 random_;
};

/// The plug-in in a host whose musical time the playing thread moves.
struct TwoThreads : testing::Test {
    static inline TimeInfo time;  // audio thread
    static std::intptr_t callback(EffectRecord*, std::int32_t opcode, std::int32_t, std::intptr_t,
                                  void*, float) {
        if (opcode == static_cast<std::int32_t>(HostRequest::version)) return 2300;
        return opcode == static_cast<std::int32_t>(HostRequest::getTime)
                   ? reinterpret_cast<std::intptr_t>(&time)
                   : 0;
    }

    TemporaryFolder folder;
    const std::string settingsPath = folder / "settings.ini";
    ScopedEnvironment variable{"STRATOVANE_SETTINGS", settingsPath.c_str()};
    std::unique_ptr<SynthPlugin> plugin;
    EffectRecord* record = nullptr;

    std::intptr_t ask(Opcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                      void* pointer = nullptr, float number = 0) const {
        return record->request(record, static_cast<std::int32_t>(opcode), index, value, pointer,
                               number);
    }
    Editor& editor() const { return plugin->editor(); }
    void start() {
        plugin = nullptr;
        plugin = std::make_unique<SynthPlugin>(&callback);
        record = plugin->record();
        ask(Opcode::mainsChanged, 0, 1);
        ask(Opcode::idle);
    }
    void SetUp() override;
    void TearDown() override { setMessageBoxHook(nullptr); }
    void operate(Dice& dice);
    static constexpr int largest = 256;  // block
    void play(Dice& dice);
    void render(int frames);
    void edit(Dice& dice, int part);
    void setUp(Dice& dice, int part);
    void set(int part, int row, float value) const {
        plugin->setParameter(part * partRows + row, value);
    }

    std::vector<std::uint8_t> bank, preset;  // what getChunk gave last
    float peak = 0;                          // of all that was played
    bool finite = true;
};

constexpr int arpeggiatorMode = strip::arpeggiatorOn + 2;

/// A library of a patch of each element type, some with arpeggios and phrases, and of combis.
void TwoThreads::SetUp() {
    setMessageBoxHook([](const char*, int question) { return question; });
    namespace fs = std::filesystem;
    for (const char* name : {"005 Mine", "078 Sounds", "079 Kits", "100 User", "121 Combis"})
        fs::create_directories(folder / ("Content/Patches/" + std::string{name}));
    fs::create_directories(folder / "Content/Effects");
    using namespace std::string_literals;
    folder.put("Riff.mid",
               "MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\x15"
               "\0\x90\x3C\x64\x30\x80\x3C\0\0\x90\x40\x60\x30\x80\x40\0\0\xFF\x2F\0\0"s);
    folder.put("settings.ini",
               "[Software\\Taldrimor\\Stratovane 2]\nDebug=0\nVel Sens=0\n"
               "CombiNextCC=30\nContent Location=" +
                   (folder / "Content/") + "\n");
    start();
    for (int part = 0; part < 6; ++part) {
        if (part > 0) editor().parts()->copy(0, part);
        editor().elements()->init(part, 1, part);
        set(part, strip::arpeggiatorOn, static_cast<float>(part % 2));
        set(part, arpeggiatorMode, static_cast<float>(part) / 6.0f);
        if (part > 3) editor().scenes()->importPhrase(part, folder / "Riff.mid");
        editor().scenes()->store(part, 1 + part, 3);
        for (const char* name : {"005 Mine/00", "078 Sounds/00", "079 Kits/00"})
            editor().files()->writePreset(
                part, folder / ("Content/Patches/" + (name + std::to_string(part)) + " P.fxp"));
        if (part % 2 == 1) editor().files()->saveToLibrary(-1, 121);
    }
    start();
    for (int slot = 0; slot < 4; ++slot) editor().combis()->set(slot, (121 << 8) + slot);
}

void TwoThreads::edit(Dice& dice, int part) {
    ElementCommands& elements = *editor().elements();
    EffectCommands& effects = *editor().effects();
    SceneCommands& scenes = *editor().scenes();
    const int place = dice.once(4) ? part : dice.below(17), element = dice.below(5);
    const int slot = dice.once(2) ? element : firstSendSlot + dice.below(4);
    switch (dice.below(12)) {
        case 0:
            return void(elements.copy(place, slot));
        case 1:
            return void(elements.paste(place, slot, ElementCommands::Paste::over));
        case 2:
            return void(elements.paste(part, element, ElementCommands::Paste::insert));
        case 3:
            return void(elements.remove(part, element));
        case 4:
            return void(elements.init(part, element, dice.below(6)));
        case 5:
            return void(effects.loadPreset(place, slot, dice.below(110)));
        case 6:
            return void(effects.save(place, slot, folder / "Content/Effects/E.fxp"));
        case 7:
            return void(effects.load(place, slot, "E.fxp", EffectCommands::Name::inContent));
        case 8:
            return void(
                scenes.store(part, dice.below(6), static_cast<std::uint32_t>(dice.below(4))));
        case 9:
            return void(scenes.importPhrase(part, folder / "Riff.mid"));
        case 10:
            return editor().parameters()->set(place, slot, dice.below(256), dice.unit());
        default:
            return void(scenes.select(part, dice.below(6)));
    }
}

void TwoThreads::setUp(Dice& dice, int part) {
    FileCommands& files = *editor().files();
    SettingsCommands& settings = *editor().settings();
    CombiCommands& combis = *editor().combis();
    switch (dice.below(14)) {
        case 0:
            return void(files.saveToLibrary(dice.once(4) ? -1 : part, dice.once(2) ? 100 : 121));
        case 1:
            return void(files.writePreset(part, folder / "P.fxp"));
        case 2:
            return void(files.writeBank(folder / "B.fxb"));
        case 3:
            return void(files.read(part, folder / (dice.once(8) ? "B.fxb" : "P.fxp")));
        case 4:
            return combis.set(dice.below(8), (121 << 8) + dice.below(4));
        case 5:
            return dice.once(8) ? combis.select(dice.below(8)) : void(combis.label(2));
        case 6:
            return void(combis.write(folder / "C.s2c") && combis.read(folder / "C.s2c"));
        case 7:
            return settings.setVelocitySensitivity(dice.unit());
        case 8:
            return settings.setLift(dice.unit());
        case 9:
            return settings.setMemoryUse(dice.unit());
        case 10:
            return settings.setMidiCombis(static_cast<CombiUse>(dice.below(3)));
        case 11:
            return settings.setCombiNextController(30 + dice.below(2));
        case 12:
            return settings.setMasterVolume(0.5f + 0.2f * dice.unit());
        default:
            if (dice.once(8)) editor().parts()->resetGeneralMidi();
    }
}

/// One thing that the user or the host does.
void TwoThreads::operate(Dice& dice) {
    const int part = dice.below(16);
    const LearnTarget target{part, dice.once(2) ? 0 : firstSendSlot, 20 + dice.below(60)};
    char text[256];
    switch (dice.below(24)) {
        case 0:
        case 1:
            plugin->setParameter(dice.below(hostParameters), dice.unit());
            break;
        case 2: {
            void* data = nullptr;
            const bool one = dice.once(2);
            ask(Opcode::vendorSpecific, fourCharacters("part"), part);
            const std::intptr_t size = ask(Opcode::getChunk, one ? 1 : 0, 0, &data);
            const auto* bytes = static_cast<const std::uint8_t*>(data);
            if (size > 0) (one ? preset : bank).assign(bytes, bytes + size);
            break;
        }
        case 3: {
            auto& chunk = dice.once(6) ? bank : preset;
            if (!chunk.empty())
                ask(Opcode::setChunk, &chunk == &preset ? 1 : 0,
                    static_cast<std::intptr_t>(chunk.size()), chunk.data());
            break;
        }
        case 4:
        case 5:
        case 6:
            editor().parts()->load(part,
                                   dice.once(3) ? -1 - dice.below(3) : (5 << 8) + dice.below(6));
            break;
        case 7:
            dice.once(3) ? editor().parts()->move(part, dice.below(16))
                         : editor().parts()->copy(part, dice.below(16));
            break;
        case 8:
            if (editor().learning()->open(target)) editor().learning()->learn(target);
            break;
        case 9:
            editor().learning()->assign(target, dice.below(128));
            if (dice.once(2)) editor().learning()->forget(target);
            break;
        case 10:
            if (dice.once(20)) editor().keyboard()->panic();
            editor().keyboard()->note(part, 40 + dice.below(40), dice.below(2) * 100);
            editor().keyboard()->pitchWheel(part, dice.below(128));
            break;
        case 11:
        case 12:
            for (int i = 0; i < 4; ++i) {
                ask(Opcode::getParameterName, dice.below(hostParameters), 0, text);
                ask(Opcode::getParameterDisplay, dice.below(hostParameters), 0, text);
            }
            break;
        case 13: {
            MidiProgramName program{};
            program.index = dice.below(20);
            ask(Opcode::getMidiProgramName, part, 0, &program);
            ask(Opcode::getCurrentMidiProgram, part, 0, &program);
            ArpeggiatorEvent events[16];
            ArpeggiatorTake take{16, 0, events};
            ask(Opcode::vendorSpecific, arpeggiatorRequest, 1);
            ask(Opcode::vendorSpecific, arpeggiatorRequest, 0, &take);
            break;
        }
        case 14:
            ask(Opcode::vendorSpecific, fourCharacters("voic"));
            if (!dice.once(30)) break;
            ask(Opcode::setSampleRate, 0, 0, nullptr, dice.once(2) ? 44100.0f : 96000.0f);
            ask(Opcode::setBlockSize, 0, 64 + dice.below(200));
            ask(Opcode::mainsChanged, 0, 1);
            break;
        case 15:
        case 16:
        case 17:
            setUp(dice, part);
            break;
        default:
            edit(dice, part);
    }
    if (!dice.once(3)) ask(Opcode::idle);
}

/// One block of the audio thread, with what MIDI brings.
void TwoThreads::play(Dice& dice) {
    constexpr int most = 8;
    MidiEvent events[most];
    struct List {
        std::int32_t count, reserved;
        Event* events[most + 1];
    } list{};
    const auto add = [&](int status, int data1, int data2) {
        if (list.count == most) return;
        events[list.count] = message(status, data1, data2, dice.below(largest));
        list.events[list.count] = &events[list.count].head;
        ++list.count;
    };
    for (int i = dice.below(6); i > 0; --i) {
        const int channel = dice.below(16), data = dice.below(128);
        switch (dice.below(40)) {
            case 0:
                if (!dice.once(20)) break;
                add(0xB0 | channel, 32, dice.once(8) ? 121 : 5);
                add(0xC0 | channel, dice.below(6), 0);
                break;
            case 1:
                if (!dice.once(200)) break;
                add(0xBF, 30, dice.below(128));  // the next combi
                break;
            case 2:
                add(0xE0 | channel, 0, data);
                break;
            case 3:
                add(0xD0 | channel, data, 0);
                break;
            case 4:
            case 5:
            case 6:
            case 7:
                add(0xB0 | channel, dice.below(128), data);
                break;
            case 8:
                plugin->setParameter(dice.below(hostParameters), dice.unit());
                break;
            default:
                add((dice.once(2) ? 0x80 : 0x90) | channel, 30 + dice.below(60), data);
        }
    }
    if (list.count > 0) ask(Opcode::processEvents, 0, 0, &list);
    // General MIDI on and off, volume, tuning, the reverb's type.
    static constexpr std::uint8_t dumps[][14] = {
        {0xF0, 0x7E, 0x7F, 9, 1, 0xF7},        {0xF0, 0x7E, 0x7F, 9, 2, 0xF7},
        {0xF0, 0x7E, 0x7F, 9, 3, 0xF7},        {0xF0, 0x7F, 0x7F, 4, 1, 0, 100, 0xF7},
        {0xF0, 0x7F, 0x7F, 4, 3, 0, 70, 0xF7}, {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 0, 3, 0xF7},
    };
    if (dice.once(2000)) {
        const auto& dump = dumps[dice.below(6)];
        SystemExclusiveEvent event;
        event.dump = dump;
        event.dumpLength = sizeof dump;
        EventList one;
        one.count = 1;
        one.events[0] = &event.head;
        ask(Opcode::processEvents, 0, 0, &one);
    }
    const int frames = 1 + dice.below(largest);
    if (dice.once(50)) time.tempo = 60 + dice.below(120);
    if (dice.once(50)) time.flags ^= TimeInfo::playing;
    time.musicalPosition = dice.once(100) ? dice.below(64) : time.musicalPosition + frames * 5e-5;
    render(frames);
}

void TwoThreads::render(int frames) {
    float samples[8][largest] = {}, *outputs[8] = {};
    for (int i = 0; i < 8; ++i) outputs[i] = samples[i];
    frames % 4 == 1 ? record->process(record, nullptr, outputs, frames)
                    : record->processReplacing(record, nullptr, outputs, frames);
    for (const auto& output : samples)
        for (const float x : output) {
            finite = finite && std::isfinite(x);
            peak = std::max(peak, std::abs(x));
        }
}

TEST_F(TwoThreads, DoEverythingAtOnce) {
    time.tempo = 120;
    time.flags = TimeInfo::playing | TimeInfo::positionValid | TimeInfo::tempoValid;
    const char* wanted = std::getenv("STRATOVANE_OPERATIONS");
    const int operations = wanted != nullptr ? std::atoi(wanted) : 2000;
    std::atomic<bool> over{false};
    std::atomic<int> blocks{0};
    std::thread audio{[&] {
        for (Dice dice{11}; !over; ++blocks) play(dice);
    }};
    Dice dice{12};
    for (int i = 0; i < operations && !HasFailure(); ++i) operate(dice);
    over = true;
    audio.join();
    EXPECT_GT(blocks, 0);
    EXPECT_TRUE(finite);
    EXPECT_GT(peak, 0.0f);
    EXPECT_LT(peak, 1000.0f);

    // It still does what it is asked.
    editor().keyboard()->panic();
    ask(Opcode::mainsChanged, 0, 1);
    set(0, strip::lock, 0);
    EXPECT_EQ(editor().parts()->load(0, (5 << 8) + 5), (5 << 8) + 5);
    set(0, 0, 0.5f);  // master volume
    set(0, strip::mute, 0);
    set(0, strip::output, 0.05f);
    set(0, strip::arpeggiatorOn, 0);
    for (int i = 0; i < 200; ++i) ask(Opcode::idle), render(256);
    EXPECT_EQ(ask(Opcode::vendorSpecific, fourCharacters("busy")), 0);
    peak = 0;
    editor().keyboard()->note(0, 60, 100);
    for (int i = 0; i < 20; ++i) render(256);
    EXPECT_GT(peak, 0.001f);
}

}  // namespace
}  // namespace stratovane
