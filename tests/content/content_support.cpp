#include "content/content_support.h"

#include <filesystem>

namespace stratovane::content_test {

namespace {
std::vector<std::string> lines;
}

std::vector<std::string> takeTraces() { return std::exchange(lines, {}); }

std::string asText(ByteView bytes) { return std::string{bytes.text()}; }

Zone zoneUpTo(int note, int sample, int velocity) {
    return {.key = (note * 256 + velocity) * 65536, .sampleNumber = sample, .frames = 1 << 30};
}

Bytes sampleSetOf(const std::vector<int>& samples) {
    std::vector<Zone> zones;
    const int count = static_cast<int>(samples.size());
    for (int i = 0; i < count; ++i)
        zones.push_back(zoneUpTo(128 * (i + 1) / count - 1, samples[static_cast<std::size_t>(i)]));
    return writeSampleSet(zones);
}

Bytes sampleOfBytes(std::size_t bytes) {
    return writeSampleData(
        {.values = std::vector<float>((bytes - SampleData::headerBytes) / 2, 0.25f)},
        SampleFormat::pcm16);
}

std::vector<float> randomWave(std::size_t values, unsigned seed) {
    std::mt19937 random{seed};
    std::vector<float> wave(values);
    for (float& value : wave) value = static_cast<float>(random() % 65536) / 32768.0f - 1.0f;
    return wave;
}

ContentFixture::ContentFixture() {
    lines.clear();
    trace.setMask(~0u);
    trace.setSink([](const char* line) {
        std::string text{line};
        if (text.starts_with("SV2 ")) text.erase(0, 4);
        if (text.ends_with('\n')) text.pop_back();
        lines.push_back(std::move(text));
    });
}

void ContentFixture::put(const std::string& path, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path{folder / path}.parent_path());
    folder.put(path, text);
}

std::vector<std::int32_t> ContentFixture::idleUntilDone() {
    std::vector<std::int32_t> answers;
    while (library.busy() && answers.size() < 10000) answers.push_back(library.idle());
    return answers;
}

}  // namespace stratovane::content_test
