#include "renderer.h"

#include <algorithm>
#include <chrono>

#include "block_plan.h"
#include "event_list.h"
#include "interrupt.h"
#include "pair_files.h"
#include "program_watch.h"
#include "progress.h"
#include "recording.h"
#include "saved_programs.h"

namespace stratovane::render {

namespace {

using Fault = std::optional<Failure>;

/// One song's way through the plug-in, and the files that come of it.
class Rendering {
  public:
    Rendering(PluginHost& plugIn, const Song& song, const Options& options)
        : plugIn_{plugIn},
          song_{song},
          options_{options},
          end_{song.frames + tailFrames(options, song.rate)},
          watch_{plugIn} {
        summary_.inputSeconds = static_cast<double>(song.frames) / song.rate;
    }

    /// Begins all files, so that a place that takes none is told before the song, and the plug-in.
    Fault open(const SetupFiles& files) {
        if (hasOutput()) {
            const bool all = options_.outputPair == Options::allPairs;
            channels_ = static_cast<std::size_t>(all ? plugIn_.outputs() : 2);
            firstOutput_ = static_cast<std::size_t>(all ? 0 : 2 * (options_.outputPair - 1));
            if (auto failure = recording_.open(song_.rate, static_cast<int>(channels_), end_))
                return failure;
        }
        if (hasPairs())
            if (auto failure = pairs_.open(plugIn_, end_)) return failure;
        if (auto failure = saved_.open(options_)) return failure;
        plugIn_.start(options_.sampleRate, options_.blockFrames);
        if (hasEvents())
            if (auto failure = events_.open(options_.events, plugIn_)) return failure;
        return setUp(plugIn_, options_, files, wantsGeneralMidi(plugIn_, options_, song_.resets()),
                     watch_);
    }

    Fault play() {
        BlockPlan plan{song_, options_.blockFrames, end_};
        Progress progress{end_, !options_.quiet};
        const auto begun = std::chrono::steady_clock::now();
        while (!plan.done()) {
            if (interruptSeen() != 0)
                return Failure{Exit::output, "interrupted; no file was written"};
            const Block block = plan.next();
            if (auto failure = playBlock(block, plan.timeAt(block))) return failure;
            progress.show(block.start);
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begun;
        summary_.elapsedSeconds = elapsed.count();
        summary_.renderedSeconds = static_cast<double>(end_) / song_.rate;
        summary_.highestVoices = plugIn_.highestVoices();
        summary_.stuck = plugIn_.stuck();
        watch_.report(summary_);
        return {};
    }

    /// Every file is written before the first gets its name.
    Fault finish() {
        if (auto failure = saved_.write(plugIn_)) return failure;
        if (hasOutput())
            if (auto failure = writeOutput()) return failure;
        if (hasPairs())
            if (auto failure = pairs_.write(song_.frames)) return failure;
        if (hasEvents())
            if (auto failure = events_.write(song_)) return failure;

        if (hasOutput())
            if (auto failure = recording_.commit()) return failure;
        if (hasPairs())
            if (auto failure = pairs_.commit()) return failure;
        if (hasEvents())
            if (auto failure = events_.commit()) return failure;
        if (auto failure = saved_.commit()) return failure;
        report();
        return {};
    }

    const Summary& summary() const { return summary_; }

  private:
    bool hasOutput() const { return !options_.output.empty(); }
    bool hasPairs() const { return !options_.multi.empty(); }
    bool hasEvents() const { return !options_.events.empty(); }

    Fault playBlock(const Block& block, const TimeInfo& time) {
        const auto events =
            std::span{song_.events}.subspan(block.firstEvent, block.endEvent - block.firstEvent);
        watch_.send(events, song_.rate);
        plugIn_.render(events, block.start, block.frames, time);
        if (hasOutput())
            if (auto failure = recording_.take().append(
                    plugIn_.buffers().subspan(firstOutput_, channels_), block.frames))
                return failure;
        if (hasPairs())
            if (auto failure = pairs_.append(plugIn_.buffers(), block.frames)) return failure;
        if (hasEvents()) events_.collect(plugIn_);
        if (block.loads) {
            plugIn_.settle();
            watch_.loaded();
        } else {
            plugIn_.idle();
        }
        return {};
    }

    Fault writeOutput() {
        if (options_.tail == Options::Tail::automatic) {
            std::int64_t audible = 0;
            if (auto failure = recording_.findAudibleFrames(0, audible)) return failure;
            recording_.take().cutTo(audible > 0 ? audible : song_.frames);
        }
        return recording_.write();
    }

    void report() {
        if (hasPairs()) pairs_.report(summary_);
        summary_.lostEvents = events_.lost();
        for (const std::string& path : {options_.events, options_.saveBank})
            if (!path.empty()) summary_.otherFiles.push_back(path);
        for (const PresetTarget& preset : options_.savePresets)
            summary_.otherFiles.push_back(preset.path);
    }

    PluginHost& plugIn_;
    const Song& song_;
    const Options& options_;
    const std::int64_t end_;  // frames, the tail included
    std::size_t firstOutput_ = 0, channels_ = 2;
    ProgramWatch watch_;
    Summary summary_;
    Recording recording_{options_, options_.output, summary_};
    PairFiles pairs_{options_};
    EventList events_;
    SavedPrograms saved_;
};

}  // namespace

std::variant<Summary, Failure> renderSong(PluginHost& plugIn, const Song& song,
                                          const SetupFiles& files, const Options& options) {
    if (const int pairs = plugIn.outputs() / 2; options.outputPair > pairs)
        return Failure{Exit::usage, "there is no output pair " +
                                        std::to_string(options.outputPair) + ": the plug-in has " +
                                        std::to_string(pairs) +
                                        " (--set \"Outputs=...\" takes a letter for each)"};
    Rendering rendering{plugIn, song, options};
    if (auto failure = rendering.open(files)) return *failure;
    if (auto failure = rendering.play()) return *failure;
    if (auto failure = rendering.finish()) return *failure;
    return rendering.summary();
}

}  // namespace stratovane::render
