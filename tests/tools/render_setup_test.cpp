// What a song finds in the plug-in: presets, banks, patches, General MIDI, parameters.
#include "tools/program_file_bytes.h"
#include "tools/render_fixture.h"

namespace stratovane {
namespace {

class RenderSetup : public Render {
  protected:
    /// A song with programs, banks and messages on two channels, and one note.
    void songOfPrograms() {
        song(midi({0,  0xF0, 5,    126,  127,  9,    1,    0xF7, 0,    0xF0, 5,    126, 127,
                   9,  2,    0xF7, 0,    0xF0, 3,    125,  1,    0xF7, 0,    0xB0, 0,   0,
                   0,  0xB0, 32,   3,    0,    0xC0, 17,   0,    0xB0, 7,    90,   0,   0xB1,
                   32, 3,    0,    0xC1, 18,   0,    0x90, 60,   99,   9,    0x90, 60,  0}));
    }
    std::string messages(const std::string& options, const std::string& variables = "") {
        EXPECT_EQ(run(options + " --block 8192 --tail none --quiet", variables), 0) << err_;
        return told({"midi", "exclusive"});
    }
    static constexpr const char* ending =
        "midi 2067: 176 64 0|midi 2067: 176 66 0|midi 2067: 176 123 0|";
};

TEST_F(RenderSetup, ProgramsOfTheSongGiveWayToThoseOfTheCommandLine) {
    songOfPrograms();
    const std::string notes = "midi 0: 176 7 90|midi 0: 144 60 99|midi 2067: 144 60 0|";
    const std::string all =
        "exclusive 0: 240 126 127 9 1 247|exclusive 0: 240 126 127 9 2 247|"
        "exclusive 0: 240 125 1 247|midi 0: 176 0 0|midi 0: 176 32 3|midi 0: 192 17 0|"
        "midi 0: 176 7 90|midi 0: 177 32 3|midi 0: 193 18 0|";
    const std::string noteAlone = "midi 0: 144 60 99|midi 2067: 144 60 0|";
    const std::string ends = ending;
    const std::string endsTwo =
        ends + "midi 2067: 177 64 0|midi 2067: 177 66 0|midi 2067: 177 123 0|";
    put(folder_ / "a.fxp", file(false, chunkOf(1200)));
    put(folder_ / "a.fxb", file(true, chunkOf(1500)));
    const std::string other = "exclusive 0: 240 125 1 247|";
    EXPECT_EQ(messages(""), all + noteAlone + endsTwo);
    for (const std::string loads : {"--preset a.fxp", "--bank a.fxb"}) {
        EXPECT_EQ(messages(loads), other + notes + ends) << loads;
        EXPECT_EQ(messages(loads + " --keep-programs"), all + noteAlone + endsTwo) << loads;
    }
    const std::string patch = "midi 0: 177 0 0|midi 0: 177 32 3|midi 0: 193 17 0|";
    EXPECT_EQ(messages("--patch 2=3.17"), patch + other + notes + ends);
    EXPECT_EQ(messages("--patch 2=3.17 --keep-programs"),
              patch + "midi 0: 177 0 0|midi 0: 177 32 0|" + all + noteAlone + endsTwo);
    EXPECT_EQ(messages("--channel 1"), noteAlone + ends);
    EXPECT_EQ(messages("--channel 1 --keep-programs"),
              "exclusive 0: 240 126 127 9 1 247|exclusive 0: 240 126 127 9 2 247|"
              "exclusive 0: 240 125 1 247|midi 0: 176 0 0|midi 0: 176 32 3|midi 0: 192 17 0|" +
                  noteAlone + ends);
}

TEST_F(RenderSetup, GeneralMidiComesFirstWhereItShould) {
    const Bytes plain{96, 0x90, 69, 127, 9, 69, 0};
    const auto resetting = [&](std::uint8_t device, std::uint8_t which) {
        Bytes events = plain;
        for (std::uint8_t byte :
             {std::uint8_t{0xF7}, which, std::uint8_t{9}, device, std::uint8_t{126},
              std::uint8_t{5}, std::uint8_t{0xF0}, std::uint8_t{0}})
            events.insert(events.begin(), byte);
        return events;
    };
    put(folder_ / "a.fxp", file(false, chunkOf(1200)));
    put(folder_ / "a.fxb", file(true, chunkOf(1500)));
    const struct {
        const char* options;
        const char* mode;
        Bytes events;
        bool sent;
    } cases[] = {
        {"", "gm", plain, true},
        {"--gm auto", "gm", plain, true},
        {"", "", plain, false},  // the content has no such bank
        {"", "gm", resetting(127, 1), false},
        {"", "gm", resetting(127, 3), false},
        {"", "gm", resetting(127, 2), false},
        {"", "gm", resetting(16, 1), true},  // to another device
        {"", "gm", resetting(127, 9), true},
        {"--gm off", "gm", plain, false},
        {"--gm on", "", plain, true},
        {"--gm on", "gm", resetting(127, 1), true},
        {"--preset a.fxp", "gm", plain, false},
        {"--bank a.fxb", "gm", plain, false},
        {"--patch 2=3.17", "gm", plain, false},
        {"--channel 1", "gm", plain, false},
        {"--channel 1 --keep-programs", "gm", plain, false},
        {"--gm on --preset a.fxp", "gm", plain, true},
        {"--gm on --channel 1", "gm", plain, true},
        {"--gm on --patch 3=78.5", "gm", plain, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string{c.options} + " " + c.mode);
        song(midi(c.events));
        ASSERT_EQ(run(std::string{c.options} + " --tail none", std::string{"FAKE_MODE="} + c.mode),
                  0)
            << err_;
        // Before the first block with frames and before what else is loaded.
        const std::size_t at = log_.find("exclusive 0: 240 126 127 9 1 247\nrender 0 ");
        const std::size_t own = log_.find("exclusive 0: 240 126 127 9 1 247\nrender 0 ", at + 1);
        const bool first =
            at != std::string::npos && at < log_.find("midi") && at < log_.find("chunk");
        const bool songsOwn = c.events[6] == 1 && c.events[4] == 127;
        EXPECT_EQ(first && (!songsOwn || own != std::string::npos), c.sent) << log_;
    }
}

TEST_F(RenderSetup, ChunksComeAsTheFilesHoldThem) {
    for (const bool bank : {false, true}) {
        const std::string chunk = chunkOf(bank ? 3000 : 1234, bank ? 11 : 5);
        put(folder_ / "in.file", file(bank, chunk));
        const std::string load = bank ? "--bank in.file" : "--preset in.file";
        // Back as they were, with the plug-in ready before the song begins.
        ASSERT_EQ(run(load + " --tail none" +
                      (bank ? " --save-bank out.file" : " --save-preset 1 out.file")),
                  0)
            << err_;
        EXPECT_EQ(contents(folder_ / "out.file"), file(bank, chunk));
        EXPECT_TRUE(told({"chunk", "idle", "mains 1"})
                        .starts_with(bank ? "mains 1|i|chunk bank 3000 part 0|i|i|i|"
                                          : "mains 1|i|chunk preset 1234 part 0|i|i|i|"))
            << log_;
        EXPECT_LT(log_.find("chunk"), log_.find("midi"));
    }
    // A preset is for the part that plays.
    put(folder_ / "a.fxp", file(false, chunkOf(1200)));
    EXPECT_EQ(run("--tail none --preset a.fxp --channel 5 --save-preset 5 out.fxp"), 0) << err_;
    EXPECT_NE(log_.find("chunk preset 1200 part 4\n"), std::string::npos);
    EXPECT_EQ(contents(folder_ / "out.fxp"), file(false, chunkOf(1200)));
    // A bank, a preset in one part of it and a patch in another go together.
    put(folder_ / "a.fxb", file(true, chunkOf(1500)));
    EXPECT_EQ(run("--tail none --preset a.fxp --bank a.fxb --patch 3=3.17 --effect Phaser "
                  "--parameter 0=1"),
              0)
        << err_;
    EXPECT_TRUE(told({"chunk", "midi 0: 194", "effect", "parameter"})
                    .starts_with("chunk bank 1500 part 0|midi 0: 194 17 0|"
                                 "chunk preset 1200 part 0|effect 0: 40 "))
        << log_;
    EXPECT_LT(log_.find("effect"), log_.find("parameter 0 1\n"));
    EXPECT_LT(log_.find("parameter 0 1\n"), log_.find("144 69 127"));
}

TEST_F(RenderSetup, PatchesLoadFromTheLibraryAndSoundOnTheirChannel) {
    song(midi({0, 0x91, 69, 100, 96, 69, 0}));
    EXPECT_NEAR(sound("--patch 2=3.17 --patch 16=0.5 --output-pair 2 --tail none").peak(),
                100 / 127.0, 1e-3);
    EXPECT_NE(out_.find("\nPart 2: Deep One (bank 3, program 17)\n"), std::string::npos) << out_;
    // A combi fills all parts, so it comes before the others.
    sound("--patch 2=3.18 --patch 16=120.5 --output-pair 2 --tail none");
    EXPECT_EQ(told({"midi 0: 193", "midi 0: 207"}), "midi 0: 207 5 0|midi 0: 193 18 0|");
    EXPECT_NE(out_.find("Part 2: Caf\xC3\xA9 (bank 3, program 18)\n"), std::string::npos) << out_;
    const struct {
        const char* options;
        const char* mode;
        const char* says;
    } refused[] = {
        {"--patch 2=3.19", "", "--patch 2=3.19: there is no such program"},
        {"--patch 2=120.5", "", "the combi was not loaded; part 16 takes combis"},
        {"--patch 2=3.17 --gm on", "gm", "part 2 got 78.0 instead; in General MIDI mode"},
        {"--patch 2=3.17 --set \"MIDI Patches=2\"", "", "--set \"MIDI Patches=ON\""},
    };
    for (const auto& c : refused) {
        fs::remove(folder_ / "out.wav");
        EXPECT_EQ(run(std::string{"--tail none "} + c.options, std::string{"FAKE_MODE="} + c.mode),
                  3);
        EXPECT_NE(err_.find(c.says), std::string::npos) << err_;
        EXPECT_FALSE(fs::exists(folder_ / "out.wav"));
    }
}

TEST_F(RenderSetup, ParametersByIndexAndName) {
    EXPECT_EQ(runRaw(std::string{"--list-parameters --plugin "} + fake), 0);
    EXPECT_TRUE(
        out_.starts_with("   0  Master Volume           0%\n   1  Part 1                  0%\n"
                         "   2  Part 1  Level           50%\n"))
        << out_.substr(0, 200);
    EXPECT_EQ(std::count(out_.begin(), out_.end(), '\n'), 2528);
    // As presets, patches and other parameters leave them.
    EXPECT_EQ(
        runRaw(std::string{"--list-parameters --patch 2=3.17 --parameter 154=0.25 --plugin "} +
               fake),
        0);
    EXPECT_NE(out_.find("\n 154  Part 2  Level           25%\n"), std::string::npos);

    const double full = sound("--tail none --format float").peak();
    for (const char* name :
         {"2", "\"Part 1  Level\"", "\"  part 1  LEVEL \"", "\"Part 1 Level\""}) {
        const std::string option =
            std::string{"--tail none --format float --parameter "} + name + "=0.25";
        EXPECT_NEAR(sound(option).peak(), full / 2, 1e-6) << name;
    }
    EXPECT_EQ(run("--tail none --parameter 0=0.5 --parameter 2431=1 --parameter 0=0"), 0);
    EXPECT_EQ(told({"parameter"}), "parameter 0 0.5|parameter 2431 1|parameter 0 0|");
    for (const auto& [option, says] :
         {std::pair{"2528=0", "no parameter 2528; they are numbered from 0 to 2527"},
          std::pair{"99999999999=0", "no parameter 99999999999"},
          std::pair{"Zither=0", "no parameter \"Zither\"; --list-parameters"},
          std::pair{"\"Part 3\"=0.5",
                    "150 parameters are called \"Part 3\", the first has the index 305"}}) {
        EXPECT_EQ(run(std::string{"--parameter 0=1 --parameter "} + option), 1);
        EXPECT_NE(err_.find(says), std::string::npos) << err_;
        EXPECT_EQ(told({"parameter"}), "");
    }
}

TEST_F(RenderSetup, MistakesAreNamed) {
    const std::string preset = file(false, chunkOf(1200)), bank = file(true, chunkOf(1500));
    put(folder_ / "a.fxp", preset);
    put(folder_ / "a.fxb", bank);
    put(folder_ / "cut.fxp", preset.substr(0, 900));
    put(folder_ / "head.fxb", bank.substr(0, 100));
    put(folder_ / "version.fxp", std::string{preset}.replace(15, 1, "\2"));
    put(folder_ / "other.fxp", std::string{preset}.replace(16, 4, "Abcd"));
    put(folder_ / "small.fxp", file(false, chunkOf(999)));
    put(folder_ / "tag.fxb", file(true, std::string(1200, 'x')));
    fs::create_directory(folder_ / "folder");
    const struct {
        const char* options;
        int exit;
        const char* says;
    } cases[] = {
        {"--preset none.fxp", 2, "none.fxp: there is no such file"},
        {"--preset folder", 2, "folder: this is no file"},
        {"--preset song.mid", 2, "song.mid is not a Stratovane file!"},
        {"--preset version.fxp", 2, "version.fxp is not a Stratovane file!"},
        {"--preset other.fxp", 2, "other.fxp is not a Stratovane file!"},
        {"--preset cut.fxp", 2, "cut.fxp: the file ends before its chunk does"},
        {"--bank head.fxb", 2, "head.fxb is not a Stratovane file!"},
        {"--preset a.fxb", 2, "a.fxb is a bank; load it with --bank"},
        {"--bank a.fxp", 2, "a.fxp is a preset; load it with --preset"},
        {"--preset small.fxp", 3,
         "small.fxp: the plug-in refuses it: Error loading chunk (QvRR, 999 bytes)"},
        {"--bank tag.fxb", 3,
         "tag.fxb: the plug-in refuses it: Error loading chunk (xxxx, 1200 bytes)"},
        {"--patch 0=1.1", 1, "--patch takes PART=BANK.PROGRAM"},
        {"--patch 17=1.1", 1, "--patch takes"},
        {"--patch 1=128.1", 1, "--patch takes"},
        {"--patch 1=1.128", 1, "--patch takes"},
        {"--patch 1=1", 1, "--patch takes"},
        {"--patch 1.1", 1, "--patch takes"},
        {"--patch 1.1=2", 1, "--patch takes"},
        {"--patch 1=2.x", 1, "--patch takes"},
        {"--patch 1=1.2.3", 1, "--patch takes"},
        {"--patch 1=1.1 --patch 1=1.2", 1, "part 1 cannot have two patches"},
        {"--patch 1=1.1 --preset a.fxp", 1, "part 1 cannot have both --preset and --patch"},
        {"--channel 2 --patch 2=1.1 --preset a.fxp", 1, "part 2 cannot have both"},
        {"--patch 16=120.1 --patch 15=121.1", 1, "each combi fills all parts"},
        {"--patch 16=120.1 --bank a.fxb", 1, "give --bank or a --patch"},
        {"--patch 16=120.1 --gm on", 1, "--gm on sets up all parts"},
        {"--bank a.fxb --gm on", 1, "--gm on sets up all parts"},
        {"--gm yes", 1, "--gm takes auto, on or off"},
        {"--parameter 2", 1, "--parameter takes INDEX-OR-NAME=VALUE"},
        {"--parameter =0.5", 1, "--parameter takes"},
        {"--parameter 2=1.01", 1, "from 0 to 1, not \"2=1.01\""},
        {"--parameter 2=-0.1", 1, "--parameter takes"},
        {"--parameter 2=nan", 1, "--parameter takes"},
        {"--save-preset 17 x.fxp", 1, "a part from 1 to 16"},
        {"--save-preset 0 x.fxp", 1, "a part from 1 to 16"},
        {"--save-preset x.fxp 1", 1, "--save-preset"},
        {"--save-preset 1 --quiet", 1, "--save-preset needs a part and a file"},
        {"--save-preset 1 x --save-bank x", 1, "x cannot take two outputs"},
        {"--events x.wav", 1, "x.wav cannot take two outputs"},
        {"--save-bank ./song.mid", 1, "replace the song"},
        {"--preset a.fxp --events a.fxp", 1, "a.fxp is loaded"},
        {"--save-bank none/x.fxb", 4, "none/x.fxb cannot be written"},
        {"--save-preset 1 folder", 4, "folder cannot be written: it exists and is no file"},
        {"--events none/x.txt", 4, "none/x.txt cannot be written"},
        {"--multi song.mid", 4, "the folder song.mid cannot be made"},
    };
    runRaw("");
    const auto before = files();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.options);
        EXPECT_EQ(runRaw(std::string{"song.mid -o x.wav "} + c.options + " --plugin " + fake),
                  c.exit);
        EXPECT_TRUE(err_.starts_with("stratovane-render: ")) << err_;
        EXPECT_NE(err_.find(c.says), std::string::npos) << err_;
        EXPECT_EQ(out_, "");
        fs::remove(folder_ / "log");
        EXPECT_EQ(files(), before);
    }
    put(folder_ / "in.wav", "RIFF____WAVE");
    for (const char* option :
         {"--preset a", "--bank a", "--patch 1=1.1", "--gm on", "--multi m", "--keep-programs",
          "--parameter 0=0", "--save-bank a", "--save-preset 1 a", "--events a"}) {
        EXPECT_EQ(runRaw(std::string{"in.wav -o x.wav --effect Delay "} + option), 1);
        EXPECT_NE(err_.find(" is for a song; this is a sound file"), std::string::npos) << err_;
    }
}

}  // namespace
}  // namespace stratovane
