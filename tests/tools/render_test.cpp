// Songs through a plug-in of known sound that keeps a log.
#include "tools/render_fixture.h"

namespace stratovane {
namespace {

TEST_F(Render, ANoteSoundsOnItsFrameAtItsPitch) {
    const Sound file = sound("--format float --block 1000");
    ASSERT_EQ(file.channels, 2);
    EXPECT_EQ(file.rate, 44100);
    const auto first = std::find_if(file.samples.begin(), file.samples.end(),
                                    [](double sample) { return sample != 0; });
    EXPECT_EQ(static_cast<std::size_t>(first - file.samples.begin()) / 2, noteFrame);
    int crossings = 0;
    for (std::size_t frame = noteFrame + 1; frame < noteFrame + 44100; ++frame)
        crossings += (file.at(frame - 1) < 0) != (file.at(frame) < 0);
    EXPECT_NEAR(crossings, 880, 1);
    EXPECT_DOUBLE_EQ(file.at(noteFrame + 10), -file.at(noteFrame + 10, 1));
    EXPECT_NE(out_.find("Song 0:02.500"), std::string::npos) << out_;
    EXPECT_NE(out_.find("At most 1 voices"), std::string::npos) << out_;
    EXPECT_EQ(err_, "");
}

TEST_F(Render, TheFileIsTheSameForAnyBlockSize) {
    song(midi({0,    0xFF, 0x51, 3,    6,    0, 7, 0,  0x90, 60, 90,   31, 0x90,
               67,   90,   7,    0xFF, 0x51, 3, 9, 9,  9,    50, 0xC0, 5,  0,
               0x90, 48,   70,   91,   60,   0, 3, 67, 0,    0,  48,   0}));
    std::string first;
    for (const char* block : {"1", "37", "512", "8192"}) {
        ASSERT_EQ(run(std::string{"--format float --rate 8000 --block "}.append(block)), 0) << err_;
        const std::string file = contents(folder_ / "out.wav");
        if (first.empty()) first = file;
        EXPECT_TRUE(file == first) << block;
    }
    EXPECT_GT(first.size(), 50000u);
}

TEST_F(Render, TheTailEndsWhereItIsAskedTo) {
    const struct {
        const char* format;
        double step;
    } formats[] = {{"wav16", 0x1p-15}, {"wav24", 0x1p-23}, {"float", 0x1p-24}};
    for (const auto& [format, step] : formats) {
        SCOPED_TRACE(format);
        const Sound file = sound(std::string{"--rate 8000 --format "}.append(format));
        ASSERT_GT(file.frames(), 16000);
        // The release falls by 0.999 a frame; the last cosine may be away from its top.
        const double expected = 16000 + std::log(step) / std::log(0.999);
        EXPECT_NEAR(static_cast<double>(file.frames()), expected, 60);
        EXPECT_GE(std::fabs(file.at(file.frames() - 1)), step);
    }
    EXPECT_EQ(sound("--rate 8000 --tail none").frames(), 20000u);
    EXPECT_EQ(sound("--rate 8000 --tail 1.5").frames(), 32000u);
    song(midi({0, 0x90, 69, 1, 96, 0xFF, 0x2F, 0}));
    EXPECT_LT(sound("--rate 8000").frames(), 8000 * 2u);  // a held note ends with the song
    EXPECT_EQ(run("--rate 8000", "FAKE_MODE=endless"), 0) << err_;
    EXPECT_EQ(readWav(folder_ / "out.wav").frames(), 8000 / 2 + 60 * 8000u);
    song(midi({96, 0xFF, 0x2F, 0}));
    EXPECT_EQ(sound("--rate 8000").frames(), 4000u);  // silence keeps the song's length
    EXPECT_NE(out_.find("Peak -oo dBFS"), std::string::npos) << out_;
}

TEST_F(Render, FormatsHoldTheSameSound) {
    const Sound exact = sound("--format float --tail none");
    for (const char* format : {"wav16", "wav24"}) {
        const double step = format == std::string_view{"wav16"} ? 0x1p-15 : 0x1p-23;
        const Sound file = sound(std::string{"--tail none --format "}.append(format));
        ASSERT_EQ(file.samples.size(), exact.samples.size());
        for (std::size_t i = 0; i < file.samples.size(); ++i) {
            const double wanted = std::min(exact.samples[i], 1 - step);  // the cosine's top clips
            ASSERT_LE(std::fabs(file.samples[i] - wanted), step / 2) << i;
        }
    }
    ASSERT_EQ(runRaw(std::string{"song.mid -o out.flac --tail none --plugin "}.append(fake)), 0);
    const std::string flac = contents(folder_ / "out.flac");
    ASSERT_GT(flac.size(), 42u);
    EXPECT_EQ(flac.substr(0, 4), "fLaC");
    std::uint64_t frames = 0;  // 36 bits of the stream's description
    for (std::size_t at = 21; at < 26; ++at)
        frames = frames << 8 | static_cast<std::uint8_t>(flac[at]);
    EXPECT_EQ(frames & 0xFFFFFFFFF, endFrame);
}

TEST_F(Render, GainAndNormalizing) {
    EXPECT_NEAR(sound("--tail 0.1 --format float --gain -12").peak(), std::pow(10, -0.6), 1e-6);
    EXPECT_NEAR(sound("--tail 0.1 --format float --gain -20 --normalize").peak(), 0.1, 1e-6);
    song(midi({0, 0x90, 69, 30, 96, 69, 0}));
    EXPECT_EQ(sound("--tail 0.1 --normalize").peak(), 32767.0 / 32768);
    EXPECT_NE(out_.find("nothing clipped"), std::string::npos) << out_;
    EXPECT_EQ(sound("--tail 0.1 --gain 30").peak(), 1);
    EXPECT_NE(out_.find(" samples clipped"), std::string::npos) << out_;
    EXPECT_GT(sound("--tail 0.1 --gain 30 --format float").peak(), 5);
    EXPECT_NE(out_.find("above full scale (kept)"), std::string::npos) << out_;
}

TEST_F(Render, OutputPairs) {
    song(midi({0, 0xC1, 1, 0, 0x91, 69, 100, 96, 69, 0}));
    EXPECT_EQ(sound("--tail none").peak(), 0);
    EXPECT_NEAR(sound("--tail none --output-pair 2").peak(), 100 / 127.0, 1e-3);
    const Sound all = sound("--output-pair all --tail none --set Outputs=SSM");
    EXPECT_EQ(all.channels, 6);
    EXPECT_EQ(all.at(0, 0), 0);
    EXPECT_NEAR(all.at(0, 2), 100 / 127.0, 1e-4);
    EXPECT_EQ(run("--output-pair 3 --set Outputs=SS"), 1);
    EXPECT_NE(err_.find("no output pair 3: the plug-in has 2"), std::string::npos) << err_;
    EXPECT_EQ(run("--output-pair all --format flac --set Outputs=SSSSS"), 1);
}

TEST_F(Render, BlocksEndAtLoadsAndTempoChanges) {
    // At beat 1: program, volume behind it, another program; a message in pieces at beat 2; a new
    // tempo and 3/4 at beat 3.
    song(midi({96, 0xC0, 9, 0,  0xB0, 7,  80,   0,    0xC0, 3,    48,   0xF0, 2, 126,  127,
               48, 0xF7, 2, 9,  0xF7, 96, 0xFF, 0x51, 3,    0x0F, 0x42, 0x40, 0, 0xFF, 0x58,
               4,  3,    2, 24, 8,    96, 0x90, 60,   1,    96,   0xFF, 0x2F, 0}));
    sound("--rate 8000 --block 3000 --tail none");
    const std::string before = " tempo 120 bar 0 4/4 flags 11778|i|";
    const std::string behind = " tempo 60 bar 3 3/4 flags 11778|i|";
    const std::string blocks[] = {"host Stratovane Render|mains 1|i|",
                                  "render 3000 at 0",
                                  before,
                                  "midi 1000: 192 9 0|render 1000 at 0.75",
                                  before,
                                  "i|i|",
                                  "midi 0: 176 7 80|midi 0: 192 3 0|render 0 at 1",
                                  before,
                                  "i|i|",
                                  "render 3000 at 1",
                                  before,
                                  "exclusive 1000: 240 126 127 9 247|render 1000 at 1.75",
                                  before,
                                  "render 3000 at 2",
                                  before,
                                  "render 1000 at 2.75",
                                  before,
                                  "render 3000 at 3",
                                  behind,
                                  "render 3000 at 3.375",
                                  behind,
                                  "midi 2000: 144 60 1|render 3000 at 3.75",
                                  behind,
                                  "render 3000 at 4.125",
                                  behind,
                                  "render 3000 at 4.5",
                                  behind,
                                  "midi 1000: 176 64 0|midi 1000: 176 66 0|",
                                  "midi 1000: 176 123 0|render 1000 at 4.875",
                                  behind,
                                  "mains 0|close|"};
    std::string expected;
    for (const std::string& block : blocks) expected += block;
    EXPECT_EQ(told({"host", "idle", "mains", "render", "midi", "exclusive", "close"}), expected);
}

TEST_F(Render, ManyEventsOnOneFrameComeInPortions) {
    Bytes events;
    for (std::uint8_t i = 0; i < 250; ++i)
        for (int byte : {0, 0xB0, 10, i % 128}) events.push_back(static_cast<std::uint8_t>(byte));
    song(midi(events));
    sound("--tail 0.1");
    std::istringstream lines{log_};
    int most = 0, inBlock = 0, all = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("render")) inBlock = 0;
        if (!line.starts_with("midi") || line.find("176 10 ") == std::string::npos) continue;
        EXPECT_TRUE(line.starts_with("midi 0: ")) << line;
        EXPECT_TRUE(line.ends_with(" " + std::to_string(all % 250 % 128))) << line;
        most = std::max(most, ++inBlock);
        ++all;
    }
    EXPECT_EQ(all, 250);
    EXPECT_LE(most, 127);
}

TEST_F(Render, SmpteSongsKeepTheirTime) {
    song(midi({50, 0x90, 69, 127, 0, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40, 50, 0x80, 69, 0}, {231, 40}));
    const Sound file = sound("--rate 8000 --tail none --format float");
    EXPECT_EQ(file.frames(), 800u);  // 100 ticks of a millisecond
    EXPECT_EQ(file.at(399), 0);
    EXPECT_GT(file.at(400), 0);
    EXPECT_NE(log_.find("at 0 tempo 120 "), std::string::npos);
    EXPECT_EQ(log_.find("tempo 60 "), std::string::npos);
}

TEST_F(Render, OneChannelForAll) {
    // Two channels hold the same note; only the later note-off counts. Controllers of channel 2,
    // banks, volume, programs, drums and exclusive messages stay out.
    song(midi({0,  0xF0, 2,    5,  0xF7, 0,    0xB0, 0, 1,  0,    0xB0, 7,  127, 0,    0xB0, 1,
               99, 0,    0xB1, 7,  50,   0,    0xC0, 4, 0,  0x91, 60,   90, 0,   0x92, 60,   91,
               0,  0x99, 36,   99, 10,   0x91, 60,   0, 10, 0x82, 60,   0,  0,   0x89, 36,   0}));
    sound("--channel 1 --block 8192 --tail none");
    EXPECT_EQ(told({"midi", "exclusive"}),
              "midi 0: 176 1 99|midi 0: 144 60 90|midi 0: 144 60 91|midi 4594: 128 60 0|"
              "midi 4594: 176 64 0|midi 4594: 176 66 0|midi 4594: 176 123 0|");
    EXPECT_EQ(err_, "");
}

TEST_F(Render, NamesChannelsWithoutAPatch) {
    song(midi({0, 0x90, 60, 9, 0,    0x92, 60, 9, 0,    0x94, 1, 0,
               0, 0xC5, 7,  0, 0x95, 60,   9,  0, 0x99, 60,   9}));
    sound("--tail none");
    EXPECT_EQ(err_.substr(0, 36), "Channels 3, 10 play on parts without") << err_;
    EXPECT_NE(err_.find("--channel 1"), std::string::npos);
    EXPECT_EQ(run("--tail none --quiet --json"), 0);
    EXPECT_EQ(err_, "");
    EXPECT_NE(out_.find("\"channelsWithoutPatch\": [3, 10]}"), std::string::npos) << out_;
    EXPECT_EQ(run("--tail none --quiet"), 0);
    EXPECT_EQ(out_ + err_, "");

    song(midi({0, 0x90, 60, 9, 96, 0x80, 60, 0, 0, 0xF0, 2, 1, 0xF7, 0, 0x90, 60, 9}));
    sound("--tail none");
    EXPECT_EQ(err_.substr(0, 39), "Channel 1 plays on a part without a pat") << err_;
}

TEST_F(Render, SettingsStayPrivate) {
    const std::string users = "[Software\\Taldrimor\\Stratovane 2]\nOutputs=S\nLift=12\n";
    put(folder_ / "users.ini", users);
    const std::string variables = "STRATOVANE_SETTINGS=users.ini";
    EXPECT_EQ(run("--tail none", variables), 0);
    EXPECT_EQ(told({"setting"}), "");
    EXPECT_EQ(run("--tail none --user-settings --set \"Lift=0\" --set \"Vel Sens=5\" --content .",
                  variables),
              0);
    EXPECT_EQ(told({"setting"}),
              "setting [Software\\Taldrimor\\Stratovane 2]|setting Outputs=S|"
              "setting Lift=0|setting Vel Sens=5|setting Content Location=" +
                  folder_.string() + "/.|");
    EXPECT_EQ(contents(folder_ / "users.ini"), users);
}

TEST_F(Render, ListsPrograms) {
    EXPECT_EQ(runRaw(std::string{"--list-programs --plugin "}.append(fake)), 0);
    EXPECT_EQ(out_,
              "Bank 0: Others\n    0   1  One\n    0   5  Five\n    0   7  Seven\n"
              "Bank 3: Basses\n    3  17  Deep One\n    3  18  Caf\xC3\xA9\n"
              "Bank 120: Others\n  120   5  Evening\n");
}

TEST_F(Render, FailuresHaveTheirCodeAndLeaveNoFile) {
    put(folder_ / "bad.mid", midi({0, 0x90, 60, 0x90}));
    put(folder_ / "short.mid", "MThd");
    fs::create_directory(folder_ / "folder");
    const std::string plugIn = std::string{" --plugin "}.append(fake);
    const struct {
        const char* arguments;
        const char* variables;
        int exit;
        const char* says;
    } cases[] = {
        {"", "", 1, "which song"},
        {"song.mid", "", 1, "where to"},
        {"song.mid -o song.mid", "", 1, "replace the song"},
        {"song.mid -o x.wav --rate 7999", "", 1, "--rate"},
        {"song.mid -o x.wav --block 0", "", 1, "--block"},
        {"song.mid -o x.wav --block 8193", "", 1, "--block"},
        {"song.mid -o x.wav --tail -1", "", 1, "--tail"},
        {"song.mid -o x.wav --tail nan", "", 1, "--tail"},
        {"song.mid -o x.wav --gain nan", "", 1, "--gain"},
        {"song.mid -o x.wav --format mp3", "", 1, "--format"},
        {"song.mid -o x.wav --channel 17", "", 1, "--channel"},
        {"song.mid -o x.wav --output-pair 0", "", 1, "--output-pair"},
        {"song.mid -o x.wav --set Volume=1", "", 1, "no setting \"Volume\""},
        {"song.mid -o x.wav --content nowhere", "", 1, "no folder"},
        {"song.mid -o x.wav --frobnicate", "", 1, "--frobnicate"},
        {"none.mid -o x.wav", "", 2, "no such file"},
        {"folder -o x.wav", "", 2, "no file"},
        {"short.mid -o x.wav", "", 2, "damaged at byte 4"},
        {"bad.mid -o x.wav", "", 2, "bad.mid: damaged at byte 25: track 1 of 1: a data byte"},
        {"song.mid -o x.wav", "FAKE_MODE=refuse", 3, "refused"},
        {"song.mid -o none/x.wav", "", 4, "none/x.wav"},
        {"song.mid -o folder", "", 4, "is no file"},
    };
    const auto before = [&] {
        runRaw("", "");
        return files();
    }();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        EXPECT_EQ(runRaw(c.arguments + plugIn, c.variables), c.exit);
        EXPECT_TRUE(err_.starts_with("stratovane-render: ")) << err_;
        EXPECT_NE(err_.find(c.says), std::string::npos) << err_;
        EXPECT_EQ(out_, "");
        fs::remove(folder_ / "log");
        EXPECT_EQ(files(), before);
    }
    EXPECT_EQ(runRaw("song.mid -o x.wav --plugin ./none.so"), 3);
    EXPECT_EQ(runRaw("song.mid -o x.wav --plugin song.mid"), 3);

    put(folder_ / "out.wav", "what was there");
    EXPECT_EQ(runRaw("bad.mid -o out.wav" + plugIn), 2);
    EXPECT_EQ(contents(folder_ / "out.wav"), "what was there");
    EXPECT_EQ(run("--tail none", "FAKE_MODE=nan"), 0);
    EXPECT_NE(err_.find("were no numbers"), std::string::npos) << err_;
}

TEST_F(Render, JsonHoldsTheFigures) {
    EXPECT_EQ(run("--json --tail none --gain -6"), 0);
    for (const char* piece :
         {"{\"output\": \"out.wav\", \"format\": \"wav16\", \"sampleRate\": 44100, \"channels\": 2",
          "\"songSeconds\": 2.5,", "\"fileFrames\": 110250,", "\"peakDbfs\": -6", "\"rmsDbfs\": -1",
          "\"clippedSamples\": 0,", "\"highestVoices\": 1,", "\"channelsWithoutPatch\": []}"})
        EXPECT_NE(out_.find(piece), std::string::npos) << piece << " in " << out_;
}

}  // namespace
}  // namespace stratovane
