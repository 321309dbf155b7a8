#include "recording.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace stratovane::render {

namespace {
constexpr double longestAutomaticTailSeconds = 60;
constexpr std::size_t pieceFrames = 4096;
}  // namespace

std::int64_t tailFrames(const Options& options, int rate) {
    if (options.tail == Options::Tail::none) return 0;
    const bool automatic = options.tail == Options::Tail::automatic;
    return std::llround(rate * (automatic ? longestAutomaticTailSeconds : options.tailSeconds));
}

std::optional<Failure> Recording::open(int rate, int channels, std::int64_t mostFrames) {
    summary_.output = output_;
    summary_.format = formatName(options_.format);
    summary_.clippingKept = options_.format == Format::floatWav;
    summary_.rate = rate;
    summary_.channels = channels;
    if (auto failure = file_.open(output_, options_.format, rate, channels, mostFrames))
        return failure;
    return take_.open(output_, channels);
}

float Recording::gain() const {
    const auto gain = static_cast<float>(std::pow(10.0, options_.gainDb / 20));
    const float peak = peak_.value_or(take_.peak());
    if (!options_.normalize || peak == 0) return gain;
    const float wanted = std::min(gain, 1.0f) * formatCeiling(options_.format);
    float exact = wanted / peak;
    while (exact * peak > wanted) exact = std::nextafter(exact, 0.0f);
    return exact;
}

std::optional<Failure> Recording::findAudibleFrames(float quietest, std::int64_t& frames) {
    const float step = formatStep(options_.format) / gain();
    return take_.findAudibleFrames(std::max(step, quietest), frames);
}

std::optional<Failure> Recording::write() {
    const float factor = gain();
    Meter meter;
    std::vector<float> samples;
    for (std::int64_t frame = 0; frame < take_.frames(); frame += pieceFrames) {
        if (auto failure = take_.read(frame, pieceFrames, samples)) return failure;
        for (float& sample : samples) {
            if (!std::isfinite(sample)) {
                sample = 0;
                ++summary_.invalidSamples;
            }
            sample *= factor;
        }
        meter.measure(samples);
        if (auto failure = file_.write(samples)) return failure;
    }
    summary_.fileFrames = take_.frames();
    summary_.fileSeconds = static_cast<double>(summary_.fileFrames) / summary_.rate;
    summary_.peakDbfs = meter.peakDbfs();
    summary_.rmsDbfs = meter.rmsDbfs();
    summary_.clippedSamples = file_.clipped();
    return file_.close();
}

}  // namespace stratovane::render
