// One part: a control tick with 0, 4 and 16 rows, whole blocks of a part with 64 analog voices, and
// sixteen such parts. Times are per voice-sample, everything included, unless named otherwise.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "voice/control_tick.h"
#include "voice/part_engine.h"
#include "voice/part_events.h"
#include "voice/part_state.h"

namespace stratovane {
namespace {

constexpr int blockFrames = 256;
constexpr int voices = 64;

struct PlayingPart {
    EngineShared shared;
    PartEngine part;

    /// `dual` adds the second oscillator, `ladder` takes the costlier filter.
    PlayingPart(std::uint32_t seed, bool dual, bool ladder) : part{shared, 1, seed} {
        part.setSampleRate(44100, blockFrames);
        Patch& patch = part.patch();
        patch.makeSawtooth();
        patch.set(0, global::maxVoices, 1.0f);
        constexpr int filter = 17, mix2 = 33;
        patch.set(1, filter, ladder ? 1.0f : 0.0f);
        if (dual) patch.set(1, mix2, 0.5f);
        patch.handOver();
    }
    /// Notes in as many phases as there are voices.
    void start(float* const* outputs, std::uint8_t* touched) {
        for (int i = 0; i < voices; ++i) {
            part.handleEvent({0x90, static_cast<std::uint8_t>(32 + i), 100, 0}, EventSource::host);
            part.render({outputs, touched, 1}, 0, 5, 0);
        }
    }
};

struct Outputs {
    std::vector<float> left = std::vector<float>(blockFrames), right = left;
    float* pointers[2] = {left.data(), right.data()};
    std::uint8_t touched[2] = {};
};

void blocks(benchmark::State& state, int parts) {
    const bool dual = state.range(0) != 0, ladder = state.range(1) != 0;
    Outputs out;
    std::vector<std::unique_ptr<PlayingPart>> playing;
    int sounding = 0;
    for (int i = 0; i < parts; ++i) {
        playing.push_back(
            std::make_unique<PlayingPart>(static_cast<std::uint32_t>(i), dual, ladder));
        playing.back()->start(out.pointers, out.touched);
        sounding += playing.back()->part.voiceCount();
    }
    for (auto _ : state)
        for (auto& p : playing) p->part.render({out.pointers, out.touched, 1}, 0, blockFrames, 0);
    const double samples = static_cast<double>(state.iterations()) * blockFrames;
    state.counters["voices"] = sounding;
    state.counters["per_voice_sample"] = benchmark::Counter(
        samples * sounding, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["cores_at_44100"] = benchmark::Counter(
        samples / 44100, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void onePart(benchmark::State& state) { blocks(state, 1); }
void sixteenParts(benchmark::State& state) { blocks(state, 16); }

/// Rows of a plain kind and of processors in turn.
void addRows(Patch& patch, int count) {
    constexpr int modifiers[] = {0, 6, 37, 53};  // none, the wheel, a sine, a lag
    for (int row = 0; row < count; ++row) {
        const int first = elementIndex::firstModulationRow + 5 * row;
        patch.set(1, first, (23.5f + static_cast<float>(row % 6)) / 71.9f);
        patch.set(1, first + 1, (static_cast<float>(modifiers[row % 4]) + 0.5f) / 71.9f);
        patch.set(1, first + 2, 0.55f);
        patch.set(1, first + 3, (1.5f + static_cast<float>(row % 9)) / 15.9f);
        patch.set(1, first + 4, 0.55f);
    }
}

/// Envelopes, LFO, glide, inputs, modulation rows, gains, oscillator and filter controls and the 32
/// samples of one voice.
void tick(benchmark::State& state) {
    EngineShared shared;
    PartState part{shared, 1};
    part.prepare(44100, blockFrames);
    part.patch.makeSawtooth();
    addRows(part.patch, static_cast<int>(state.range(0)));
    handlePartEvent(part, {0x90, 60, 100, 0}, EventSource::host);
    part.followLfos();
    part.clock.beginPiece(32, 0);
    Voice& voice = part.voiceAt(0);
    for (auto _ : state) {
        voice.dueFrame = 0;
        renderTick(part, voice);
        benchmark::DoNotOptimize(voice.gain);
    }
}

/// A part that has fallen silent.
void silentPart(benchmark::State& state) {
    Outputs out;
    PlayingPart playing{1, false, true};
    for (auto _ : state) playing.part.render({out.pointers, out.touched, 1}, 0, blockFrames, 0);
}

BENCHMARK(tick)->ArgName("rows")->Arg(0)->Arg(4)->Arg(16);
BENCHMARK(onePart)->ArgNames({"dual", "ladder"})->ArgsProduct({{0, 1}, {0, 1}});
BENCHMARK(sixteenParts)->ArgNames({"dual", "ladder"})->ArgsProduct({{0, 1}, {0, 1}});
BENCHMARK(silentPart);

}  // namespace
}  // namespace stratovane
