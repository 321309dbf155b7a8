#include "take.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace stratovane::render {

namespace {

constexpr std::int64_t searchFrames = 8192;

Failure diskFault(const char* what) {
    return {Exit::output, std::string{what}.append(": ").append(std::strerror(errno))};
}

}  // namespace

std::optional<Failure> Take::open(const std::string& beside, int channels) {
    channels_ = static_cast<std::size_t>(channels);
    std::filesystem::path pattern{beside};
    pattern.replace_filename(".stratovane-take-XXXXXX");
    std::string name = pattern.string();
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) return diskFault("no temporary file can be made beside the output");
    unlink(name.c_str());
    file_.reset(fdopen(descriptor, "w+b"));
    if (!file_) return diskFault("the temporary file cannot be used");
    return {};
}

std::optional<Failure> Take::append(std::span<float* const> buffers, std::int32_t frames) {
    const auto count = static_cast<std::size_t>(frames);
    interleaved_.resize(count * channels_);
    for (std::size_t channel = 0; channel < channels_; ++channel) {
        const float* from = buffers[channel];
        float* to = interleaved_.data() + channel;
        for (std::size_t i = 0; i < count; ++i) to[i * channels_] = from[i];
    }
    return append(interleaved_);
}

std::optional<Failure> Take::append(std::span<const float> interleaved) {
    if (interleaved.empty()) return {};
    for (float sample : interleaved) {
        const float size = std::fabs(sample);
        if (size > peak_ && std::isfinite(size)) peak_ = size;
    }
    if (std::fwrite(interleaved.data(), sizeof(float), interleaved.size(), file_.get()) !=
        interleaved.size())
        return diskFault("the temporary file beside the output cannot be written");
    frames_ += static_cast<std::int64_t>(interleaved.size() / channels_);
    return {};
}

std::optional<Failure> Take::read(std::int64_t frame, std::size_t capacity,
                                  std::vector<float>& samples) {
    const std::int64_t left = std::max<std::int64_t>(0, frames_ - frame);
    const std::size_t count = std::min(capacity, static_cast<std::size_t>(left)) * channels_;
    samples.resize(count);
    if (count == 0) return {};
    const auto offset = static_cast<std::size_t>(frame) * channels_ * sizeof(float);
    if (fseeko(file_.get(), static_cast<off_t>(offset), SEEK_SET) != 0 ||
        std::fread(samples.data(), sizeof(float), count, file_.get()) != count)
        return diskFault("the temporary file beside the output cannot be read");
    return {};
}

std::optional<Failure> Take::findAudibleFrames(float threshold, std::int64_t& frames) {
    std::vector<float> samples;
    for (std::int64_t end = frames_; end > 0;) {
        const std::int64_t start = std::max<std::int64_t>(0, end - searchFrames);
        if (auto failure = read(start, static_cast<std::size_t>(end - start), samples))
            return failure;
        for (std::size_t i = samples.size(); i-- > 0;) {
            if (!(std::fabs(samples[i]) > threshold)) continue;
            frames = start + static_cast<std::int64_t>(i / channels_) + 1;
            return {};
        }
        end = start;
    }
    frames = 0;
    return {};
}

}  // namespace stratovane::render
