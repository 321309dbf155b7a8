#include "resample.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace stratovane::content_tool {

namespace {

constexpr int zeroCrossings = 32;     // on each side
constexpr double kaiserBeta = 8.96;   // 90 dB
constexpr double passedShare = 0.92;  // of the new band, the rest is the filter's slope

/// The modified Bessel function of order 0, by its power series.
double besselI0(double x) {
    double sum = 1, term = 1;
    for (int k = 1; term > 1e-12 * sum; ++k) {
        term *= x / (2 * k) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

/// A sinc under a Kaiser window, read between points of a table.
class Kernel {
  public:
    Kernel() : points_(zeroCrossings * pointsPerCrossing + 2) {
        for (std::size_t i = 0; i < points_.size(); ++i) {
            const double x = static_cast<double>(i) / pointsPerCrossing, r = x / zeroCrossings;
            const double phase = std::numbers::pi * x;
            const double sinc = i == 0 ? 1 : std::sin(phase) / phase;
            points_[i] =
                r >= 1 ? 0
                       : sinc * besselI0(kaiserBeta * std::sqrt(1 - r * r)) / besselI0(kaiserBeta);
        }
    }
    double at(double crossings) const {
        const double place = std::fabs(crossings) * pointsPerCrossing;
        const auto i = static_cast<std::size_t>(place);
        if (i + 1 >= points_.size()) return 0;
        return points_[i] + (place - static_cast<double>(i)) * (points_[i + 1] - points_[i]);
    }

  private:
    static constexpr int pointsPerCrossing = 1024;
    std::vector<double> points_;
};

}  // namespace

Sound resampled(const Sound& sound, int rateHz) {
    if (rateHz >= sound.rateHz) return sound;
    double ratio = static_cast<double>(rateHz) / sound.rateHz;
    Sound out = sound;
    std::int64_t end = sound.frames(), outEnd = 0;
    if (sound.loop) {
        const auto loop = static_cast<double>(sound.loop->frames);
        const double outLoop = std::max(1.0, std::round(loop * ratio));
        ratio = outLoop / loop;
        end = sound.loop->first + sound.loop->frames;
        outEnd = std::max(std::llround(static_cast<double>(end) * ratio), std::llround(outLoop));
        out.loop->frames = std::llround(outLoop);
        out.loop->first = outEnd - out.loop->frames;
    } else {
        outEnd = std::max<std::int64_t>(1, std::llround(static_cast<double>(end) * ratio));
    }
    out.rateHz = std::max(1, static_cast<int>(std::lround(sound.rateHz * ratio)));

    // What the filter sees behind the end is the loop once more, before the start it is silence.
    auto frameAt = [&](std::int64_t frame) -> std::int64_t {
        if (frame < end || !sound.loop) return frame;
        return sound.loop->first + (frame - end) % sound.loop->frames;
    };
    const double cutoff = ratio * passedShare;  // 1: half the old rate
    const double halfWidth = zeroCrossings / cutoff;
    const auto channels = static_cast<std::size_t>(sound.channels);
    out.values.assign(static_cast<std::size_t>(outEnd) * channels, 0);
    const Kernel kernel;
    std::vector<double> sums(channels);
    for (std::int64_t i = 0; i < outEnd; ++i) {
        const double centre = static_cast<double>(end) + static_cast<double>(i - outEnd) / ratio;
        std::fill(sums.begin(), sums.end(), 0.0);
        const auto from = static_cast<std::int64_t>(std::ceil(centre - halfWidth)),
                   to = static_cast<std::int64_t>(std::floor(centre + halfWidth));
        for (std::int64_t k = from; k <= to; ++k) {
            const std::int64_t frame = frameAt(k);
            if (frame < 0 || frame >= sound.frames()) continue;
            const double weight = cutoff * kernel.at((static_cast<double>(k) - centre) * cutoff);
            for (std::size_t c = 0; c < channels; ++c)
                sums[c] +=
                    weight * static_cast<double>(
                                 sound.values[static_cast<std::size_t>(frame) * channels + c]);
        }
        for (std::size_t c = 0; c < channels; ++c)
            out.values[static_cast<std::size_t>(i) * channels + c] = static_cast<float>(sums[c]);
    }
    return out;
}

}  // namespace stratovane::content_tool
