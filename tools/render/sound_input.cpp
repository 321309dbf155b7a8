#include "sound_input.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace stratovane::render {

namespace {

constexpr int lowestRate = 8000, highestRate = 192000;

// WAV in its kinds, AIFF, FLAC, Ogg, AU, CAF.
constexpr std::array<std::string_view, 9> tags{"RIFF", "RIFX", "RF64", "riff", "FORM",
                                               "fLaC", "OggS", ".snd", "caff"};

}  // namespace

bool isSoundFile(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return false;
    char bytes[12] = {};
    std::ifstream{path, std::ios::binary}.read(bytes, sizeof bytes);
    const std::string_view head{bytes, sizeof bytes};
    // A RIFF file may hold a song, too.
    return std::find(tags.begin(), tags.end(), head.substr(0, 4)) != tags.end() &&
           head.substr(8) != "RMID";
}

SoundInput::~SoundInput() {
    if (file_ != nullptr) sf_close(file_);
}

std::optional<Failure> SoundInput::open(const std::string& path) {
    path_ = path;
    file_ = sf_open(path.c_str(), SFM_READ, &info_);
    if (file_ == nullptr)
        return Failure{Exit::input, path + " cannot be read: " + sf_strerror(nullptr)};
    if (info_.channels > 2)
        return Failure{Exit::input, path + " has " + std::to_string(info_.channels) +
                                        " channels; an effect takes one or two"};
    if (rate() < lowestRate || rate() > highestRate)
        return Failure{Exit::input, path + " has " + std::to_string(rate()) +
                                        " Hz; an effect takes 8000 to 192000"};
    return {};
}

std::optional<Failure> SoundInput::read(std::span<StereoFrame> to, std::size_t& frames) {
    const auto channels = static_cast<std::size_t>(info_.channels);
    samples_.resize(to.size() * channels);
    const sf_count_t got =
        sf_readf_float(file_, samples_.data(), static_cast<sf_count_t>(to.size()));
    if (sf_error(file_) != SF_ERR_NO_ERROR)
        return Failure{Exit::input, path_ + " cannot be read: " + sf_strerror(file_)};
    frames = static_cast<std::size_t>(std::max<sf_count_t>(got, 0));
    samples_.resize(frames * channels);
    for (float& sample : samples_) {
        if (std::isfinite(sample)) continue;
        sample = 0;
        ++invalid_;
    }
    for (std::size_t i = 0; i < frames; ++i)
        to[i] = {samples_[i * channels], samples_[i * channels + channels - 1]};
    return {};
}

}  // namespace stratovane::render
