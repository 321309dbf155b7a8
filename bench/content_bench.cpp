// Nanoseconds per voice-sample of "Sample" and "Drawbar" voices: source and filter, without
// envelopes and mixing.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "base/units.h"
#include "voice/drawbar/drawbar_voice.h"
#include "voice/sample/sample_voice.h"

namespace {

using namespace stratovane;

constexpr std::size_t voiceCount = 16;
const FilterInputs filter{0, std::log(0.2f), 0, 0.5f};

void countSamples(benchmark::State& state) {
    state.counters["per_sample"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * static_cast<double>(voiceCount) * tickFrames,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

float speedOf(std::size_t voice) {
    return std::exp(semitonePitch * static_cast<float>(voice * 5 % 24)) / 2;
}

void sample(benchmark::State& state, SampleFormat format, int channels, int loopFrames) {
    constexpr std::size_t values = 1 << 17;
    std::vector<float> wave(values);
    for (std::size_t i = 0; i < values; ++i) wave[i] = std::sin(static_cast<float>(i) * 0.05f) / 2;
    ContentFault fault;
    const auto data =
        readSampleData(writeSampleData({.values = wave, .channels = channels}, format), fault);
    Zone zone{.frames = data->frames(), .loopFrames = loopFrames};
    for (int c = 0; format == SampleFormat::delta && c < channels; ++c)
        zone.loopStart[static_cast<std::size_t>(c)] = data->stateAt(data->frames() - loopFrames, c);
    ElementControls controls;
    controls.filterMode = FilterMode::low24;
    std::vector<SampleVoice> voices(voiceCount);
    for (SampleVoice& voice : voices)
        voice.start(controls, 0, {&zone, data.get()}, loopFrames < 1000 ? 63 : 0);
    float left[tickFrames], right[tickFrames];
    for (auto _ : state)
        for (std::size_t i = 0; i < voiceCount; ++i) {
            voices[i].tick(speedOf(i), filter);
            voices[i].render(left, right);
            benchmark::DoNotOptimize(left[0]);
            benchmark::ClobberMemory();
        }
    countSamples(state);
}

void drawbar(benchmark::State& state) {
    const auto bars = static_cast<std::size_t>(state.range(0));
    std::vector<std::int16_t> loop(8 * 4096);
    for (std::size_t i = 0; i < loop.size(); ++i)
        loop[i] = static_cast<std::int16_t>(i * 7919 % 16384);
    ToneWheelLoops loops;
    loops.fill(loop);
    ContentFault fault;
    const auto wheels = readToneWheels(writeToneWheels(0, loops), fault);
    ElementControls controls;
    controls.filterMode = FilterMode::low24;
    for (std::size_t i = 0; i < bars; ++i) controls.drawbar.bars[i] = 8;
    Random random{1};
    std::vector<DrawbarVoice> voices(voiceCount);
    for (std::size_t i = 0; i < voiceCount; ++i)
        voices[i].start(controls, *wheels, {48 + static_cast<int>(i), 100, 0, -1}, 48000, random);
    float y[tickFrames];
    for (auto _ : state)
        for (std::size_t i = 0; i < voiceCount; ++i) {
            voices[i].tick(0.91875f, filter);
            voices[i].render(y);
            benchmark::DoNotOptimize(y[0]);
            benchmark::ClobberMemory();
        }
    countSamples(state);
}

BENCHMARK_CAPTURE(sample, pcm16, SampleFormat::pcm16, 1, 60000);
BENCHMARK_CAPTURE(sample, pcm16_short_loop, SampleFormat::pcm16, 1, 100);
BENCHMARK_CAPTURE(sample, pcm16_stereo, SampleFormat::pcm16, 2, 60000);
BENCHMARK_CAPTURE(sample, float32, SampleFormat::float32, 1, 60000);
BENCHMARK_CAPTURE(sample, delta, SampleFormat::delta, 1, 60000);
BENCHMARK_CAPTURE(sample, delta_stereo, SampleFormat::delta, 2, 60000);
BENCHMARK(drawbar)->ArgName("bars")->Arg(3)->Arg(9);

}  // namespace
