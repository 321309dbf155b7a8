// Everything a user and a host do at once: one thread plays without pause, the other loads, saves,
// edits and asks. Run under the sanitizers; STRATOVANE_OPERATIONS makes it longer, and every number
// of operations is another game.

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
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
    explicit Dice(int seed) : random_{static_cast<unsigned>(seed)} {}
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    float unit() { return static_cast<float>(below(1001)) / 1000.0f; }
    bool once(int in) { return below(in) == 0; }

  private:
    std::mt19937 random_;
};

struct TwoThreads : testing::Test {
    static inline TimeInfo time;  // audio thread
    static std::intptr_t callback(EffectRecord*, std::int32_t opcode, std::int32_t, std::intptr_t,
                                  void*, float) {
        if (opcode == static_cast<std::int32_t>(HostRequest::version)) return 2300;
        const bool asksTime = opcode == static_cast<std::int32_t>(HostRequest::getTime);
        return asksTime ? reinterpret_cast<std::intptr_t>(&time) : 0;
    }
    static constexpr int largest = 256;  // block

    TemporaryFolder folder;
    const std::string settingsPath = folder / "settings.ini";
    ScopedEnvironment variable{"STRATOVANE_SETTINGS", settingsPath.c_str()};
    std::unique_ptr<SynthPlugin> plugin;
    EffectRecord* record = nullptr;
    float peak = 0;  // of all that was played
    bool finite = true;
    int blocks = 0, sounding = 0, lastSeen = 0;
    std::atomic<int> operation{0};

    std::intptr_t ask(Opcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                      void* pointer = nullptr, float number = 0) const {
        return record->request(record, static_cast<std::int32_t>(opcode), index, value, pointer,
                               number);
    }
    Editor& editor() const { return plugin->editor(); }
    void set(int part, int row, float value) const {
        plugin->setParameter(part * partRows + row, value);
    }
    void start() {
        plugin = nullptr;
        plugin = std::make_unique<SynthPlugin>(&callback);
        record = plugin->record();
        ask(Opcode::mainsChanged, 0, 1);
        ask(Opcode::idle);
    }
    void SetUp() override;
    void TearDown() override { setMessageBoxHook(nullptr); }
    void play(Dice& dice);
    void render(int frames);
};

/// A library of a patch of each element type, some with arpeggios and phrases, and of combis.
void TwoThreads::SetUp() {
    using namespace std::string_literals;
    setMessageBoxHook([](const char*, int question) { return question; });
    for (const char* name : {"005 Mine", "078 Sounds", "079 Kits", "100 User", "121 Combis"})
        std::filesystem::create_directories(folder / ("Content/Patches/"s + name));
    std::filesystem::create_directories(folder / "Content/Effects");
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
        set(part, strip::arpeggiatorOn + 2, static_cast<float>(part) / 6.0f);  // mode
        if (part > 3) editor().scenes()->importPhrase(part, folder / "Riff.mid");
        for (const char* name : {"005 Mine/00", "078 Sounds/00", "079 Kits/00"})
            editor().files()->writePreset(
                part, folder / ("Content/Patches/"s + name + std::to_string(part) + " P.fxp"));
        if (part % 2 == 1) editor().files()->saveToLibrary(-1, 121);
    }
    editor().files()->writePreset(5, folder / "Plain.fxp");
    start();
    for (int slot = 0; slot < 4; ++slot) editor().combis()->set(slot, (121 << 8) + slot);
}

/// One block of the audio thread, with what MIDI and automation bring.
void TwoThreads::play(Dice& dice) {
    struct {
        std::int32_t count = 0, reserved = 0;
        Event* pointers[32];
    } list;
    MidiEvent events[32];
    const auto add = [&](int status, int data1, int data2) {
        events[list.count] = message(status, data1, data2, dice.below(largest));
        list.pointers[list.count] = &events[list.count].head;
        ++list.count;
    };
    // However fast it plays, what loads comes at the other thread's pace.
    const bool moved = std::exchange(lastSeen, operation.load()) != operation;
    for (int i = dice.below(6); i > 0; --i) {
        const int channel = dice.below(16), data = dice.below(128), what = dice.below(40);
        if (what == 0) add(0xE0 | channel, 0, data);
        if (what == 1) add(0xD0 | channel, data, 0);
        if (what == 2) plugin->setParameter(dice.below(hostParameters), dice.unit());
        if (what >= 3 && what < 8) add(0xB0 | channel, dice.below(128), data);
        if (what >= 8) add((dice.once(2) ? 0x80 : 0x90) | channel, 30 + dice.below(60), data);
    }
    if (moved && dice.once(60)) add(0xBF, 30, dice.below(128));  // the next combi
    if (moved && dice.once(10)) {
        const int channel = dice.below(16);
        add(0xB0 | channel, 32, dice.once(8) ? 121 : 5);
        add(0xC0 | channel, dice.below(6), 0);
    }
    ask(Opcode::processEvents, 0, 0, &list);
    // General MIDI on, off and 2, volume, tuning, and the reverb's type.
    static constexpr std::uint8_t dumps[][14] = {
        {0xF0, 0x7E, 0x7F, 9, 1, 0xF7},        {0xF0, 0x7E, 0x7F, 9, 2, 0xF7},
        {0xF0, 0x7E, 0x7F, 9, 3, 0xF7},        {0xF0, 0x7F, 0x7F, 4, 1, 0, 100, 0xF7},
        {0xF0, 0x7F, 0x7F, 4, 3, 0, 70, 0xF7}, {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 0, 3, 0xF7},
    };
    if (moved && dice.once(60)) {
        SystemExclusiveEvent event;
        event.dump = dumps[dice.below(6)];
        event.dumpLength = sizeof dumps[0];
        list.count = 1;
        list.pointers[0] = &event.head;
        ask(Opcode::processEvents, 0, 0, &list);
    }
    const int frames = 1 + dice.below(largest);
    if (dice.once(50)) time.tempo = 60 + dice.below(120);
    if (dice.once(50)) time.flags ^= TimeInfo::playing;
    time.musicalPosition = dice.once(100) ? dice.below(64) : time.musicalPosition + frames * 5e-5;
    render(frames);
}

void TwoThreads::render(int frames) {
    float samples[8][largest] = {}, *outputs[8] = {}, loudest = 0;
    for (int i = 0; i < 8; ++i) outputs[i] = samples[i];
    (frames % 4 == 1 ? record->process : record->processReplacing)(record, nullptr, outputs,
                                                                   frames);
    for (const auto& output : samples)
        for (const float x : output) {
            finite = finite && std::isfinite(x);
            loudest = std::max(loudest, std::abs(x));
        }
    peak = std::max(peak, loudest);
    ++blocks;
    sounding += loudest > 0.001f;
}

TEST_F(TwoThreads, DoEverythingAtOnce) {
    const char* wanted = std::getenv("STRATOVANE_OPERATIONS");
    const int operations = wanted != nullptr ? std::atoi(wanted) : 1000;
    Dice dice{operations};
    int part = 0, element = 0, place = 0;  // of the operation
    std::vector<std::uint8_t> bank, preset;
    const auto get = [&](std::vector<std::uint8_t>& chunk, int isPreset) {
        void* data = nullptr;
        const std::intptr_t size = ask(Opcode::getChunk, isPreset, 0, &data);
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        if (size > 0) chunk.assign(bytes, bytes + size);
    };
    const auto put = [&](std::vector<std::uint8_t>& chunk, int isPreset) {
        ask(Opcode::setChunk, isPreset, static_cast<std::intptr_t>(chunk.size()), chunk.data());
    };
    const auto target = [&] { return LearnTarget{part, element, 20 + dice.below(60)}; };
    const auto combi = [&] { return (121 << 8) + dice.below(4); };
    char text[256];
    MidiProgramName program{};
    ArpeggiatorEvent events[16];
    ArpeggiatorTake take{16, 0, events};

    ElementCommands& elements = *editor().elements();
    EffectCommands& effects = *editor().effects();
    SceneCommands& scenes = *editor().scenes();
    FileCommands& files = *editor().files();
    PartCommands& all = *editor().parts();
    CombiCommands& combis = *editor().combis();
    LearnCommands& learning = *editor().learning();
    KeyboardCommands& keyboard = *editor().keyboard();
    SettingsCommands& settings = *editor().settings();
    const std::function<void()> often[] = {
        [&] { elements.copy(place, element); },
        [&] { elements.paste(place, element, ElementCommands::Paste::over); },
        [&] { elements.paste(part, element, ElementCommands::Paste::insert); },
        [&] { elements.remove(part, element); },
        [&] { elements.init(part, element, dice.below(6)); },
        [&] { effects.loadPreset(place, element, dice.below(110)); },
        [&] { effects.save(place, element, folder / "Content/Effects/E.fxp"); },
        [&] { effects.load(place, element, "E.fxp", EffectCommands::Name::inContent); },
        [&] { scenes.store(part, dice.below(6), 3); },
        [&] { scenes.select(part, dice.below(6)); },
        [&] { scenes.importPhrase(part, folder / "Riff.mid"); },
        [&] { editor().parameters()->set(place, element, dice.below(256), dice.unit()); },
        [&] { plugin->setParameter(dice.below(hostParameters), dice.unit()); },
        [&] { all.load(part, (5 << 8) + dice.below(6)); },
        [&] { all.load(part, -1 - dice.below(3)); },
        [&] { all.copy(part, dice.below(16)); },
        [&] { all.move(part, dice.below(16)); },
        [&] { files.saveToLibrary(part, 100); },
        [&] { files.writePreset(part, folder / "P.fxp"); },
        [&] { files.read(part, folder / "P.fxp"); },
        [&] { ask(Opcode::vendorSpecific, fourCharacters("part"), part); },
        [&] { get(preset, 1); },
        [&] { put(preset, 1); },
        [&] { learning.open(target()); },
        [&] { learning.learn(target()); },
        [&] { learning.assign(target(), dice.below(128)); },
        [&] { learning.forget(target()); },
        [&] { keyboard.note(part, 40 + dice.below(40), dice.below(2) * 100); },
        [&] { keyboard.pitchWheel(part, dice.below(128)); },
        [&] { settings.setVelocitySensitivity(dice.unit()); },
        [&] { settings.setLift(dice.unit()); },
        [&] { settings.setMasterVolume(0.5f + 0.2f * dice.unit()); },
        [&] { settings.setCombiNextController(30 + dice.below(2)); },
        [&] { combis.set(dice.below(8), combi()); },
        [&] { ask(Opcode::getParameterName, dice.below(hostParameters), 0, text); },
        [&] { ask(Opcode::getParameterDisplay, dice.below(hostParameters), 0, text); },
        [&] { ask(Opcode::getCurrentMidiProgram, part, 0, &program); },
        [&] { ask(Opcode::vendorSpecific, fourCharacters("voic")); },
        [&] { ask(Opcode::vendorSpecific, arpeggiatorRequest, 1); },
        [&] { ask(Opcode::vendorSpecific, arpeggiatorRequest, 0, &take); },
    };
    const std::function<void()> rarely[] = {
        [&] { all.resetGeneralMidi(); },
        [&] { files.saveToLibrary(-1, 121); },
        [&] { files.writeBank(folder / "B.fxb"); },
        [&] { files.read(part, folder / "B.fxb"); },
        [&] { get(bank, 0); },
        [&] { put(bank, 0); },
        [&] { combis.select(dice.below(8)); },
        [&] { combis.write(folder / "C.s2c") && combis.read(folder / "C.s2c"); },
        [&] { settings.setMidiCombis(static_cast<CombiUse>(dice.below(3))); },
        [&] { settings.setMemoryUse(dice.unit()); },
        [&] { keyboard.panic(); },
        [&] { ask(Opcode::setSampleRate, 0, 0, nullptr, dice.once(2) ? 44100.0f : 96000.0f); },
        [&] { ask(Opcode::setBlockSize, 0, 64 + dice.below(200)); },
        [&] { ask(Opcode::mainsChanged, 0, 1); },
    };

    time.tempo = 120;
    time.flags = TimeInfo::playing | TimeInfo::positionValid | TimeInfo::tempoValid;
    std::atomic<bool> over{false};
    std::thread audio{[&] {
        for (Dice own{operations + 1}; !over;) play(own);
    }};
    for (; operation < operations; ++operation) {
        part = dice.below(16);
        element = dice.once(3) ? firstSendSlot + dice.below(4) : dice.below(4);
        place = dice.once(4) ? parts : part;  // the master channel, too
        dice.once(20) ? rarely[dice.below(int{std::size(rarely)})]()
                      : often[dice.below(int{std::size(often)})]();
        if (!dice.once(3)) ask(Opcode::idle);
    }
    over = true;
    audio.join();
    EXPECT_TRUE(finite);
    EXPECT_GT(sounding, 0);
    EXPECT_LT(peak, 1000.0f);

    // It still does what it is asked.
    const auto settle = [&] {
        for (int i = 0; i < 300; ++i) ask(Opcode::idle), render(largest);
        EXPECT_EQ(ask(Opcode::vendorSpecific, fourCharacters("busy")), 0);
    };
    keyboard.panic();
    ask(Opcode::mainsChanged, 0, 1);
    settle();
    set(0, strip::lock, 0);
    EXPECT_TRUE(files.read(0, folder / "Plain.fxp"));
    set(0, 0, 0.5f);  // master volume
    set(0, strip::mute, 0);
    set(0, strip::output, 0.05f);
    set(0, strip::arpeggiatorOn, 0);
    settle();
    peak = 0;
    keyboard.note(0, 60, 100);
    for (int i = 0; i < 20; ++i) render(largest);
    EXPECT_GT(peak, 0.001f);
}

}  // namespace
}  // namespace stratovane
