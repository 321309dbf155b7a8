// Recorded sound as the tool reads it from WAV and FLAC files and writes it to WAV files.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace stratovane::content_tool {

struct Sound {
    struct Loop {
        std::int64_t first = 0, frames = 0;
        bool forward = true;
    };
    int rateHz = 44100, channels = 1;
    std::string format;         // for people: "WAV, 16 bit"
    std::vector<float> values;  // -1..1, interleaved
    // From the file's own chunks.
    std::optional<int> rootKey;
    float tuneSemitones = 0;  // brings the recording to its root key
    std::optional<Loop> loop;

    std::int64_t frames() const { return static_cast<std::int64_t>(values.size()) / channels; }
};

Sound readSound(const std::string& path);

enum class WavFormat { pcm16, float32 };
/// Rate, channels, values, root key, tune and loop go into the file. Values of whole 1/32768 stay
/// what they are in 16 bits.
void writeWav(const std::string& path, const Sound& sound, WavFormat format);

}  // namespace stratovane::content_tool
