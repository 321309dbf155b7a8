#include "sound.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "content/bytes.h"
#include "failure.h"
#include "output_file.h"

namespace stratovane::content_tool {

namespace {

// The sampler chunk: words, of which these are read; then loops of 24 bytes.
constexpr std::size_t samplePeriodAt = 8, rootAt = 12, fractionAt = 16, loopCountAt = 28,
                      loopsAt = 36, loopBytes = 24, loopTypeAt = 4, loopStartAt = 8, loopEndAt = 12;
constexpr double fractionsPerSemitone = 4294967296.0;
constexpr std::int64_t mostValues = std::int64_t{1} << 29;  // 2 GiB of floats

struct Close {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using File = std::unique_ptr<SNDFILE, Close>;

Bytes chunk(SNDFILE* file, const char* id) {
    SF_CHUNK_INFO info{};
    std::memcpy(info.id, id, 4);
    info.id_size = 4;
    SF_CHUNK_ITERATOR* found = sf_get_chunk_iterator(file, &info);
    constexpr unsigned longest = 1 << 20;
    if (found == nullptr || sf_get_chunk_size(found, &info) != SF_ERR_NO_ERROR ||
        info.datalen > longest)
        return {};
    Bytes bytes(info.datalen);
    info.data = bytes.data();
    if (sf_get_chunk_data(found, &info) != SF_ERR_NO_ERROR) return {};
    return bytes;
}

void readSamplerChunk(ByteView bytes, Sound& sound) {
    if (bytes.size() < loopsAt) return;
    sound.rootKey = static_cast<int>(std::min(bytes.at<std::uint32_t>(rootAt), 127u));
    // The fraction tells by how much the recording is above its root key.
    sound.tuneSemitones =
        static_cast<float>(-(bytes.at<std::uint32_t>(fractionAt) / fractionsPerSemitone));
    if (bytes.at<std::uint32_t>(loopCountAt) == 0 || !bytes.has(loopsAt, loopBytes)) return;
    const std::int64_t start = bytes.at<std::uint32_t>(loopsAt + loopStartAt),
                       last = bytes.at<std::uint32_t>(loopsAt + loopEndAt);
    sound.loop =
        Sound::Loop{start, last + 1 - start, bytes.at<std::uint32_t>(loopsAt + loopTypeAt) == 0};
}

/// The instrument chunk says the pitch where there is no sampler chunk.
void readInstrumentChunk(ByteView bytes, Sound& sound) {
    if (bytes.size() < 7) return;
    sound.rootKey = std::min<int>(bytes.at<std::uint8_t>(0), 127);
    sound.tuneSemitones = static_cast<float>(bytes.at<std::int8_t>(1)) * 0.01f;
}

std::string describe(const SF_INFO& info) {
    std::string text;
    for (int format : {info.format & SF_FORMAT_TYPEMASK, info.format & SF_FORMAT_SUBMASK}) {
        SF_FORMAT_INFO row{};
        row.format = format;
        if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &row, sizeof row) != 0) continue;
        if (!text.empty()) text += ", ";
        text += row.name;
    }
    return text;
}

Bytes samplerChunk(const Sound& sound) {
    ByteWriter out;
    out.fillTo(loopsAt);
    out.putAt(samplePeriodAt, static_cast<std::uint32_t>(1000000000.0 / sound.rateHz));
    // Only upwards: a recording that must go up begins at the key below.
    double up = -static_cast<double>(sound.tuneSemitones);
    const double keys = std::floor(up);
    up -= keys;
    const int root = std::clamp(sound.rootKey.value_or(60) + static_cast<int>(keys), 0, 127);
    out.putAt(rootAt, static_cast<std::uint32_t>(root));
    out.putAt(fractionAt,
              static_cast<std::uint32_t>(std::min(up * fractionsPerSemitone, 4294967295.0)));
    if (sound.loop) {
        out.putAt(loopCountAt, std::uint32_t{1});
        out.putAt(loopsAt + loopStartAt, static_cast<std::uint32_t>(sound.loop->first));
        out.putAt(loopsAt + loopEndAt,
                  static_cast<std::uint32_t>(sound.loop->first + sound.loop->frames - 1));
        out.fillTo(loopsAt + loopBytes);
    }
    return out.take();
}

}  // namespace

Sound readSound(const std::string& path) {
    SF_INFO info{};
    const File file{sf_open(path.c_str(), SFM_READ, &info)};
    auto refuse = [&](const char* why) {
        throw Failure{Exit::input, path + " cannot be read: " + why};
    };
    if (!file) refuse(sf_strerror(nullptr));
    Sound sound;
    sound.rateHz = info.samplerate;
    sound.channels = info.channels;
    sound.format = describe(info);
    // In pieces: the length that a damaged file tells asks for no memory.
    constexpr std::int64_t framesAtOnce = 65536;
    std::vector<float> piece(static_cast<std::size_t>(framesAtOnce * info.channels));
    for (;;) {
        const sf_count_t got = sf_readf_float(file.get(), piece.data(), framesAtOnce);
        sound.values.insert(sound.values.end(), piece.begin(), piece.begin() + got * info.channels);
        if (static_cast<std::int64_t>(sound.values.size()) > mostValues)
            refuse("it is longer than a sample can be");
        if (got < framesAtOnce) break;
    }
    if (sf_error(file.get()) != SF_ERR_NO_ERROR) refuse(sf_strerror(file.get()));
    if (sound.values.empty()) refuse("it has no frames");
    for (const float value : sound.values)
        if (!std::isfinite(value)) refuse("a value is no number");
    readInstrumentChunk(chunk(file.get(), "inst"), sound);
    readSamplerChunk(chunk(file.get(), "smpl"), sound);
    return sound;
}

void writeWav(const std::string& path, const Sound& sound, WavFormat format) {
    TemporaryFile target{path};
    SF_INFO info{};
    info.samplerate = sound.rateHz;
    info.channels = sound.channels;
    info.format = SF_FORMAT_WAV | (format == WavFormat::pcm16 ? SF_FORMAT_PCM_16 : SF_FORMAT_FLOAT);
    File file{sf_open_fd(target.descriptor(), SFM_WRITE, &info, SF_FALSE)};
    auto refuse = [&](const char* why) {
        throw Failure{Exit::output, path + " cannot be written: " + why};
    };
    if (!file) refuse(sf_strerror(nullptr));
    sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);  // it would hold the hour
    if (sound.loop || sound.rootKey) {
        Bytes bytes = samplerChunk(sound);
        SF_CHUNK_INFO made{};
        std::memcpy(made.id, "smpl", 4);
        made.id_size = 4;
        made.datalen = static_cast<unsigned>(bytes.size());
        made.data = bytes.data();
        if (sf_set_chunk(file.get(), &made) != SF_ERR_NO_ERROR) refuse(sf_strerror(file.get()));
    }
    const sf_count_t frames = sound.frames();
    sf_count_t written = 0;
    if (format == WavFormat::pcm16) {
        std::vector<short> steps(sound.values.size());
        std::transform(sound.values.begin(), sound.values.end(), steps.begin(), [](float value) {
            return static_cast<short>(std::clamp(std::lround(value * 32768.0f), -32768L, 32767L));
        });
        written = sf_writef_short(file.get(), steps.data(), frames);
    } else {
        written = sf_writef_float(file.get(), sound.values.data(), frames);
    }
    if (written != frames) refuse(sf_strerror(file.get()));
    const int closed = sf_close(file.release());
    if (closed != SF_ERR_NO_ERROR) refuse(sf_error_number(closed));
    target.keep();
}

}  // namespace stratovane::content_tool
