// Nanoseconds per stereo sample of every effect at its first preset (or the values it is born
// with), noise in, blocks of 256.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

#include "effects/catalogue.h"
#include "effects/effect_unit.h"

namespace {

using namespace stratovane;

constexpr float rate = 48000;
constexpr std::size_t blockFrames = 256;
constexpr std::size_t noiseFrames = 64 * blockFrames;

std::vector<StereoFrame> noise() {
    Random random{1};
    std::vector<StereoFrame> frames(noiseFrames);
    for (StereoFrame& f : frames) f = {0.5f * random.bipolar(), 0.5f * random.bipolar()};
    return frames;
}

void run(benchmark::State& state, const EffectType& type) {
    KeySource keys{.pitch = 2.5f};
    const auto unit = type.make();
    unit->setKeySource(&keys);
    unit->setTempo(120, 2.0 / double(rate));
    if (const EffectPreset* preset = firstPresetOf(type.number))
        for (int i = 0; i < effectParameters; ++i)
            unit->setParameter(i, preset->values[static_cast<std::size_t>(i)]);
    unit->setSampleRate(rate);

    const std::vector<StereoFrame> input = noise();
    std::vector<StereoFrame> io(blockFrames);
    std::size_t at = 0;
    double beat = 0;
    for (auto _ : state) {
        const auto from = input.begin() + static_cast<std::ptrdiff_t>(at);
        std::copy(from, from + static_cast<std::ptrdiff_t>(blockFrames), io.begin());
        bool silent = false;
        unit->process(io, beat, silent);
        benchmark::DoNotOptimize(io.data());
        at = (at + blockFrames) % noiseFrames;
        beat += double(blockFrames) * 2.0 / double(rate);
    }
    state.counters["ns"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * static_cast<double>(blockFrames) * 1e-9,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

const bool registered = [] {
    for (const EffectType* type : effectTypes())
        benchmark::RegisterBenchmark(std::string{type->name}.c_str(),
                                     [type](benchmark::State& state) { run(state, *type); });
    return true;
}();

}  // namespace
