// Songs through the instrument itself, with a content folder of a few patches.
#include "support/patch_file.h"
#include "tools/render_fixture.h"

namespace stratovane {
namespace {

class RenderPlugIn : public Render {
  protected:
    void SetUp() override {
        Render::SetUp();
        addPatch("005 Mine/000 Soft.fxp", 0.2f);
        addPatch("005 Mine/007 Loud.fxp", 0.6f);
        addPatch("078 Melodies/000 Grand.fxp", 0.5f);
    }
    void addPatch(const std::string& file, float level) {
        putSawPatch(folder_ / "content" / "Patches" / file, level);
    }
    Sound play(const std::string& options) {
        const int exit = runRaw("song.mid -o out.wav --format float --content content " + options);
        EXPECT_EQ(exit, 0) << err_;
        return exit == 0 ? readWav(folder_ / "out.wav") : Sound{};
    }
};

TEST_F(RenderPlugIn, PatchesAndParametersSetTheLevel) {
    song(midi({0, 0x92, 60, 100, 96, 60, 0}));
    const double soft = play("--patch 3=5.0 --tail none").peak();
    EXPECT_NE(out_.find("\nPart 3: Soft (bank 5, program 0)\n"), std::string::npos) << out_;
    const double loud = play("--patch 3=5.7 --tail none").peak();
    EXPECT_GT(soft, 0.001);
    EXPECT_NEAR(loud / soft, 9, 0.2);  // a level's gain is its square
    EXPECT_NEAR(play("--patch 3=5.0 --parameter \"Part 3 Level=0.6\" --tail none").peak(), loud,
                0.01 * loud);
    EXPECT_EQ(play("--tail none --gm off").peak(), 0);
    EXPECT_EQ(err_.substr(0, 28), "Channel 3 plays on a part wi") << err_;
    EXPECT_EQ(runRaw("song.mid -o out.wav --content content --patch 3=5.1"), 3);
    EXPECT_NE(err_.find("--patch 3=5.1: there is no such program"), std::string::npos) << err_;
    EXPECT_EQ(runRaw("--list-parameters --content content --patch 3=5.7"), 0);
    EXPECT_NE(out_.find("\n 306  Part 3  Level           -2.9 dB\n"), std::string::npos);
}

TEST_F(RenderPlugIn, ProgramChangesThatFindNothingAreTold) {
    song(midi(
        {0, 0xB0, 32, 5, 0, 0xC0, 7, 0, 0x90, 60, 90, 96, 0xC0, 8, 0, 0x90, 64, 90, 96, 64, 0}));
    play("--tail none --gm off");
    EXPECT_NE(out_.find("\nPart 1: Loud (bank 5, program 7)\n"
                        "Channel 1, bank 5, program 8 at 0:00.500: no such program\n"),
              std::string::npos)
        << out_;
}

TEST_F(RenderPlugIn, PartsPlayIntoPairsOfTheirOwn) {
    song(midi({0, 0x90, 60, 100, 0, 0x91, 60, 100, 96, 60, 0}));
    play(
        "--patch 1=5.0 --patch 2=5.7 --parameter \"Part 1 Output=0.05\" "
        "--parameter \"Part 2 Output=0.08\" --multi pairs --tail none");
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator{folder_ / "pairs"})
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    ASSERT_EQ(names, (std::vector<std::string>{"01 Strato 1.wav", "02 Strato 2.wav"}));
    const double one = readWav(folder_ / "pairs" / names[0]).peak(),
                 two = readWav(folder_ / "pairs" / names[1]).peak();
    EXPECT_NEAR(two / one, 9, 0.3);
}

TEST_F(RenderPlugIn, GeneralMidiSongsPlayWhatTheyAskFor) {
    // Each sound has a level of its own.
    addPatch("078 Melodies/005 Bell.fxp", 0.3f);
    addPatch("079 Kits/000 Standard.fxp", 0.35f);
    addPatch("079 Kits/008 Room.fxp", 0.45f);
    // A reset, a sound, a kit and one there is not, a drum bank elsewhere, a volume behind its
    // program, a plate, a chorus and its depth, a note of each.
    Bytes events{0, 0xF0, 5, 0x7E, 0x7F, 9, 1, 0xF7};
    const auto add = [&events](const Bytes& more) {
        events.insert(events.end(), more.begin(), more.end());
    };
    add({0, 0xC1, 5, 0, 0xC9, 8, 0, 0xB2, 0, 120, 0, 0xC2, 9, 0, 0xC3, 5, 0, 0xB3, 7, 64});
    for (const Bytes& set : {Bytes{1, 0, 8}, {1, 1, 100}, {2, 0, 4}, {2, 2, 70}, {1, 0, 7}}) {
        add({0, 0xF0, 12, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1});
        add(set);
        add({0xF7});
    }
    add({0, 0x99, 60, 100, 96, 60, 0, 0, 0x91, 60, 100, 96, 60, 0});
    song(midi(events));
    const Sound played = play("--save-bank all.fxb --tail none");
    EXPECT_GT(played.peak(), 0.001);
    EXPECT_NE(out_.find("Part 10: Room (bank 79, program 8)"), std::string::npos) << out_;
    EXPECT_NE(out_.find("Part 2: Bell (bank 78, program 5)"), std::string::npos) << out_;
    EXPECT_EQ(runRaw("--list-parameters --content content --bank all.fxb"), 0) << err_;
    for (const char* line : {"Part 1  Level           -6.0 dB", "Part 2  Level           -14.9 d",
                             "Part 3  Level           -12.2 d", "Part 4  Level           -5.9 dB",
                             "Part 10  Level          -7.9 dB", "FX1  Time               1.11 s",
                             "FX1  Output Level       -2.6 dB", "FX3  Depth              70 %",
                             "FX3  Feedback           80 %", "FX3  Output Level       +1.3 dB"})
        EXPECT_NE(out_.find(line), std::string::npos) << line << out_;
}

TEST_F(RenderPlugIn, WhatIsHeldEndsWithTheSong) {
    song(
        midi({0, 0xB0, 64, 127, 0, 0x90, 60, 100, 96, 60, 0, 0, 0x90, 64, 100, 96, 0xFF, 0x2F, 0}));
    EXPECT_LT(play("--patch 1=5.0").frames(), 44100 * 5u);
    // Nothing of arpeggiators when none is on.
    play("--patch 1=5.0 --events e.txt");
    EXPECT_EQ(contents(folder_ / "e.txt"), "");
}

}  // namespace
}  // namespace stratovane
