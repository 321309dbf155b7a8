// What is kept of a song beside its sound: banks, presets, output pairs, arpeggiator events; how it
// ends, and what the summary tells of programs.
#include <cstring>

#include "tools/program_file_bytes.h"
#include "tools/render_fixture.h"

namespace stratovane {
namespace {

using RenderFiles = Render;

TEST_F(RenderFiles, BanksAndPresetsAreWritten) {
    song(midi({0, 0xC1, 5, 0, 0x91, 60, 9, 96, 60, 0}));
    ASSERT_EQ(run("--tail none --save-bank a.fxb --save-preset 1 one.fxp --save-preset 2 two.fxp"),
              0)
        << err_;
    const auto record = [](std::size_t size, const char* name) {
        std::string chunk(size, 7);
        chunk.replace(0, 4, "QvRR");
        return chunk.replace(32, std::strlen(name) + 1, name, std::strlen(name) + 1);
    };
    const auto named = [](std::string bytes, const char* name) {
        return bytes.replace(28, 8, std::string{name}.append(8, '\0').substr(0, 8));
    };
    EXPECT_EQ(contents(folder_ / "a.fxb"), file(true, record(2000, "Sawtooth")));
    EXPECT_EQ(contents(folder_ / "one.fxp"),
              named(file(false, record(1200, "Sawtooth")), "Sawtooth"));
    EXPECT_EQ(contents(folder_ / "two.fxp"), named(file(false, record(1200, "Five")), "Five"));
    EXPECT_NE(out_.find("\na.fxb\none.fxp\ntwo.fxp\n"), std::string::npos) << out_;

    // Without a sound file, over what was there, and nothing at all when a part is empty.
    fs::remove(folder_ / "out.wav");
    const std::string plugIn = std::string{"song.mid --tail none --plugin "}.append(fake);
    EXPECT_EQ(runRaw(plugIn + " --save-preset 1 two.fxp"), 0) << err_;
    EXPECT_EQ(contents(folder_ / "two.fxp"), contents(folder_ / "one.fxp"));
    const auto before = files();
    EXPECT_EQ(
        runRaw(plugIn + " -o out.wav --multi m --save-preset 1 new.fxp --save-preset 3 two.fxp"),
        3);
    EXPECT_EQ(err_, "stratovane-render: part 3 is empty and has no preset to save\n");
    EXPECT_EQ(files(), before);
    EXPECT_EQ(contents(folder_ / "two.fxp"), contents(folder_ / "one.fxp"));
}

TEST_F(RenderFiles, EveryPairThatSoundsHasAFile) {
    song(midi({0, 0xC1, 1, 0, 0x90, 69, 40, 0, 0x91, 69, 100, 96, 69, 0, 0, 0x90, 69, 0}));
    const std::string plugIn =
        std::string{"song.mid --rate 8000 --format float --plugin "}.append(fake);
    ASSERT_EQ(runRaw(plugIn + " --multi a/b"), 0) << err_;
    const auto inside = [&](const char* folder) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator{folder_ / folder})
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    };
    const std::vector<std::string> both{"01 Fake_1.wav", "02 Fake 2L + Fake 2R.wav"};
    EXPECT_EQ(inside("a/b"), both);
    EXPECT_FALSE(fs::exists(folder_ / "out.wav"));
    const Sound one = readWav(folder_ / "a/b" / both[0]), two = readWav(folder_ / "a/b" / both[1]);
    EXPECT_NEAR(one.peak(), 40 / 127.0, 1e-6);
    EXPECT_NEAR(two.peak(), 100 / 127.0, 1e-3);
    EXPECT_EQ(one.frames(), two.frames());
    EXPECT_NE(out_.find("a/b/01 Fake_1.wav: output pair 1, peak -10.0 dBFS\n"), std::string::npos)
        << out_;
    EXPECT_EQ(out_.find("RMS"), std::string::npos);

    // Beside the output, which is the same as without them; one gain for all.
    ASSERT_EQ(run("--rate 8000 --format float"), 0);
    const std::string alone = contents(folder_ / "out.wav");
    ASSERT_EQ(run("--rate 8000 --format float --multi c --json"), 0) << err_;
    EXPECT_EQ(contents(folder_ / "out.wav"), alone);
    EXPECT_EQ(contents(folder_ / "c" / both[1]), contents(folder_ / "a/b" / both[1]));
    EXPECT_NE(
        out_.find(
            "\"pairFiles\": [{\"pair\": 1, \"output\": \"c/01 Fake_1.wav\", \"peakDbfs\": -1"),
        std::string::npos)
        << out_;
    ASSERT_EQ(runRaw(plugIn + " --normalize --tail none --multi c"), 0);
    EXPECT_NEAR(readWav(folder_ / "c" / both[1]).peak(), 1, 1e-6);
    EXPECT_NEAR(readWav(folder_ / "c" / both[0]).peak(), 0.4, 1e-3);

    song(midi({96, 0xFF, 0x2F, 0}));
    ASSERT_EQ(runRaw(plugIn + " --multi d"), 0) << err_;
    EXPECT_FALSE(fs::exists(folder_ / "d"));
    EXPECT_EQ(err_, "No output pair sounds; --multi wrote no file.\n");
}

TEST_F(RenderFiles, ArpeggiatorEventsAsText) {
    // Beat 1 at half a second, then at 60 a minute; the two parts within one block.
    song(midi({0, 0xC1, 1,    48,  0x91, 60,   100,  48, 0xFF, 0x51, 3,    0x0F, 0x42, 0x40,
               0, 0x90, 69,   127, 0,    0xB0, 1,    64, 48,   0xD0, 90,   0,    0xE0, 0,
               0, 0,    0x91, 60,  0,    48,   0x80, 69, 30,   0,    0xFF, 0x2F, 0}));
    const std::string expected =
        "0.250000 0.500000 2 note-on 72 100\n"
        "0.500000 1.000000 1 note-on 81 127\n"
        "0.500000 1.000000 1 controller 1 64\n"
        "1.000000 1.500000 1 pressure 90\n"
        "1.000000 1.500000 1 bend -8192\n"
        "1.000000 1.500000 2 note-on 72 0\n"
        "1.500000 2.000000 1 note-off 81 30\n";
    for (const char* options : {"--block 8192", "--block 64", "--block 8192 --rate 8000"}) {
        ASSERT_EQ(run(std::string{"--tail none --events e.txt "} + options), 0) << err_;
        EXPECT_EQ(contents(folder_ / "e.txt"), expected) << options;
    }
    // More than are taken at a time, and some that were lost.
    Bytes events;
    for (int i = 0; i < 1500; ++i)
        for (int byte : {0, 0xB0, 1, i % 128}) events.push_back(static_cast<std::uint8_t>(byte));
    song(midi(events));
    ASSERT_EQ(run("--events e.txt --tail none", "FAKE_MODE=lossy"), 0);
    EXPECT_EQ(err_.substr(0, 44), "3 events of the arpeggiators came too thick ") << err_;
    const std::string all = contents(folder_ / "e.txt");
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 1500);
    EXPECT_EQ(run("--tail none --events f.txt", "FAKE_MODE=mute"), 3);
    EXPECT_NE(err_.find("does not tell what its arpeggiators play"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder_ / "f.txt"));
}

TEST_F(RenderFiles, PedalsAndNotesEndWithTheSong) {
    song(midi({0, 0x93, 60, 9, 0, 0x9F, 60, 9, 48, 0xB9, 7, 1, 48, 0xFF, 0x2F, 0}));
    EXPECT_EQ(run("--tail 0.1 --block 8192"), 0);
    std::string expected =
        "midi 0: 147 60 9|midi 0: 159 60 9|midi 2833: 185 7 1|";  // 11025 in its block
    for (const int channel : {179, 185, 191})
        for (const int number : {64, 66, 123})
            expected +=
                "midi 5666: " + std::to_string(channel) + " " + std::to_string(number) + " 0|";
    EXPECT_EQ(told({"midi"}), expected);
}

TEST_F(RenderFiles, TheSummaryTellsWhatPlaysAndWhatWasNotFound) {
    // Part 1 changes its patch; channel 2 asks for bank 3 program 99 and bank 128 (MSB 1); part 3
    // plays linked behind part 2.
    song(midi({0,    0x90, 60, 9,    48, 0xB0, 32,   3,    0, 0xC0, 17, 0,    0x90,
               60,   9,    0,  0xC2, 5,  0,    0xC1, 1,    0, 0xB1, 32, 3,    0,
               0xC1, 99,   0,  0x91, 61, 9,    48,   0xB1, 0, 1,    0,  0xC1, 17}));
    ASSERT_EQ(run("--tail none --parameter 304=1"), 0) << err_;
    EXPECT_NE(out_.find("\nPart 1: Sawtooth\nPart 1: Deep One (bank 3, program 17)\n"
                        "Part 2: One (bank 0, program 1)\nPart 3: Five (bank 0, program 5)\n"
                        "Channel 2, bank 3, program 99 at 0:00.250: no such program\n"
                        "Channel 2, bank 131, program 17 at 0:00.500: no such program\n"),
              std::string::npos)
        << out_;
    ASSERT_EQ(run("--tail none --json"), 0) << err_;
    for (const char* piece :
         {"\"programs\": [{\"part\": 1, \"name\": \"Sawtooth\", \"bank\": null, \"program\": "
          "null}, "
          "{\"part\": 1, \"name\": \"Deep One\", \"bank\": 3, \"program\": 17}, {\"part\": 2, ",
          "\"programsNotFound\": [{\"channel\": 2, \"bank\": 3, \"program\": 99, \"seconds\": "
          "0.25}, "
          "{\"channel\": 2, \"bank\": 131, \"program\": 17, \"seconds\": 0.5}]"})
        EXPECT_NE(out_.find(piece), std::string::npos) << piece << " in " << out_;

    // General MIDI looks in banks of its own, with the standard kit for one that is not there;
    // a combi counts as found where it loads; a plug-in that does not tell gets no blame.
    const struct {
        Bytes events;
        const char* mode;
        const char* options;
        const char* says;
    } cases[] = {
        {{0, 0xB2, 32, 3, 0, 0xC2, 5, 0, 0xC9, 40}, "gm", "", ""},
        {{0, 0xB2, 32, 3, 0, 0xC2, 6}, "gm", "", "Channel 3, bank 3, program 6 at 0:00.000"},
        {{0, 0xC2, 17}, "gm", "--gm off", "Channel 3, bank 0, program 17"},
        {{0, 0xBF, 32, 120, 0, 0xCF, 5}, "", "", ""},
        {{0, 0xB2, 32, 120, 0, 0xC2, 5}, "", "", "Channel 3, bank 120, program 5"},
        {{0, 0xC2, 17}, "", "--set \"MIDI Patches=2\"", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string{c.mode} + c.options + c.says);
        song(midi(c.events));
        EXPECT_EQ(run(std::string{"--tail none "} + c.options, std::string{"FAKE_MODE="} + c.mode),
                  0)
            << err_;
        EXPECT_EQ(out_.find("no such program") != std::string::npos, c.says[0] != 0) << out_;
        EXPECT_NE(out_.find(c.says), std::string::npos) << out_;
    }
}

}  // namespace
}  // namespace stratovane
