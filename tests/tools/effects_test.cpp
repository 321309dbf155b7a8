// Effects on the command line: sound files through them, songs with them, their list.
#include <limits>

#include "effects/catalogue.h"
#include "measure/measure.h"
#include "tools/render_fixture.h"

namespace stratovane {
namespace {

/// A WAV file of floats.
std::string wav(const std::vector<float>& samples, int rate, int channels) {
    std::string file;
    const auto number = [&](std::size_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) file.push_back(static_cast<char>(value >> (8 * i)));
    };
    const std::size_t frame = 4 * static_cast<std::size_t>(channels);
    file.append("RIFF");
    number(36 + 4 * samples.size(), 4);
    file.append("WAVEfmt ");
    number(16, 4);
    number(3, 2);
    number(static_cast<std::size_t>(channels), 2);
    number(static_cast<std::size_t>(rate), 4);
    number(static_cast<std::size_t>(rate) * frame, 4);
    number(frame, 2);
    number(32, 2);
    file.append("data");
    number(4 * samples.size(), 4);
    for (float sample : samples) number(std::bit_cast<std::uint32_t>(sample), 4);
    return file;
}

class Effects : public Render {
  protected:
    /// A second with one loud sample at frame 10.
    void impulse(int rate = 44100, int channels = 2) {
        std::vector<float> samples(static_cast<std::size_t>(rate * channels));
        for (int channel = 0; channel < channels; ++channel)
            samples[static_cast<std::size_t>(10 * channels + channel)] = 0.5f;
        put(folder_ / "in.wav", wav(samples, rate, channels));
    }
    Sound through(const std::string& options) {
        const int exit = runRaw("in.wav -o out.wav --format float " + options);
        EXPECT_EQ(exit, 0) << err_;
        return exit == 0 ? readWav(folder_ / "out.wav") : Sound{};
    }
    /// Frames that are louder than the guard and what becomes of it.
    static std::vector<std::size_t> loudFrames(const Sound& sound) {
        std::vector<std::size_t> frames;
        for (std::size_t frame = 0; frame < sound.frames(); ++frame)
            if (std::fabs(sound.at(frame)) > 1e-3) frames.push_back(frame);
        return frames;
    }
};

TEST_F(Effects, AnImpulseComesBackAfterTheEchoTime) {
    constexpr double line = 1.51;  // s
    const double free = 0.999 * 0.2 * 0.2 + 0.001;
    const struct {
        const char* options;
        std::vector<double> seconds;  // of what comes out
    } cases[] = {
        {"--effect Delay:0.5,0,0.2,0", {0, line * free}},
        {"--effect \"DELAY: 1, 0, 0.2, 0\"", {line * free}},
        {"--effect delay:1,1,0.5,0", {0.5}},
        {"--effect delay:1,1,0.5,0 --tempo 150", {0.4}},
        {"--effect Delay", {0, 0.5}},  // as in its preset: synced
        {"--effect delay:1,1,0.5,0 --tempo 240 --effect delay:1,0,0.2,0", {0.25 + line * free}},
        {"--effect delay:0.5,1,0.5,0 --effect delay:0.5,0,0.2,0",
         {0, line * free, 0.5, 0.5 + line * free}},
    };
    for (int rate : {8000, 44100, 96000}) {
        impulse(rate);
        for (const auto& c : cases) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, " + c.options);
            const Sound file = through(c.options);
            EXPECT_EQ(file.rate, rate);
            EXPECT_EQ(file.channels, 2);
            ASSERT_EQ(file.frames(), static_cast<std::size_t>(rate));
            const auto frames = loudFrames(file);
            ASSERT_EQ(frames.size(), c.seconds.size());
            for (std::size_t i = 0; i < frames.size(); ++i)
                EXPECT_NEAR(static_cast<double>(frames[i]), 10 + c.seconds[i] * rate, 3);
        }
    }
    EXPECT_NE(out_.find("Sound 0:01.000, file 0:01.000"), std::string::npos) << out_;
}

TEST_F(Effects, EveryBlockBeginsWithTheGuard) {
    put(folder_ / "in.wav", wav(std::vector<float>(2000), 44100, 2));
    // An effect without mix adds nothing; a second one gets the guard again.
    const std::string dry = " --effect Delay:0 ";
    for (const auto& [options, every, height] : {std::tuple{dry, 256u, 1e-6},
                                                 {dry + "--block 100", 100u, 1e-6},
                                                 {dry + dry, 256u, 2e-6}}) {
        SCOPED_TRACE(options);
        const Sound file = through(options);
        ASSERT_EQ(file.frames(), 1000u);
        for (std::size_t frame = 0; frame < file.frames(); ++frame)
            for (std::size_t channel : {0u, 1u})
                ASSERT_NEAR(file.at(frame, channel), frame % every == 0 ? height : 0, 1e-8)
                    << frame;
    }
}

TEST_F(Effects, MonoIsBothChannels) {
    std::string first;
    for (int channels : {2, 1}) {
        impulse(44100, channels);
        through("--effect \"Hall Reverb\"");
        const std::string file = contents(folder_ / "out.wav");
        if (first.empty()) first = file;
        EXPECT_TRUE(file == first);
    }
    EXPECT_GT(loudFrames(readWav(folder_ / "out.wav")).size(), 1000u);
}

TEST_F(Effects, TailsAreAskedFor) {
    impulse();
    const std::string late = "--effect delay:1,1,0.5,0 --tempo 40 ";  // after a second and a half
    EXPECT_EQ(loudFrames(through(late)).size(), 0u);
    const Sound seconds = through(late + "--tail 2");
    EXPECT_EQ(seconds.frames(), 3 * 44100u);
    ASSERT_EQ(loudFrames(seconds).size(), 1u);
    const std::size_t echo = loudFrames(seconds).front();
    EXPECT_NEAR(static_cast<double>(echo), 10 + 1.5 * 44100, 3);
    EXPECT_EQ(through(late + "--tail auto").frames(), echo + 1);
    // The file is never shorter than what came in.
    EXPECT_EQ(through("--effect delay:0 --tail auto").frames(), 44100u);
}

TEST_F(Effects, FollowAKeyWhenOneIsGiven) {
    impulse();
    const auto pitch = [&](const std::string& key) {
        const Sound file = through(
            "--effect \"Tuned Resonators:1,0,0,0.5,0.5,1,0.5,0.5,0.8,0,1\" --tail 1 " + key);
        measure::Signal left;
        for (std::size_t i = 0; i < file.frames(); ++i)
            left.push_back(static_cast<float>(file.at(i)));
        const auto spectrum = measure::spectrum(left, 44100);
        const double strongest = spectrum.amplitudes[spectrum.strongestBin()];
        for (std::size_t bin = 0; bin < spectrum.amplitudes.size(); ++bin)  // the lowest partial
            if (spectrum.hz(bin) > 100 && spectrum.amplitudes[bin] > 0.4 * strongest)
                return spectrum.hz(bin);
        return 0.0;
    };
    EXPECT_NEAR(pitch("--key 69"), 440, 4);
    EXPECT_NEAR(pitch("--key 57"), 220, 2);
    EXPECT_NEAR(pitch(""), 261.6, 3);  // its own root
}

TEST_F(Effects, TheFirstBytesTellSongFromSound) {
    impulse();
    fs::rename(folder_ / "in.wav", folder_ / "sound.mid");
    EXPECT_EQ(runRaw("sound.mid -o out.flac --effect phaser --json"), 0) << err_;
    EXPECT_NE(out_.find("\"soundSeconds\": 1,"), std::string::npos) << out_;
    EXPECT_EQ(runRaw("out.flac -o out.wav --effect delay:0"), 0) << err_;  // FLAC as well
    EXPECT_EQ(readWav(folder_ / "out.wav").frames(), 44100u);
    EXPECT_TRUE(log_.empty());  // without any plug-in

    fs::rename(folder_ / "song.mid", folder_ / "song.wav");
    EXPECT_EQ(runRaw(std::string{"song.wav -o out.wav --tail none --plugin "} + fake), 0) << err_;
    EXPECT_EQ(readWav(folder_ / "out.wav").frames(), endFrame);
}

TEST_F(Effects, WhatIsNoNumberIsSilent) {
    std::vector<float> samples(2000, 0.25f);
    samples[100] = std::numeric_limits<float>::quiet_NaN();
    samples[201] = std::numeric_limits<float>::infinity();
    put(folder_ / "in.wav", wav(samples, 44100, 2));
    const Sound file = through("--effect delay:0");
    EXPECT_EQ(file.at(50, 0), 0);
    EXPECT_EQ(file.at(100, 1), 0);
    EXPECT_EQ(file.at(999, 0), 0.25);
    EXPECT_EQ(err_.substr(0, 10), "2 samples ") << err_;
}

TEST_F(Effects, ListTellsWhatThereIs) {
    ASSERT_EQ(runRaw("--list-effects"), 0);
    EXPECT_EQ(err_, "");
    for (const char* piece : {
             "\n 10  Delay\n      0  Mix           0.5     50 %\n"
             "      1  Sync          1       ON\n      2  Delay         0.5     1/4\n",
             "  3  Room Reverb, shown as \"Tavaverb\"\n",
             "      5  Stereo        0.5     180\xC2\xB0\n",
             "\n 16  Diffuser Delay\n      0  Mix           0.5     50 %\n",  // it has no preset
         })
        EXPECT_NE(out_.find(piece), std::string::npos) << piece;
    std::istringstream lines{out_};
    std::size_t effects = 0, parameters = 0, expected = 0;
    for (std::string line; std::getline(lines, line);)
        ++(line.starts_with("     ") ? parameters : effects);
    for (const EffectType* type : effectTypes())
        for (const EffectRow& row : type->rows) expected += !row.label.empty();
    EXPECT_EQ(effects, effectTypes().size());
    EXPECT_EQ(parameters, expected);
}

TEST_F(Effects, SongsGetThemBehindTheirPatch) {
    // The log comes from a plug-in that takes them: ready, then each, then the song.
    sound("--tail none --effect Delay:1,0,0.25 --effect tavaverb --block 8192");
    EXPECT_TRUE(
        told({"mains", "effect", "idle", "midi"})
            .starts_with("mains 1|i|effect 0: 10 1 0 0.25 0.5 0.5 1 0.5 0.5 0.5 0.5 0.5 0.5|"
                         "i|effect 0: 3 "))
        << log_;
    EXPECT_LT(log_.rfind("effect"), log_.find("midi"));
    sound("--tail none --channel 4 --effect Phaser");
    EXPECT_NE(log_.find("\neffect 3: 40 "), std::string::npos) << log_;
    EXPECT_EQ(run("--effect Phaser", "FAKE_MODE=full"), 3);
    EXPECT_NE(err_.find("no place for the effect \"Phaser\" in part 1"), std::string::npos) << err_;

    // The instrument itself: what follows the last note is what the echoes make of it.
    const auto energy = [&](const std::string& options) {
        EXPECT_EQ(runRaw("song.mid -o out.wav --format float --tail 3 " + options), 0) << err_;
        const Sound file = readWav(folder_ / "out.wav");
        double sum = 0;
        for (std::size_t i = noteFrame + 2 * 44100; i < file.frames(); ++i)
            sum += file.at(i) * file.at(i);
        return sum;
    };
    const double without = energy(""), with = energy("--effect Delay:0.5,0,0.5,0.9");
    EXPECT_GT(with, 1);
    EXPECT_GT(with, 100 * without);
    EXPECT_GT(energy("--channel 2 --effect Delay"), -1);  // no patch to stand behind: no harm
}

TEST_F(Effects, MistakesAreNamed) {
    impulse();
    const std::vector<float> none(600);
    put(folder_ / "three.wav", wav(none, 44100, 3));
    put(folder_ / "slow.wav", wav(none, 4000, 1));
    put(folder_ / "broken.wav", "RIFF");
    const struct {
        const char* arguments;
        int exit;
        const char* says;
    } cases[] = {
        {"in.wav -o x.wav", 1, "needs an effect: --effect"},
        {"in.wav --effect Delay", 1, "IN.wav --effect"},
        {"in.wav -o in.wav --effect Delay", 1, "replace the sound file"},
        {"in.wav -o x.wav --effect Dealy", 1, "no effect \"Dealy\"; did you mean \"Delay\"?"},
        {"in.wav -o x.wav --effect hall:0.5", 1, "did you mean \"Hall Reverb\"?"},
        {"in.wav -o x.wav --effect Zither", 1, "no effect \"Zither\"; --list-effects"},
        {"in.wav -o x.wav --effect \"\"", 1, "no effect \"\"; --list-effects"},
        {"in.wav -o x.wav --effect delay:0.5,0,1.5", 1,
         "\"Delay\": parameter 2 (Delay) takes a number from 0 to 1, not \"1.5\""},
        {"in.wav -o x.wav --effect delay:-0.1", 1, "\"Delay\": parameter 0 (Mix)"},
        {"in.wav -o x.wav --effect delay:nan", 1, "not \"nan\""},
        {"in.wav -o x.wav --effect delay:0.5x", 1, "not \"0.5x\""},
        {"in.wav -o x.wav --effect delay:", 1, "not \"\""},
        {"in.wav -o x.wav --effect delay:0,0,0,0,0,0,0,0,0,0,0,0,0", 1,
         "\"Delay\" takes 12 values"},
        {"in.wav -o x.wav --effect delay --rate 48000", 1, "--rate is for a song"},
        {"in.wav -o x.wav --effect delay --plugin x.so", 1, "--plugin is for a song"},
        {"in.wav -o x.wav --effect delay --channel 1", 1, "--channel is for a song"},
        {"in.wav -o x.wav --effect delay --set Lift=0", 1, "--set is for a song"},
        {"in.wav -o x.wav --effect delay --key 128", 1, "--key"},
        {"in.wav -o x.wav --effect delay --tempo 0", 1, "--tempo"},
        {"in.wav -o x.wav --effect delay --tempo nan", 1, "--tempo"},
        {"song.mid -o x.wav --key 60", 1, "--key is for a sound file"},
        {"song.mid -o x.wav --tempo 100", 1, "--tempo is for a sound file"},
        {"song.mid -o x.wav --effect Dealy", 1, "did you mean \"Delay\"?"},
        {"none.wav -o x.wav --effect Delay", 2, "no such file"},
        {"broken.wav -o x.wav --effect Delay", 2, "broken.wav cannot be read"},
        {"three.wav -o x.wav --effect Delay", 2, "has 3 channels"},
        {"slow.wav -o x.wav --effect Delay", 2, "has 4000 Hz"},
        {"in.wav -o none/x.wav --effect Delay", 4, "none/x.wav"},
    };
    runRaw("");
    const auto before = files();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        EXPECT_EQ(runRaw(c.arguments), c.exit);
        EXPECT_NE(err_.find(c.says), std::string::npos) << err_;
        EXPECT_EQ(out_, "");
        EXPECT_EQ(files(), before);
    }
}

}  // namespace
}  // namespace stratovane
