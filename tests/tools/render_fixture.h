// Runs the built renderer in a folder of its own and reads what it wrote.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace stratovane {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

inline constexpr const char* program = STRATOVANE_BUILD_DIR "/stratovane-render";
inline constexpr const char* fake = STRATOVANE_BUILD_DIR "/fake_plugin.so";

inline std::string contents(const fs::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}
inline void put(const fs::path& path, const std::string& text) {
    std::ofstream{path, std::ios::binary} << text;
}

/// The samples of an uncompressed file, interleaved, as -1..1.
struct Sound {
    int channels = 1, rate = 0;
    std::vector<double> samples;
    double at(std::size_t frame, std::size_t channel = 0) const {
        return samples[frame * static_cast<std::size_t>(channels) + channel];
    }
    std::size_t frames() const { return samples.size() / static_cast<std::size_t>(channels); }
    double peak() const {
        double peak = 0;
        for (double sample : samples) peak = std::max(peak, std::fabs(sample));
        return peak;
    }
};
inline Sound readWav(const fs::path& path) {
    const std::string file = contents(path);
    auto number = [&](std::size_t at, std::size_t size) {
        std::uint32_t value = 0;
        for (std::size_t i = size; i-- > 0;)
            value = value << 8 | static_cast<std::uint8_t>(file.at(at + i));
        return value;
    };
    Sound sound;
    std::size_t bytes = 0;
    for (std::size_t at = 12; at + 8 <= file.size();) {
        const std::string tag = file.substr(at, 4);
        const std::size_t size = number(at + 4, 4);
        at += 8;
        if (tag == "fmt ") {
            sound.channels = static_cast<int>(number(at + 2, 2));
            sound.rate = static_cast<int>(number(at + 4, 4));
            bytes = number(at + 14, 2) / 8;
        }
        for (std::size_t i = 0; tag == "data" && i < size; i += bytes) {
            const std::uint32_t top = number(at + i, bytes) << (32 - 8 * bytes);
            sound.samples.push_back(bytes == 4 ? static_cast<double>(std::bit_cast<float>(top))
                                               : static_cast<std::int32_t>(top) * 0x1p-31);
        }
        at += size + size % 2;
    }
    return sound;
}

/// A file of one track, `division` two bytes.
inline std::string midi(const Bytes& events, Bytes division = {0, 96}) {
    std::string file("MThd\0\0\0\6\0\0\0\1", 12);
    file.append(division.begin(), division.end()).append("MTrk\0\0", 6);
    file.push_back(static_cast<char>(events.size() >> 8));
    file.push_back(static_cast<char>(events.size()));
    return file.append(events.begin(), events.end());
}

// Ticks of 1/192 s. A for a second and a half from beat 1, then half a second of nothing.
inline const Bytes oneNote{96, 0x90, 69, 127, 0x82, 0x20, 0x80, 69, 0, 96, 0xFF, 0x2F, 0};
inline constexpr std::size_t noteFrame = 22050, endFrame = 110250;

class Render : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "render-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
        song(midi(oneNote));
    }
    void TearDown() override { fs::remove_all(folder_); }

    void song(const std::string& bytes) { put(folder_ / "song.mid", bytes); }
    int runRaw(const std::string& arguments, const std::string& variables = "") {
        const std::string command = "cd " + folder_.string() + " && FAKE_LOG=log " + variables +
                                    " " + program + " " + arguments + " >out 2>err </dev/null";
        const int status = std::system(command.c_str());
        out_ = contents(folder_ / "out");
        err_ = contents(folder_ / "err");
        log_ = contents(folder_ / "log");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int run(const std::string& options = "", const std::string& variables = "") {
        return runRaw(std::string{"--plugin "}.append(fake) + " song.mid -o out.wav " + options,
                      variables);
    }
    Sound sound(const std::string& options = "") {
        const int exit = run(options);
        EXPECT_EQ(exit, 0) << err_;
        return exit == 0 ? readWav(folder_ / "out.wav") : Sound{};
    }
    /// The log's lines that begin with one of the words, an idle call as "i".
    std::string told(std::initializer_list<std::string_view> words) {
        std::istringstream lines{log_};
        std::string all;
        for (std::string line; std::getline(lines, line);)
            if (std::any_of(words.begin(), words.end(),
                            [&](std::string_view word) { return line.starts_with(word); }))
                all.append(line == "idle" ? "i" : line).append("|");
        return all;
    }
    std::vector<std::string> files() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator{folder_})
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path folder_;
    std::string out_, err_, log_;
};

}  // namespace stratovane
