// Nanoseconds per voice-sample of "Wavetable" and "FM" voices and of "Analog" ones that read
// tables: source and core, without envelopes and mixing.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

#include "base/units.h"
#include "voice/analog/analog_voice.h"
#include "voice/fm/fm_voice.h"
#include "voice/wavetable/wavetable_voice.h"

namespace {

using namespace stratovane;

constexpr float rate = 48000;

std::unique_ptr<Wavetable> saws() {
    std::vector<SingleCycle> cycles(Wavetable::waves);
    for (SingleCycle& cycle : cycles)
        for (std::size_t i = 0; i < cycle.size(); ++i) cycle[i] = 1 - static_cast<float>(i) / 128;
    return makeWavetable(std::span<const SingleCycle, Wavetable::waves>{cycles});
}

/// Chords that climb by fourths from a note.
template <class Voice, class Start, class Tick>
void run(benchmark::State& state, float notesFrom, Start start, Tick tick) {
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<Voice> voices(count);
    std::vector<float> increments(count);
    for (std::size_t i = 0; i < count; ++i) {
        start(voices[i]);
        const float note = notesFrom + static_cast<float>(i * 5 % 24);
        increments[i] = 261.62558f / rate * std::exp((note - 60) * semitonePitch);
    }
    float y[tickFrames];
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i) {
            tick(voices[i], increments[i]);
            voices[i].render(y);
            benchmark::DoNotOptimize(y[tickFrames - 1]);
            benchmark::ClobberMemory();
        }
    }
    state.counters["per_sample"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * static_cast<double>(count) * tickFrames,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

const FilterInputs filter{0, std::log(0.2f), 0, 0.5f};

void wavetable(benchmark::State& state, TableShape shape, bool sync, float notesFrom) {
    const auto table = saws();
    ElementControls c;
    c.filterMode = FilterMode::low24;
    c.wavetable.wave2 = static_cast<int>(shape);
    c.wavetable.mix2 = 0.5f;
    c.wavetable.sync = sync;
    Random random{1};
    run<WavetableVoice>(
        state, notesFrom, [&](WavetableVoice& v) { v.start(c, table.get(), 0, random); },
        [&](WavetableVoice& v, float increment) {
            v.tick(increment * (v.runsTwice() ? 2 : 1), 0.5f, sync ? 0.5f : 0.0f, filter);
        });
}

void fm(benchmark::State& state) {
    ElementControls c;
    c.filterMode = FilterMode::low24;
    c.fm.operators[0] = {.coarse = 2, .depth = 0.3f};
    c.fm.operators[1] = {.coarse = 3.5f, .depth = 0.3f};
    c.fm.through = 0.5f;
    c.fm.envelopeLevel = 1;
    Random random{1};
    run<FmVoice>(
        state, 48, [&](FmVoice& v) { v.start(c, {}, rate, random); },
        [&](FmVoice& v, float increment) { v.tick(2 * increment, 0.8f, filter); });
}

void analog(benchmark::State& state) {
    const auto table = saws();
    ElementControls c;
    c.filterMode = FilterMode::low24;
    c.analog.ladder = false;
    c.analog.wave = c.analog.wave2 = 6;
    c.analog.mix2 = 1;
    Random random{1};
    run<AnalogVoice>(
        state, 48, [&](AnalogVoice& v) { v.start(c, 0, rate, random, table.get()); },
        [&](AnalogVoice& v, float increment) { v.tick(2 * increment, 0.5f, 0.5f, filter); });
}

BENCHMARK_CAPTURE(wavetable, saw, TableShape::saw, false, 48.0f)->Arg(1)->Arg(16)->Arg(64);
BENCHMARK_CAPTURE(wavetable, saw high, TableShape::saw, false, 84.0f)->Arg(1)->Arg(16)->Arg(64);
BENCHMARK_CAPTURE(wavetable, square, TableShape::square, false, 48.0f)->Arg(1)->Arg(16)->Arg(64);
BENCHMARK_CAPTURE(wavetable, sync, TableShape::saw, true, 48.0f)->Arg(1)->Arg(16)->Arg(64);
BENCHMARK_CAPTURE(wavetable, noise, TableShape::noise, false, 48.0f)->Arg(1)->Arg(16)->Arg(64);
BENCHMARK(fm)->Arg(1)->Arg(16)->Arg(64);
BENCHMARK(analog)->Name("analog, two tables")->Arg(1)->Arg(16)->Arg(64);

}  // namespace
