#include "content/tone_wheels.h"

#include <cmath>

namespace stratovane {

namespace {

constexpr std::size_t tuningAt = 4, startsAt = 16, lengthsAt = 64, loopsAt = 112;

}  // namespace

std::unique_ptr<ToneWheels> readToneWheels(ByteView item, ContentFault& fault) {
    auto refuse = [&](std::uint64_t offset, const char* sentence) {
        fault = {offset, sentence};
        return nullptr;
    };
    if (!item.has(0, loopsAt)) return refuse(0, "the tone wheels have no whole header");
    auto wheels = std::make_unique<ToneWheels>();
    wheels->tuning = item.at<float>(tuningAt);
    if (!std::isfinite(wheels->tuning)) return refuse(tuningAt, "the tuning is no number");
    const std::uint64_t count = item.size() / 2;
    for (std::size_t k = 0; k < ToneWheels::pitchClasses; ++k) {
        const auto start = item.at<std::int32_t>(startsAt + 4 * k);
        const auto length = item.at<std::int32_t>(lengthsAt + 4 * k);
        if (length <= 0 || length % ToneWheels::octaves != 0)
            return refuse(lengthsAt + 4 * k, "a loop is not made of whole frames");
        if (start < 0 ||
            static_cast<std::uint64_t>(start) + static_cast<std::uint64_t>(length) > count)
            return refuse(startsAt + 4 * k, "a loop leaves the tone wheels");
        wheels->start[k] = start;
        wheels->length[k] = length;
    }
    constexpr std::size_t framesBehind = 3;
    wheels->values.resize(static_cast<std::size_t>(count) + framesBehind * ToneWheels::octaves);
    std::memcpy(wheels->values.data(), item.data(), static_cast<std::size_t>(2 * count));
    return wheels;
}

Bytes writeToneWheels(float tuning, const ToneWheelLoops& loops) {
    ByteWriter out;
    out.zeros(loopsAt);
    out.putAt(tuningAt, tuning);
    std::size_t at = loopsAt / 2;
    for (std::size_t k = 0; k < loops.size(); ++k) {
        out.putAt(startsAt + 4 * k, static_cast<std::int32_t>(at));
        out.putAt(lengthsAt + 4 * k, static_cast<std::int32_t>(loops[k].size()));
        at += loops[k].size();
    }
    for (const auto& loop : loops)
        for (const std::int16_t value : loop) out.put(value);
    return out.take();
}

}  // namespace stratovane
