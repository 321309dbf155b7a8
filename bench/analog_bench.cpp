// Nanoseconds per voice-sample of "Analog" voices: source and core, without envelopes and mixing.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "base/units.h"
#include "voice/analog/analog_voice.h"

namespace {

using namespace stratovane;

constexpr float rate = 48000;

struct Scenario {
    const char* name;
    int wave = 3;
    float shape = 0.5f;
    FilterMode mode = FilterMode::low24;
    bool ladder = false;
    float mix2 = 0, mix3 = 0, filterMod = 0, noise = 0;
    int wave3 = 0;
    float notesFrom = 48;  // chords climb from here by fourths
};

constexpr Scenario scenarios[] = {
    {.name = "saw"},
    {.name = "saw high", .notesFrom = 84},
    {.name = "pulse", .wave = 2},
    {.name = "sync", .wave = 0},
    {.name = "unison", .wave = 5},
    {.name = "saw, osc 3", .mix3 = 0.5f, .wave3 = 1},
    {.name = "saw, ladder", .ladder = true},
    {.name = "dual saw", .mix2 = 1, .mix3 = 0.5f},
    {.name = "dual saw, ladder", .ladder = true, .mix2 = 1, .mix3 = 0.5f},
    {.name = "dual saw, modulated", .mix2 = 1, .mix3 = 0.5f, .filterMod = 0.3f},
    {.name = "dual saw, ladder, modulated",
     .ladder = true,
     .mix2 = 1,
     .mix3 = 0.5f,
     .filterMod = 0.3f},
    {.name = "saw, noise", .noise = 0.5f},
};

void run(benchmark::State& state, const Scenario& s) {
    const auto count = static_cast<std::size_t>(state.range(0));
    ElementControls c;
    c.analog.wave = c.analog.wave2 = s.wave;
    c.analog.ladder = s.ladder;
    c.analog.mix2 = s.mix2;
    c.analog.mix3 = s.mix3;
    c.analog.wave3 = s.wave3;
    c.analog.filterMod = s.filterMod;
    c.analog.noise = s.noise;
    c.analog.leak = 1 - std::exp(3.7f) / rate;
    c.analog.minimumPulseWidth = 0.01f;
    c.filterMode = s.mode;
    c.randomStart = 1;
    Random random{1};
    std::vector<AnalogVoice> voices(count);
    std::vector<float> increments(count);
    for (std::size_t i = 0; i < count; ++i) {
        voices[i].start(c, 0, rate, random);
        const float note = s.notesFrom + static_cast<float>(i * 5 % 24);
        increments[i] = 2 * 261.62558f / rate * std::exp((note - 60) * semitonePitch);
    }
    const FilterInputs filter{0, std::log(0.2f), 0, 0.5f};
    float y[tickFrames];
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i) {
            voices[i].tick(increments[i], s.shape, s.shape, filter);
            voices[i].render(y);
            benchmark::DoNotOptimize(y[tickFrames - 1]);
            benchmark::ClobberMemory();
        }
    }
    state.counters["per_sample"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * static_cast<double>(count) * tickFrames,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// A chain of dependent sums, so that machines can be compared: four cycles each or so.
void calibrate(benchmark::State& state) {
    float x = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i) {
            x += 1e-3f;
            benchmark::DoNotOptimize(x);
        }
    }
    state.counters["per_sum"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * 1000,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

const bool registered = [] {
    prepareImpulseTable();
    benchmark::RegisterBenchmark("dependent sum", calibrate);
    for (const Scenario& s : scenarios)
        benchmark::RegisterBenchmark(s.name, [&s](benchmark::State& state) { run(state, s); })
            ->Arg(1)
            ->Arg(16)
            ->Arg(64);
    return true;
}();

}  // namespace
