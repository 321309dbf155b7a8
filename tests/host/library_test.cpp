// Patches of a content folder, loaded by program changes and shown in the host's program list.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "host/host_support.h"
#include "support/patch_file.h"
#include "support/temporary_folder.h"

namespace stratovane {
namespace {

/// A content folder with some patches, each a saw of a level of its own.
class LibraryHost : public ::testing::Test {
  protected:
    TemporaryFolder folder_;

    void addPatch(const std::string& file, float level) const {
        putSawPatch(folder_ / "Patches/" + file, level);
    }
    std::string setting() const { return "Content Location=" + (folder_ / "") + "\n"; }
    void SetUp() override {
        addPatch("005 Mine/000 First.fxp", 0.25f);
        addPatch("005 Mine/007 _Marked.fxp", 0.75f);
        addPatch("084 Start/000 Hello.fxp", 0.6f);
    }
};

TEST_F(LibraryHost, ListsPrograms) {
    TestHost host{setting()};
    MidiProgramName record{};
    EXPECT_EQ(host.ask(Opcode::getMidiProgramName, 0, 0, &record), 4);
    EXPECT_STREQ(record.name, "Select Patch...");
    record.index = 2;
    host.ask(Opcode::getMidiProgramName, 0, 0, &record);
    EXPECT_STREQ(record.name, "Marked");
    EXPECT_EQ(record.program, 7);
    EXPECT_EQ(record.bankLsb, 5);
    EXPECT_EQ(record.parentCategory, 0);
    MidiProgramCategory category{};
    category.index = 1;
    EXPECT_EQ(host.ask(Opcode::getMidiProgramCategory, 0, 0, &category), 2);
    EXPECT_STREQ(category.name, "Start");
    EXPECT_EQ(category.parentCategory, -1);
    EXPECT_EQ(host.ask(Opcode::hasMidiProgramsChanged, 3), 1);
    EXPECT_EQ(host.ask(Opcode::hasMidiProgramsChanged, 3), 0);
}

TEST_F(LibraryHost, LoadsWhatAProgramChangeNames) {
    TestHost host{setting()};
    host.start();
    host.settle();
    EXPECT_FLOAT_EQ(host.get(2), 0.6f);  // the default patch of part 1
    const int updates = host.sent(HostRequest::updateDisplay);

    host.midi({message(0xB2, 32, 5), message(0xC2, 7, 0)});
    host.settle();
    EXPECT_FLOAT_EQ(host.get(2 * 152 + 2), 0.75f);
    host.settle();
    EXPECT_GT(host.sent(HostRequest::updateDisplay), updates);
    host.midi({message(0x92, 60, 100)});
    host.render(512);
    EXPECT_GT(host.peak(0), 0.01f);
    MidiProgramName record{};
    EXPECT_EQ(host.ask(Opcode::getCurrentMidiProgram, 2, 0, &record), 2);
    EXPECT_EQ(record.program, 7);

    // What is not there changes nothing; neither does a file that is no patch.
    host.midi({message(0xC2, 9, 0)});
    host.settle();
    EXPECT_FLOAT_EQ(host.get(2 * 152 + 2), 0.75f);
}

TEST_F(LibraryHost, KeepsMuteAndOutputAndWhatIsLocked) {
    TestHost host{setting()};
    host.start();
    host.settle();
    host.set(4, 0.08f);  // output
    host.set(3, 0.9f);   // pan
    host.set(2, 0.33f);  // level
    host.midi({message(0xB0, 32, 5), message(0xC0, 0, 0)});
    host.settle();
    EXPECT_FLOAT_EQ(host.get(4), 0.08f);
    EXPECT_FLOAT_EQ(host.get(3), 0.5f);
    EXPECT_FLOAT_EQ(host.get(2), 0.25f);
    host.set(25, 1.0f);  // lock
    host.set(3, 0.9f);
    host.midi({message(0xC0, 7, 0)});
    host.settle();
    EXPECT_FLOAT_EQ(host.get(3), 0.9f);
    EXPECT_FLOAT_EQ(host.get(2), 0.25f);
}

TEST_F(LibraryHost, ControllersBehindAProgramChangeReachItsPatch) {
    TestHost host{setting()};
    host.start();
    host.settle();
    constexpr int volume = 7, pan = 10, bendUp = 27;
    // One block: what comes before the program change gives way to the patch, the rest reaches it.
    host.midi({message(0xB0, volume, 10), message(0xB0, 32, 5), message(0xC0, 7, 0),
               message(0xB0, pan, 127), message(0xB0, 101, 0), message(0xB0, 100, 0),
               message(0xB0, 6, 2)});
    host.render(64);
    host.settle();
    host.render(64);
    host.settle();
    EXPECT_FLOAT_EQ(host.get(2), 0.75f);
    EXPECT_NEAR(host.get(3), 1.0f, 1e-4f);
    EXPECT_FLOAT_EQ(host.get(bendUp), 0.128125f);
}

TEST_F(LibraryHost, RefusesDamagedRecords) {
    const std::string bad = folder_ / "Patches/005 Mine/001 Bad.fxp";
    std::filesystem::copy(folder_ / "Patches/005 Mine/000 First.fxp", bad);
    std::filesystem::resize_file(bad, 1000);
    TestHost host{setting()};
    host.start();
    host.settle();
    host.midi({message(0xB0, 32, 5), message(0xC0, 1, 0)});
    host.settle();
    EXPECT_FLOAT_EQ(host.get(2), 0.6f);
    MidiProgramName record{};
    host.ask(Opcode::getCurrentMidiProgram, 0, 0, &record);
    EXPECT_EQ(record.bankLsb, 84);  // it plays what it played
}

}  // namespace
}  // namespace stratovane
