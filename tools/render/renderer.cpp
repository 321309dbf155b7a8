#include "renderer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <utility>

#include "block_plan.h"
#include "progress.h"
#include "sound_file.h"
#include "take.h"

namespace stratovane::render {

namespace {

constexpr double longestAutomaticTailSeconds = 60;
constexpr std::size_t pieceFrames = 4096;

// A signal handler can reach nothing but a global.
volatile std::sig_atomic_t interrupt = 0;

std::int64_t tailFrames(const Options& options) {
    if (options.tail == Options::Tail::none) return 0;
    const bool automatic = options.tail == Options::Tail::automatic;
    return std::llround(options.sampleRate *
                        (automatic ? longestAutomaticTailSeconds : options.tailSeconds));
}

/// Finds the channels that play where no patch is, asking once after each loading.
class PatchCheck {
  public:
    explicit PatchCheck(PluginHost& plugIn) : plugIn_{plugIn} {}

    void loaded() { known_.fill(false); }
    void check(std::span<const SongEvent> events) {
        for (const SongEvent& event : events) {
            if (!event.exclusive.empty() || !event.isNoteOn()) continue;
            const auto part = static_cast<std::size_t>(event.channel());
            if (std::exchange(known_[part], true)) continue;
            if (!plugIn_.hasPatch(event.channel())) missing_[part] = true;
        }
    }
    std::vector<int> channels() const {
        std::vector<int> found;
        for (int part = 0; part < 16; ++part)
            if (missing_[static_cast<std::size_t>(part)]) found.push_back(part + 1);
        return found;
    }

  private:
    PluginHost& plugIn_;
    std::array<bool, 16> known_{}, missing_{};
};

std::optional<Failure> play(PluginHost& plugIn, const Song& song, const Options& options,
                            std::size_t firstOutput, std::size_t channels, Take& take,
                            Summary& summary) {
    const std::int64_t end = song.frames + tailFrames(options);
    BlockPlan plan{song, options.blockFrames, end};
    PatchCheck patches{plugIn};
    Progress progress{end, !options.quiet};
    const auto begun = std::chrono::steady_clock::now();
    while (!plan.done()) {
        if (interrupt != 0) return Failure{Exit::output, "interrupted; no file was written"};
        const Block block = plan.next();
        const auto events =
            std::span{song.events}.subspan(block.firstEvent, block.endEvent - block.firstEvent);
        patches.check(events);
        plugIn.render(events, block.start, block.frames, plan.timeAt(block));
        if (auto failure =
                take.append(plugIn.buffers().subspan(firstOutput, channels), block.frames))
            return failure;
        if (block.loads) {
            plugIn.settle();
            patches.loaded();
        } else {
            plugIn.idle();
        }
        progress.show(block.start);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begun;
    summary.elapsedSeconds = elapsed.count();
    summary.renderedSeconds = static_cast<double>(end) / song.rate;
    summary.channelsWithoutPatch = patches.channels();
    summary.highestVoices = plugIn.highestVoices();
    summary.stuck = plugIn.stuck();
    return {};
}

float gainFor(const Take& take, const Options& options) {
    const auto gain = static_cast<float>(std::pow(10.0, options.gainDb / 20));
    if (!options.normalize || take.peak() == 0) return gain;
    const float wanted = std::min(gain, 1.0f) * formatCeiling(options.format);
    float exact = wanted / take.peak();
    while (exact * take.peak() > wanted) exact = std::nextafter(exact, 0.0f);
    return exact;
}

/// The second pass: gain, end, measure, write.
std::optional<Failure> finish(Take& take, const Song& song, const Options& options, SoundFile& file,
                              Summary& summary) {
    const float gain = gainFor(take, options);
    if (options.tail == Options::Tail::automatic) {
        std::int64_t audible = 0;
        if (auto failure = take.findAudibleFrames(formatStep(options.format) / gain, audible))
            return failure;
        take.cutTo(audible > 0 ? audible : song.frames);
    }
    Meter meter;
    std::vector<float> samples;
    for (std::int64_t frame = 0; frame < take.frames(); frame += pieceFrames) {
        if (auto failure = take.read(frame, pieceFrames, samples)) return failure;
        for (float& sample : samples) {
            if (!std::isfinite(sample)) {
                sample = 0;
                ++summary.invalidSamples;
            }
            sample *= gain;
        }
        meter.measure(samples);
        if (auto failure = file.write(samples)) return failure;
    }
    summary.fileFrames = take.frames();
    summary.peakDbfs = meter.peakDbfs();
    summary.rmsDbfs = meter.rmsDbfs();
    summary.clippedSamples = file.clipped();
    return file.commit();
}

}  // namespace

std::variant<Summary, Failure> renderSong(PluginHost& plugIn, const Song& song,
                                          const Options& options) {
    const int pairs = plugIn.outputs() / 2;
    const bool all = options.outputPair == Options::allPairs;
    if (options.outputPair > pairs)
        return Failure{Exit::usage, "there is no output pair " +
                                        std::to_string(options.outputPair) + ": the plug-in has " +
                                        std::to_string(pairs) +
                                        " (--set \"Outputs=...\" takes a letter for each)"};
    Summary summary;
    summary.output = options.output;
    summary.format = formatName(options.format);
    summary.clippingKept = options.format == Format::floatWav;
    summary.rate = options.sampleRate;
    summary.channels = all ? plugIn.outputs() : 2;
    summary.songSeconds = static_cast<double>(song.frames) / song.rate;

    SoundFile file;
    if (auto failure = file.open(options.output, options.format, options.sampleRate,
                                 summary.channels, song.frames + tailFrames(options)))
        return *failure;
    Take take;
    if (auto failure = take.open(options.output, summary.channels)) return *failure;

    plugIn.start(options.sampleRate, options.blockFrames);
    const auto firstOutput = static_cast<std::size_t>(all ? 0 : 2 * (options.outputPair - 1));
    if (auto failure = play(plugIn, song, options, firstOutput,
                            static_cast<std::size_t>(summary.channels), take, summary))
        return *failure;
    if (auto failure = finish(take, song, options, file, summary)) return *failure;
    summary.fileSeconds = static_cast<double>(summary.fileFrames) / song.rate;
    return summary;
}

void catchInterrupts() {
    struct sigaction action {};
    action.sa_handler = [](int signal) { interrupt = signal; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // a second one ends at once
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

int interruptSeen() { return interrupt; }

}  // namespace stratovane::render
