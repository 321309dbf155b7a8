#include "sample_pool.h"

#include <filesystem>
#include <limits>

#include "resample.h"

namespace stratovane::content_tool {

std::string besideSpec(const std::string& folder, const JsonNode& path) {
    return (std::filesystem::path{folder} / path.path()).string();
}

const SamplePool::Sample& SamplePool::add(const JsonNode& file, SampleFormat format, int rateHz) {
    const std::string path = besideSpec(folder_, file);
    const auto [place, isNew] = known_.try_emplace({path, format, rateHz});
    Sample& sample = place->second;
    if (!isNew) return sample;
    Sound sound = readSound(path);
    if (sound.channels > 2) file.refuse("a sample is mono or stereo");
    if (sound.frames() > std::numeric_limits<std::int32_t>::max() / 8)
        file.refuse("the sample is too long");
    if (sound.loop &&
        (sound.loop->frames <= 0 || sound.loop->first + sound.loop->frames > sound.frames()))
        file.refuse("the loop that stands in the sound file leaves the recording");
    sample.originalFrames = sound.frames();
    if (rateHz > 0) {
        // What lies behind a loop goes, so the loops tell more than the lengths.
        auto counted = [&] {
            return static_cast<double>(sound.loop ? sound.loop->frames : sound.frames());
        };
        const double before = counted();
        sound = resampled(sound, rateHz);
        sample.ratio = counted() / before;
    }
    samples_.push_back(writeSampleData(
        {.values = sound.values, .channels = sound.channels, .rateHz = sound.rateHz}, format));
    sample.number = static_cast<int>(samples_.size());
    sample.frames = sound.frames();
    sound.values = {};
    sample.sound = std::move(sound);
    return sample;
}

}  // namespace stratovane::content_tool
