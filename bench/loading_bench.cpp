// A bank of 64 MiB loaded and let go while another thread renders: how the memory in use goes up
// and comes down, and whether the rendering thread ever waits for it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "content/bank_file_writer.h"
#include "content/content_library.h"
#include "content/sample_data.h"
#include "content/sample_set.h"
#include "engine/engine.h"
#include "engine/transport.h"
#include "patch/parameter_ids.h"
#include "voice/part_engine.h"

namespace stratovane {
namespace {

using Clock = std::chrono::steady_clock;
constexpr int blockFrames = 256, sampleCount = 64;
constexpr double mebibyte = 1 << 20;

/// A folder with one bank: a set of 64 zones, each with a sample of 1 MiB of its own.
class BigContent {
  public:
    BigContent() {
        std::filesystem::create_directories(folder_ / "Samples");
        BankFileSource bank;
        std::vector<Zone> zones;
        for (int i = 0; i < sampleCount; ++i) {
            zones.push_back({.key = i == sampleCount - 1 ? Zone::last : (2 * i + 1) << 16,
                             .sampleNumber = i + 1,
                             .frames = 1 << 19});
            bank.samples.push_back(writeSampleData({.values = std::vector<float>(1 << 19, 0.25f)},
                                                   SampleFormat::pcm16));
        }
        bank.items = {{"Big", "", writeSampleSet(zones), {}}};
        const Bytes file = writeBankFile(bank);
        std::ofstream{folder_ / "Samples/020 Big.bank", std::ios::binary}.write(
            reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    }
    ~BigContent() { std::filesystem::remove_all(folder_); }
    BigContent(const BigContent&) = delete;
    BigContent& operator=(const BigContent&) = delete;
    std::string path() const { return (folder_ / "").string(); }

  private:
    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / "stratovane_loading_bench";
};

/// Renders without pause and sorts the blocks' times by what the other thread does meanwhile.
class RenderThread {
  public:
    enum Phase { resting, loading, releasing, phases };

    explicit RenderThread(Engine& engine) : engine_{engine}, thread_{[this] { run(); }} {}
    ~RenderThread() {
        if (thread_.joinable()) stop();
    }
    RenderThread(const RenderThread&) = delete;
    RenderThread& operator=(const RenderThread&) = delete;
    void enter(Phase phase) { phase_ = phase; }
    void stop() {
        stop_ = true;
        thread_.join();
    }
    /// Microseconds that a share of the blocks stays below.
    double below(Phase phase, double share) {
        std::vector<double>& times = times_[phase];
        if (times.empty()) return 0;
        const auto at = std::min(
            times.size() - 1, static_cast<std::size_t>(static_cast<double>(times.size()) * share));
        std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(at),
                         times.end());
        return times[at];
    }

  private:
    void run() {
        std::vector<float> left(blockFrames), right(blockFrames);
        float* outputs[] = {left.data(), right.data(), nullptr, nullptr,
                            nullptr,     nullptr,      nullptr, nullptr};
        PartEventLists events;
        for (int note = 40; note < 72; ++note)
            events[0].append({0, 0x90, static_cast<std::uint8_t>(note), 100, 0});
        Transport transport;
        transport.setSampleRate(44100);
        while (!stop_) {
            const Phase phase = phase_;
            const auto before = Clock::now();
            engine_.render({&events, outputs, blockFrames, true}, transport);
            const auto spent = std::chrono::duration<double, std::micro>(Clock::now() - before);
            times_[phase].push_back(spent.count());
            events[0].clear();
        }
    }

    Engine& engine_;
    std::vector<double> times_[phases];
    std::atomic<Phase> phase_{resting};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

void loadAndRelease(benchmark::State& state) {
    const BigContent content;
    for (auto _ : state) {
        Trace trace;
        EngineShared shared;
        ContentLibrary library{trace};
        if (!library.open(content.path())) return state.SkipWithError("no content");
        library.setRenderPassed([&](std::uint32_t stamp) { return shared.epoch.passed(stamp); });
        Engine engine{shared, trace, 4, &library};
        engine.setSampleRate(44100, blockFrames);
        RenderThread audio{engine};
        std::this_thread::sleep_for(std::chrono::milliseconds{500});

        std::int64_t largestStep = 0, highest = 0, previous = 0;
        double longestIdle = 0;
        int steps = 0;
        const auto idleUntil = [&](auto done) {
            for (int calls = 0; !done() && calls < 5000; ++calls) {
                const auto before = Clock::now();
                engine.idle();
                library.idle();
                const std::chrono::duration<double, std::milli> spent = Clock::now() - before;
                longestIdle = std::max(longestIdle, spent.count());
                const std::int64_t memory = library.memoryInUse();
                largestStep = std::max(largestStep, std::abs(memory - previous));
                steps += memory != previous;
                highest = std::max(highest, memory);
                previous = memory;
                std::this_thread::sleep_for(std::chrono::milliseconds{1});
            }
        };

        audio.enter(RenderThread::loading);
        auto wanted = engine.makeInstance(1);
        wanted->patch().setElementCount(1);
        wanted->patch().initElement(1, ElementType::sample);
        wanted->patch().recall(1, elementIndex::bank, 20.5f / 128.9f);
        wanted->patch().recall(1, elementIndex::item, 0.0f);
        engine.adopt(1, std::move(wanted));
        idleUntil([&] { return !library.busy(); });
        const int stepsUp = steps;

        audio.enter(RenderThread::releasing);
        engine.adopt(1, engine.makeInstance(1));
        idleUntil([&] { return library.memoryInUse() == 0; });
        audio.stop();

        const auto count = [&](const char* name, double value) { state.counters[name] = value; };
        count("highest_MiB", static_cast<double>(highest) / mebibyte);
        count("end_MiB", static_cast<double>(library.memoryInUse()) / mebibyte);
        count("largest_step_MiB", static_cast<double>(largestStep) / mebibyte);
        count("steps_up", stepsUp);
        count("steps_down", steps - stepsUp);
        count("longest_idle_ms", longestIdle);
        for (const auto& [phase, name] : {std::pair{RenderThread::resting, "resting"},
                                          std::pair{RenderThread::loading, "loading"},
                                          std::pair{RenderThread::releasing, "releasing"}}) {
            count((std::string{"median_us_"} + name).c_str(), audio.below(phase, 0.5));
            count((std::string{"p99_us_"} + name).c_str(), audio.below(phase, 0.99));
            count((std::string{"worst_us_"} + name).c_str(), audio.below(phase, 1));
        }
    }
}

BENCHMARK(loadAndRelease)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace stratovane
