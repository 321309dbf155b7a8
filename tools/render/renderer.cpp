#include "renderer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "block_plan.h"
#include "interrupt.h"
#include "progress.h"
#include "recording.h"

namespace stratovane::render {

namespace {

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

/// Behind the patch of the part that plays, before it does.
std::optional<Failure> addEffects(PluginHost& plugIn, const Options& options) {
    const int part = options.channel.value_or(0);
    for (const EffectChoice& effect : options.effects) {
        if (!plugIn.addEffect(part, effect))
            return Failure{Exit::plugIn, "the plug-in has no place for the effect " +
                                             quotedName(effect) + " in part " +
                                             std::to_string(part + 1)};
    }
    return {};
}

std::optional<Failure> play(PluginHost& plugIn, const Song& song, const Options& options,
                            std::size_t firstOutput, Recording& recording) {
    Summary& summary = recording.summary();
    const auto channels = static_cast<std::size_t>(summary.channels);
    const std::int64_t end = song.frames + tailFrames(options, song.rate);
    BlockPlan plan{song, options.blockFrames, end};
    PatchCheck patches{plugIn};
    Progress progress{end, !options.quiet};
    const auto begun = std::chrono::steady_clock::now();
    while (!plan.done()) {
        if (interruptSeen() != 0) return Failure{Exit::output, "interrupted; no file was written"};
        const Block block = plan.next();
        const auto events =
            std::span{song.events}.subspan(block.firstEvent, block.endEvent - block.firstEvent);
        patches.check(events);
        plugIn.render(events, block.start, block.frames, plan.timeAt(block));
        if (auto failure = recording.take().append(plugIn.buffers().subspan(firstOutput, channels),
                                                   block.frames))
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
    Recording recording{options};
    recording.summary().inputSeconds = static_cast<double>(song.frames) / song.rate;
    if (auto failure = recording.open(options.sampleRate, all ? plugIn.outputs() : 2,
                                      song.frames + tailFrames(options, song.rate)))
        return *failure;

    plugIn.start(options.sampleRate, options.blockFrames);
    if (auto failure = addEffects(plugIn, options)) return *failure;
    const auto firstOutput = static_cast<std::size_t>(all ? 0 : 2 * (options.outputPair - 1));
    if (auto failure = play(plugIn, song, options, firstOutput, recording)) return *failure;
    if (options.tail == Options::Tail::automatic) {
        std::int64_t audible = 0;
        if (auto failure = recording.findAudibleFrames(0, audible)) return *failure;
        recording.take().cutTo(audible > 0 ? audible : song.frames);
    }
    if (auto failure = recording.finish()) return *failure;
    return recording.summary();
}

}  // namespace stratovane::render
