#include "sound_file.h"

#include <algorithm>
#include <cmath>

namespace stratovane::render {

namespace {

struct FormatRow {
    const char* name;
    const char* extension;
    int container, encoding;  // libsndfile's
    int bits;                 // of a whole-number sample, else 0
    int bytes;                // a sample takes at most
};
constexpr FormatRow rows[] = {
    {"wav16", ".wav", SF_FORMAT_WAV, SF_FORMAT_PCM_16, 16, 2},
    {"wav24", ".wav", SF_FORMAT_WAV, SF_FORMAT_PCM_24, 24, 3},
    {"float", ".wav", SF_FORMAT_WAV, SF_FORMAT_FLOAT, 0, 4},
    {"flac", ".flac", SF_FORMAT_FLAC, SF_FORMAT_PCM_24, 24, 3},
};
const FormatRow& rowOf(Format format) { return rows[static_cast<std::size_t>(format)]; }

constexpr int mostFlacChannels = 8;
constexpr std::int64_t largestWavBytes = 0xFFFF0000;  // 32-bit sizes, with room for the head

std::string because(std::string what, const char* why) { return what.append(": ").append(why); }

}  // namespace

float formatStep(Format format) {
    const int bits = rowOf(format).bits;
    return bits == 0 ? 0x1p-24f : std::ldexp(1.0f, 1 - bits);
}
float formatCeiling(Format format) {
    return rowOf(format).bits == 0 ? 1.0f : 1.0f - formatStep(format);
}
const char* formatName(Format format) { return rowOf(format).name; }
const char* formatExtension(Format format) { return rowOf(format).extension; }

SoundFile::~SoundFile() {
    if (file_ != nullptr) sf_close(file_);
}

std::optional<Failure> SoundFile::open(const std::string& path, Format format, int rate,
                                       int channels, std::int64_t mostFrames) {
    const FormatRow& row = rowOf(format);
    if (format == Format::flac && channels > mostFlacChannels)
        return Failure{Exit::usage, "a FLAC file has 8 channels at most; choose another --format"};
    path_ = path;
    if (auto fault = target_.open(path)) return Failure{Exit::output, *fault};

    format_ = format;
    channels_ = channels;
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    const bool large = mostFrames > largestWavBytes / row.bytes / channels;
    info.format =
        (row.container == SF_FORMAT_WAV && large ? SF_FORMAT_RF64 : row.container) | row.encoding;
    file_ = sf_open_fd(target_.descriptor(), SFM_WRITE, &info, SF_FALSE);
    if (file_ == nullptr)
        return Failure{Exit::output, because(path + " cannot be written", sf_strerror(nullptr))};
    sf_command(file_, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);  // it would hold the hour
    sf_command(file_, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    return {};
}

std::optional<Failure> SoundFile::write(std::span<const float> samples) {
    const auto frames = static_cast<sf_count_t>(samples.size()) / channels_;
    sf_count_t written = 0;
    if (const int bits = rowOf(format_).bits; bits == 0) {
        clipped_ += std::count_if(samples.begin(), samples.end(),
                                  [](float sample) { return std::fabs(sample) > 1.0f; });
        written = sf_writef_float(file_, samples.data(), frames);
    } else {
        // libsndfile scales floats by one step less than full scale and its integers, which fill
        // 32 bits from the top, by nothing: with these a sample reads back as it was.
        const float scale = std::ldexp(1.0f, bits - 1);
        integers_.resize(samples.size());
        std::transform(samples.begin(), samples.end(), integers_.begin(), [&](float sample) {
            const float wanted = std::nearbyint(sample * scale);
            const float steps = std::clamp(wanted, -scale, scale - 1);
            if (steps != wanted) ++clipped_;
            return static_cast<int>(steps) * (1 << (32 - bits));
        });
        written = sf_writef_int(file_, integers_.data(), frames);
    }
    if (written == frames) return {};
    return Failure{Exit::output, because(path_ + " cannot be written", sf_strerror(file_))};
}

std::optional<Failure> SoundFile::close() {
    const int closed = sf_close(file_);
    file_ = nullptr;
    if (closed == 0) return {};
    return Failure{Exit::output, because(path_ + " cannot be written", sf_error_number(closed))};
}

std::optional<Failure> SoundFile::commit() {
    if (auto fault = target_.keep()) return Failure{Exit::output, *fault};
    return {};
}

}  // namespace stratovane::render
