#include <cmath>
#include <numbers>

#include "bank_items.h"
#include "content/tone_wheels.h"
#include "content/wavetable.h"
#include "sound.h"

namespace stratovane::content_tool {

namespace {

constexpr std::size_t cycleValues = std::tuple_size_v<SingleCycle>;
constexpr std::size_t longestCycle = 65536;

/// A cycle of any length as one of 256 values with the harmonics that both can hold.
SingleCycle resampledCycle(std::span<const float> cycle) {
    SingleCycle out{};
    const std::size_t n = cycle.size();
    if (n == cycleValues) {
        std::copy(cycle.begin(), cycle.end(), out.begin());
        return out;
    }
    auto turn = [](std::size_t step, std::size_t of) {
        return 2 * std::numbers::pi * static_cast<double>(step % of) / static_cast<double>(of);
    };
    std::vector<double> cosines(n), sines(n);
    for (std::size_t i = 0; i < n; ++i) {
        cosines[i] = std::cos(turn(i, n));
        sines[i] = std::sin(turn(i, n));
    }
    std::array<double, cycleValues> sums{};
    const std::size_t highest = std::min(n, cycleValues) / 2;
    for (std::size_t h = 0; h < highest || h == 0; ++h) {
        double real = 0, imaginary = 0;
        for (std::size_t i = 0; i < n; ++i) {
            real += static_cast<double>(cycle[i]) * cosines[h * i % n];
            imaginary += static_cast<double>(cycle[i]) * sines[h * i % n];
        }
        const double scale = (h == 0 ? 1.0 : 2.0) / static_cast<double>(n);
        for (std::size_t i = 0; i < cycleValues; ++i) {
            const double phase = turn(h * i, cycleValues);
            sums[i] += scale * (real * std::cos(phase) + imaginary * std::sin(phase));
        }
    }
    for (std::size_t i = 0; i < cycleValues; ++i) out[i] = static_cast<float>(sums[i]);
    return out;
}

Sound monoSound(const JsonNode& node, const std::string& folder) {
    Sound sound = readSound(besideSpec(folder, node));
    if (sound.channels != 1) node.refuse("waves are mono");
    return sound;
}

}  // namespace

Bytes buildWavetable(const JsonNode& item, const std::string& folder) {
    item.allow({"number", "name", "second", "file", "waves"});
    const auto file = item.find("file"), list = item.find("waves");
    if (file.has_value() == list.has_value())
        item.refuse("a wavetable has either \"file\" or \"waves\"");
    std::vector<SingleCycle> cycles;
    if (file) {
        const Sound sound = monoSound(*file, folder);
        const std::size_t cycle = sound.values.size() / Wavetable::waves;
        if (cycle < 2 || cycle > longestCycle || sound.values.size() % Wavetable::waves != 0)
            file->refuse("64 cycles of one length were expected, not " +
                         std::to_string(sound.values.size()) + " frames");
        for (std::size_t w = 0; w < Wavetable::waves; ++w)
            cycles.push_back(resampledCycle(std::span{sound.values}.subspan(w * cycle, cycle)));
    } else {
        for (const JsonNode& wave : list->elements(Wavetable::waves)) {
            const Sound sound = monoSound(wave, folder);
            if (sound.values.size() < 2 || sound.values.size() > longestCycle)
                wave.refuse("a single cycle of 2 to 65536 frames was expected");
            cycles.push_back(resampledCycle(sound.values));
        }
    }
    return writeWavetable(*makeWavetable(std::span<const SingleCycle, Wavetable::waves>{cycles}));
}

Bytes buildToneWheels(const JsonNode& item, const std::string& folder) {
    item.allow({"number", "name", "second", "tuning", "loops"});
    constexpr float widestTuning = 8;  // natural logarithm: more than eleven octaves
    constexpr int rateHz = 44100;      // at which the loops are played
    const auto nodes = item.at("loops").elements(ToneWheels::pitchClasses);
    std::array<std::vector<std::int16_t>, ToneWheels::pitchClasses> loops;
    ToneWheelLoops views;
    for (std::size_t k = 0; k < nodes.size(); ++k) {
        const Sound sound = readSound(besideSpec(folder, nodes[k]));
        if (sound.channels != ToneWheels::octaves)
            nodes[k].refuse("a loop has eight channels, one an octave");
        if (sound.rateHz != rateHz) nodes[k].refuse("a loop has 44100 frames a second");
        for (const float value : sound.values)
            loops[k].push_back(static_cast<std::int16_t>(
                std::clamp(std::lround(value * 32768.0f), -32768L, 32767L)));
        views[k] = loops[k];
    }
    return writeToneWheels(item.number("tuning", -widestTuning, widestTuning, 0), views);
}

}  // namespace stratovane::content_tool
