#include "content/sample_data.h"

#include <array>
#include <cmath>

namespace stratovane {

namespace {

// Header, little-endian: 0 layout (0: frames follow), 4 frames, 8 rate, 12 values a frame, 13
// format.
constexpr std::size_t framesAt = 4, rateAt = 8, channelsAt = 12, formatAt = 13;
constexpr std::uint8_t storedDelta = 1, storedPcm16 = 2, storedFloat = 4;  // any other: delta

SampleFormat formatOf(std::uint8_t stored) {
    if (stored == storedPcm16) return SampleFormat::pcm16;
    return stored == storedFloat ? SampleFormat::float32 : SampleFormat::delta;
}

std::uint64_t bytesNeeded(SampleFormat format, std::uint64_t frames, std::uint64_t channels) {
    const std::uint64_t values = frames * channels;
    switch (format) {
        case SampleFormat::pcm16:
            return SampleData::headerBytes + 2 * values;
        case SampleFormat::float32:
            return SampleData::headerBytes + 4 * values;
        case SampleFormat::delta:
            break;
    }
    return SampleData::headerBytes + 4 * SampleData::startPoints * channels + values;
}

}  // namespace

std::int32_t SampleData::startFrame(std::int32_t frames, int point) {
    const std::int64_t square = static_cast<std::int64_t>(point) * point, length = frames;
    const std::int64_t frame =
        length < 65536 ? length * square / 4096 : length / 4096 * square;  // as 32-bit players do
    return static_cast<std::int32_t>(frame & ~std::int64_t{1});
}

DeltaState SampleData::startState(int point, int channel) const {
    const auto record = static_cast<std::size_t>(point * channels_ + channel);
    return DeltaState::fromRecord(ByteView{bytes_}.at<std::uint32_t>(headerBytes + 4 * record));
}

DeltaState SampleData::stateAt(std::int32_t frame, int channel) const {
    DeltaState state = startState(0, channel);
    const std::uint8_t* bytes = delta() + channel;
    for (std::int32_t i = 0; i < frame; ++i, bytes += channels_) state.advance(*bytes);
    return state;
}

std::unique_ptr<SampleData> readSampleData(Bytes bytes, ContentFault& fault) {
    const ByteView view{bytes};
    auto refuse = [&](std::uint64_t offset, const char* sentence) {
        fault = {offset, sentence};
        return nullptr;
    };
    if (!view.has(0, SampleData::headerBytes)) return refuse(0, "the sample has no whole header");
    if (view.at<std::int32_t>(0) != 0) return refuse(0, "the frames do not follow the header");
    const auto frames = view.at<std::int32_t>(framesAt);
    const auto rateHz = view.at<std::int32_t>(rateAt);
    const int channels = view.at<std::uint8_t>(channelsAt);
    const SampleFormat format = formatOf(view.at<std::uint8_t>(formatAt));
    if (frames <= 0) return refuse(framesAt, "the sample has no frames");
    if (rateHz <= 0) return refuse(rateAt, "the sample has no rate");
    if (channels != 1 && channels != 2) return refuse(channelsAt, "neither mono nor stereo");
    if (view.size() < bytesNeeded(format, static_cast<std::uint64_t>(frames),
                                  static_cast<std::uint64_t>(channels)))
        return refuse(framesAt, "the frames leave the sample");

    auto sample = std::make_unique<SampleData>();
    sample->format_ = format;
    sample->channels_ = channels;
    sample->frames_ = frames;
    sample->rateHz_ = rateHz;
    sample->bytes_ = std::move(bytes);
    constexpr std::size_t widestFrame = 8;
    sample->bytes_.resize(sample->bytes_.size() + widestFrame);
    if (format == SampleFormat::float32) {
        const auto values = static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels);
        for (std::size_t i = 0; i < values; ++i) {
            std::uint8_t* at = sample->bytes_.data() + SampleData::headerBytes + 4 * i;
            float value = 0;
            std::memcpy(&value, at, sizeof value);
            if (!std::isfinite(value)) std::memset(at, 0, sizeof value);
        }
    }
    return sample;
}

namespace {

void writeDelta(const SampleSource& source, std::size_t frames, ByteWriter& out) {
    const auto channels = static_cast<std::size_t>(source.channels);
    std::array<Bytes, 2> bytes;
    std::array<DeltaState, 2> state;
    std::vector<float> channel(frames);
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < frames; ++i) channel[i] = source.values[i * channels + c];
        bytes[c] = encodeAdaptiveDelta(channel, state[c]);
    }
    std::size_t frame = 0;
    for (int point = 0; point < SampleData::startPoints; ++point) {
        const auto start = static_cast<std::size_t>(
            SampleData::startFrame(static_cast<std::int32_t>(frames), point));
        for (; frame < start; ++frame)
            for (std::size_t c = 0; c < channels; ++c) state[c].advance(bytes[c][frame]);
        for (std::size_t c = 0; c < channels; ++c) out.put(state[c].record());
    }
    for (std::size_t i = 0; i < frames; ++i)
        for (std::size_t c = 0; c < channels; ++c) out.put(bytes[c][i]);
}

}  // namespace

Bytes writeSampleData(const SampleSource& source, SampleFormat format) {
    const std::size_t frames = source.values.size() / static_cast<std::size_t>(source.channels);
    const auto values = source.values.first(frames * static_cast<std::size_t>(source.channels));
    ByteWriter out;
    out.put(std::int32_t{0});
    out.put(static_cast<std::int32_t>(frames));
    out.put(source.rateHz);
    out.put(static_cast<std::uint8_t>(source.channels));
    out.put(format == SampleFormat::pcm16     ? storedPcm16
            : format == SampleFormat::float32 ? storedFloat
                                              : storedDelta);
    out.zeros(2);
    switch (format) {
        case SampleFormat::pcm16:
            for (const float value : values)
                out.put(static_cast<std::int16_t>(
                    std::clamp(std::lround(value * 32768.0f), -32768L, 32767L)));
            break;
        case SampleFormat::float32:
            for (const float value : values) out.put(value);
            break;
        case SampleFormat::delta:
            writeDelta(source, frames, out);
            break;
    }
    return out.take();
}

}  // namespace stratovane
