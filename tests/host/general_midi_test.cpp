// General MIDI through the library's entry point, with a small content folder.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <fstream>
#include <random>
#include <thread>

#include "automation/host_rows.h"
#include "automation/parameter_structure.h"
#include "host/host_support.h"
#include "host/synth.h"
#include "support/patch_file.h"
#include "support/temporary_folder.h"

namespace stratovane {
namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes gmOn{0x7E, 0x7F, 9, 1}, gmOff{0x7E, 0x7F, 9, 2}, gm2On{0x7E, 0x7F, 9, 3};
Bytes effectMessage(int effect, int parameter, int value) {
    Bytes message{0x7F, 0x7F, 4, 5, 1, 1, 1, 1};
    for (const int byte : {effect, parameter, value})
        message.push_back(static_cast<std::uint8_t>(byte));
    return message;
}
constexpr int part(int number, int row) { return 152 * number + row; }
constexpr int master(int slot, int row) { return 2432 + 24 * slot + row; }
constexpr int level = 2, pan = 3, output = 4, lock = 25, bendUp = 27;

/// Patches tell themselves apart by their level: bank 78 has programs 0, 1 and 48, bank 79 the kits
/// 0 and 8, bank 84 the default patch.
class GeneralMidiHost : public ::testing::Test {
  protected:
    TemporaryFolder folder_;

    static constexpr float sound0 = 0.25f, sound1 = 0.3125f, sound48 = 0.375f, kit0 = 0.4375f,
                           kit8 = 0.46875f, first = 0.625f;

    void addPatch(const std::string& file, float value) const {
        putSawPatch(folder_ / "Patches/" + file, value, 0.75f);
    }
    void SetUp() override {
        addPatch("078 Sounds/000 Piano.fxp", sound0);
        addPatch("078 Sounds/001 Bright.fxp", sound1);
        addPatch("078 Sounds/048 Strings.fxp", sound48);
        addPatch("079 Kits/000 Standard.fxp", kit0);
        addPatch("079 Kits/008 Room.fxp", kit8);
        addPatch("084 Start/000 Hello.fxp", first);
    }
    std::string settings(const std::string& more = {}) const {
        return "Content Location=" + (folder_ / "") + "\n" + more;
    }
};

TEST_F(GeneralMidiHost, ResetsTheWholeSetup) {
    for (const Bytes& message : {gmOn, gm2On}) {
        TestHost host{settings()};
        host.start();
        host.settle();
        EXPECT_EQ(host.get(part(0, level)), first);
        host.set(0, 0.9f);
        for (int p = 0; p < 16; ++p) {
            if (p > 0) host.set(part(p, 0), 1.0f);  // link
            host.set(part(p, 1), 1.0f);             // mute
            host.set(part(p, lock), 1.0f);
            host.set(part(p, output), 0.4f);
            for (int row = 15; row <= 23; ++row) host.set(part(p, row), 0.3f);
        }
        host.set(master(0, 17), 0.1f);
        char name[] = "Another";
        host.ask(Opcode::setProgramName, 0, 0, name);
        const int updates = host.sent(HostRequest::updateDisplay);
        std::ofstream{host.settingsFile(), std::ios::app} << "Master Vol=+6.0 dB\nOutputs=SS\n";

        host.exclusive(message);
        EXPECT_EQ(host.ask(Opcode::vendorSpecific, fourCharacters("busy")), 1);
        host.settle();
        for (int p = 0; p < 16; ++p) {
            EXPECT_EQ(host.get(part(p, level)), p == 9 ? kit0 : sound0) << p;
            EXPECT_EQ(host.get(part(p, 0)), p == 0 ? host.get(0) : 0.0f) << p;
            EXPECT_EQ(host.get(part(p, 1)), 0.0f) << p;
            EXPECT_EQ(host.get(part(p, lock)), 0.0f) << p;
            EXPECT_EQ(host.get(part(p, pan)), 0.5f) << p;
            EXPECT_EQ(host.get(part(p, output)), 0.05f) << p;
            const float expected[] = {0, 1, -1, 0, 1, -1, 0.5f, 0.5f, 0.5f};  // -1: the patch's
            for (int i = 0; i < 9; ++i)
                EXPECT_TRUE(expected[i] < 0 || host.get(part(p, 15 + i)) == expected[i]) << p;
            MidiProgramName record{};
            host.ask(Opcode::getCurrentMidiProgram, p, 0, &record);
            EXPECT_EQ(record.program, 0);
            EXPECT_EQ(record.bankLsb, p == 9 ? 79 : 78);
        }
        EXPECT_EQ(host.get(0), 1.0f);  // the setting, read again; outputs stay
        EXPECT_EQ(host.record->outputCount, 8);
        EXPECT_EQ(host.text(Opcode::getProgramName), "Stratovane 2");
        EXPECT_GT(host.sent(HostRequest::updateDisplay), updates);
        // A reverb, nothing, a chorus, nothing.
        EXPECT_EQ(host.text(Opcode::getParameterName, master(0, 3)), " FX1  Time");
        EXPECT_FLOAT_EQ(host.get(master(0, 3)), 0.225f);
        EXPECT_FLOAT_EQ(host.get(master(0, 18)), 0.5f);
        EXPECT_EQ(host.get(master(0, 0)), 0.0f);
        EXPECT_FLOAT_EQ(host.get(master(0, 17)), 0.1f);  // where it goes is the user's
        EXPECT_EQ(host.get(master(1, 0)), 1.0f);
        EXPECT_FLOAT_EQ(host.get(master(2, 4)), 0.94f);
        EXPECT_FLOAT_EQ(host.get(master(2, 18)), 0.61f);
        EXPECT_EQ(host.get(master(3, 0)), 1.0f);
    }
}

TEST_F(GeneralMidiHost, LeavesPartsWithoutSoundsAsTheyWere) {
    TestHost host;  // and no library at all
    host.start();
    host.settle();
    host.set(part(0, pan), 0.9f);
    host.exclusive(gmOn);
    host.settle();
    EXPECT_EQ(host.get(part(0, level)), 0.5f);  // still the sawtooth
    EXPECT_EQ(host.get(part(0, pan)), 0.5f);
    host.midi({message(0x90, 60, 100)});
    host.render(512);
    EXPECT_GT(host.peak(0), 0.01f);
}

TEST_F(GeneralMidiHost, MapsProgramChanges) {
    struct Case {
        const char* what;
        int channel, msb, program;
        float expected;
    };
    const Case cases[] = {
        {"a sound", 2, 0, 1, sound1},
        {"a bank that has nothing to say", 2, 121, 48, sound48},
        {"a sound that is not there", 2, 0, 7, sound0},
        {"a kit", 9, 0, 8, kit8},
        {"a kit that is not there", 9, 0, 9, kit0},
        {"a sound on the drum channel", 9, 121, 48, sound48},
        {"a kit elsewhere", 2, 120, 8, kit8},
        {"a combi that is not there", 2, 64, 1, sound0},
    };
    // The user may have switched program changes off: this mode obeys them all the same.
    for (const char* patches : {"MIDI Patches=OFF\n", "MIDI Patches=ON\n"}) {
        TestHost host{settings(patches)};
        host.start();
        host.settle();
        for (const Case& c : cases) {
            host.exclusive(gmOn);
            host.midi({message(0xB0 | c.channel, 0, c.msb), message(0xC0 | c.channel, c.program)});
            host.settle();
            EXPECT_EQ(host.get(part(c.channel, level)), c.expected) << c.what << " " << patches;
            EXPECT_EQ(host.get(part(3, level)), sound0) << c.what;
            // Off again it keeps what it plays.
            host.exclusive(gmOff);
            host.settle();
            EXPECT_EQ(host.get(part(c.channel, level)), c.expected) << c.what;
        }
        // And program changes mean the library's banks again, where they are wanted.
        host.midi({message(0xB3, 0, 0), message(0xB3, 32, 84), message(0xC3, 0)});
        host.settle();
        EXPECT_EQ(host.get(part(3, level)),
                  patches == std::string{"MIDI Patches=ON\n"} ? first : sound0);
    }
}

TEST_F(GeneralMidiHost, ActsInTheOrderOfTheMessages) {
    TestHost host{settings()};
    host.start();
    host.settle();
    // All before the first idle call: what came in front of a reset gives way to it.
    host.midi({message(0xC0, 48), message(0xB0, 10, 127), message(0xB3, 101, 0),
               message(0xB3, 100, 0), message(0xB3, 6, 12)});
    host.exclusive(effectMessage(1, 0, 1));
    host.exclusive(effectMessage(1, 1, 10));
    host.exclusive({0x7F, 0x7F, 4, 1, 0, 127});
    host.exclusive({0x7F, 0x7F, 4, 4, 0, 70});
    host.render(64);
    host.exclusive(gmOn);
    host.settle();
    EXPECT_EQ(host.get(part(0, level)), sound0);
    EXPECT_EQ(host.get(part(0, pan)), 0.5f);
    EXPECT_LT(host.get(part(3, bendUp)), 0.5f);
    EXPECT_FLOAT_EQ(host.get(master(0, 3)), 0.225f);
    EXPECT_NEAR(host.get(0), 0.5005933f, 1e-5f);

    // And what comes behind it stands, in its turn.
    host.exclusive(gmOn);
    host.midi({message(0xB0, 10, 127), message(0xB3, 101, 0), message(0xB3, 100, 0),
               message(0xB3, 6, 12), message(0xB3, 100, 2), message(0xB3, 6, 32),
               message(0xB5, 126, 1)});
    host.exclusive({0x7F, 0x7F, 4, 1, 0, 64});
    host.exclusive(effectMessage(1, 1, 10));  // the reset's reverb
    host.exclusive(effectMessage(1, 0, 8));   // a plate
    host.exclusive(effectMessage(2, 1, 20));  // the reset's chorus
    host.exclusive(effectMessage(2, 0, 4));   // another chorus
    host.exclusive(effectMessage(2, 2, 70));  // its depth
    host.exclusive(effectMessage(2, 0, 6));   // no such type
    host.midi({message(0xC0, 48), message(0xC3, 1)});
    host.settle();
    for (int i = 0; i < 2; ++i) host.render(64);  // a block takes over one instance
    EXPECT_EQ(host.get(part(0, level)), sound48);
    EXPECT_NEAR(host.get(part(0, pan)), 1.0f, 1e-4f);  // the channel's, whatever it plays
    EXPECT_EQ(host.get(part(3, level)), sound1);
    EXPECT_NEAR(host.get(part(3, bendUp)), 12 / 128.0f * 8.2f, 1e-5f);
    EXPECT_NEAR(host.get(part(3, 21)), (0.25f - 0.5f) * 1.78f + 0.5f, 1e-5f);
    EXPECT_EQ(host.get(part(5, 29)), 1.0f);
    EXPECT_NEAR(host.get(0), 8192 * 6.1e-5f * 0.5005933f, 1e-5f);
    EXPECT_FLOAT_EQ(host.get(master(0, 3)), 0.15f);
    EXPECT_FLOAT_EQ(host.get(master(0, 18)), 0.43f);
    EXPECT_FLOAT_EQ(host.get(master(2, 3)), 0.1f);
    EXPECT_FLOAT_EQ(host.get(master(2, 4)), 0.7f);
    EXPECT_FLOAT_EQ(host.get(master(2, 18)), 0.54f);
    // A type without a preset takes the effect away.
    host.exclusive(effectMessage(1, 0, 5));
    host.settle();
    EXPECT_EQ(host.text(Opcode::getParameterName, master(0, 3)), " FX1  ");
    // Volumes outlive program changes in this mode.
    host.midi({message(0xB7, 7, 64), message(0xC7, 1)});
    host.settle();
    host.render(64);
    EXPECT_NEAR(host.get(part(7, level)), 64 / 127.0f, 1e-4f);
}

TEST_F(GeneralMidiHost, ControllersBehindACombiReachItsParts) {
    {
        TestHost host{settings()};
        host.start();
        host.settle();
        char* data = nullptr;
        const auto size = static_cast<std::size_t>(host.ask(Opcode::getChunk, 0, 0, &data));
        const auto header = bankFileHeader(size);
        std::filesystem::create_directories(folder_ / "Patches/120 Combis");
        folder_.put("Patches/120 Combis/000 One.fxb",
                    std::string{header.begin(), header.end()} + std::string{data, size});
    }
    TestHost host{settings()};
    host.start();
    host.settle();
    host.midi({message(0xB0, 7, 10), message(0xBF, 32, 120), message(0xCF, 0), message(0xB3, 7, 64),
               message(0xB0, 10, 127)});
    host.settle();
    host.render(64);
    EXPECT_EQ(host.get(part(0, level)), first);
    EXPECT_NEAR(host.get(part(0, pan)), 1.0f, 1e-4f);
    EXPECT_NEAR(host.get(part(3, level)), 64 / 127.0f, 1e-4f);  // though the combi left it empty
}

TEST_F(GeneralMidiHost, ComesBeforeTheDefaultPatch) {
    TestHost host{settings()};
    host.start();
    host.exclusive(gmOn);
    host.settle();
    EXPECT_EQ(host.get(part(0, level)), sound0);
}

/// The plug-in without a host, whose editor is these tests.
struct Probe : Synth {
    Probe() : Synth{nullptr} { finishConstruction(); }
    using Synth::resetGeneralMidi;
    std::string status() const {
        char text[64];
        TextOut out{text};
        showStatus(out);
        return std::string{out.view()};
    }
};

TEST_F(GeneralMidiHost, ResetsByHand) {
    folder_.put("settings.ini",
                "[Software\\Taldrimor\\Stratovane 2]\nMaster Vol=+6.0 dB\n" + settings());
    const ScopedEnvironment file{"STRATOVANE_SETTINGS", (folder_ / "settings.ini").c_str()};
    Probe probe;
    EffectRecord& record = *probe.record();
    const auto ask = [&record](Opcode opcode, void* pointer = nullptr) {
        return record.request(&record, static_cast<std::int32_t>(opcode), 0, 1, pointer, 0);
    };
    ask(Opcode::mainsChanged);
    for (int index = 0; index < hostParameters; ++index) probe.setParameter(index, 0.875f);
    probe.resetGeneralMidi();
    // Empty patches and no effects.
    const EngineShared shared;
    const Patch empty{shared};
    for (int index = 1; index < hostParameters; ++index) {
        const HostAddress a = decodeHostIndex(index);
        float expected = hostDefault(index);
        const bool strips = a.block == HostBlock::strip;
        if (strips && hostRow(a).target >= 0) expected = empty.get(0, hostRow(a).target);
        if (strips && a.row == strip::arpeggiatorRate)
            expected = std::clamp(expected * 1.25f - 0.25f, 0.0f, 1.0f);
        if (a.block == HostBlock::insert)
            expected = empty.get(firstSendSlot + a.slot, hostRow(a).target);
        for (const PlainMix& row : plainMix)
            if (strips && a.row == row.row) expected = row.value;
        EXPECT_EQ(probe.getParameter(index), expected) << index;
    }
    EXPECT_EQ(probe.getParameter(0), 1.0f);

    // In the mode it loads the sounds at once.
    SystemExclusiveEvent event;
    const std::uint8_t on[] = {0xF0, 0x7E, 0x7F, 9, 1, 0xF7};
    event.dump = on;
    event.dumpLength = sizeof on;
    EventList list;
    list.count = 1;
    list.events[0] = &event.head;
    ask(Opcode::processEvents, &list);
    EXPECT_EQ(probe.status(), "SysEx: General MIDI On");
    EXPECT_EQ(probe.getParameter(part(9, level)), 0.0f);
    probe.resetGeneralMidi();
    EXPECT_EQ(probe.getParameter(part(9, level)), kit0);
    ask(Opcode::idle);
    // A program change after it is the same, or another.
    MidiEvent change = message(0xC2, 48);
    list.events[0] = &change.head;
    ask(Opcode::processEvents, &list);
    ask(Opcode::idle);
    EXPECT_EQ(probe.status(), "MIDI Program Change 48, Bank 78, Channel 2");
    EXPECT_EQ(probe.getParameter(part(2, level)), sound48);
}

TEST_F(GeneralMidiHost, TakesWhateverComes) {
    TestHost host{settings()};
    host.start(44100, 64);
    host.settle();
    std::atomic<bool> over{false};
    std::thread audio{[&] {
        std::mt19937 random{7};
        const auto any = [&random](int below) { return static_cast<int>(random()) & (below - 1); };
        for (int block = 0; block < 400; ++block) {
            switch (any(8)) {
                case 0:
                    host.exclusive(any(4) == 0 ? gmOff : gmOn);
                    break;
                case 1:
                    host.exclusive(effectMessage(1 + any(2), 0, any(16)));
                    break;
                case 2:
                    host.exclusive(effectMessage(1 + any(2), any(8), any(128)));
                    break;
                case 3:
                    host.exclusive({0x7F, 0x7F, 4, static_cast<std::uint8_t>(1 + any(4)),
                                    static_cast<std::uint8_t>(any(128)),
                                    static_cast<std::uint8_t>(any(128))});
                    break;
                default:
                    break;
            }
            std::vector<MidiEvent> events;
            for (int i = 0; i < 6; ++i) {
                const int status = 0x80 | any(8) << 4 | any(16);
                if (status < 0xF0) events.push_back(message(status, any(128), any(128), any(64)));
            }
            host.midi(events);
            host.render(64);
        }
        over = true;
    }};
    while (!over) host.ask(Opcode::idle);
    audio.join();
    // After the storm everything can be set right again.
    host.exclusive(gmOn);
    host.midi({message(0xB0, 0, 0), message(0xC0, 48)});
    for (int i = 0; i < 8; ++i) host.settle();
    EXPECT_EQ(host.get(part(2, level)), host.get(part(3, level)));
    for (int index = 0; index < 2528; ++index) EXPECT_TRUE(std::isfinite(host.get(index)));
    for (const auto& samples : host.outputs)
        for (const float x : samples) EXPECT_TRUE(std::isfinite(x));
}

TEST(ParameterStructureFile, StandsBesideThePlugInAndInIt) {
    const auto contents = [](const std::string& name) {
        std::ifstream in{std::string{STRATOVANE_BUILD_DIR} + "/" + name, std::ios::binary};
        return std::string{std::istreambuf_iterator<char>{in}, {}};
    };
    const std::string expected = parameterStructure();
    EXPECT_EQ(contents("stratovane2.xml"), expected);
    EXPECT_NE(contents("stratovane2.so").find(expected), std::string::npos);
}

}  // namespace
}  // namespace stratovane
