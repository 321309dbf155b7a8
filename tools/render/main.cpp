// stratovane-render: renders a Standard MIDI File through the plug-in, faster than it plays, or a
// sound file through effects alone.
#include <csignal>
#include <cstdio>
#include <iostream>

#include "effect_list.h"
#include "effect_run.h"
#include "interrupt.h"
#include "midi_song.h"
#include "options.h"
#include "plugin_host.h"
#include "private_settings.h"
#include "program_list.h"
#include "renderer.h"

namespace {

using namespace stratovane::render;

using Result = std::variant<Summary, Failure>;

Result runSong(const Options& options) {
    // The song first: a damaged one needs no plug-in to be told.
    auto song = readSong(options.input, options.sampleRate, options.channel);
    if (auto* failure = std::get_if<Failure>(&song)) return *failure;
    PrivateSettings settings;
    if (auto failure = settings.make(options.userSettings, options.settings)) return *failure;
    PluginHost plugIn;
    if (auto failure = plugIn.load(options.plugIn)) return *failure;
    return renderSong(plugIn, std::get<Song>(song), options);
}

Failure listPrograms(const Options& options) {
    PrivateSettings settings;
    if (auto failure = settings.make(options.userSettings, options.settings)) return *failure;
    PluginHost plugIn;
    if (auto failure = plugIn.load(options.plugIn)) return *failure;
    plugIn.start(options.sampleRate, options.blockFrames);
    std::cout << programList(plugIn);
    return {Exit::ok, {}};
}

Failure run(const Options& options) {
    if (options.listPrograms) return listPrograms(options);
    if (options.listEffects) {
        std::cout << effectList();
        return {Exit::ok, {}};
    }
    const Result result = options.fromSong ? runSong(options) : runEffects(options);
    if (const auto* failure = std::get_if<Failure>(&result)) return *failure;
    const Summary& summary = std::get<Summary>(result);
    if (!options.quiet) std::cerr << hints(summary);
    if (options.json)
        std::cout << summaryJson(summary);
    else if (!options.quiet)
        std::cout << summaryText(summary);
    return {Exit::ok, {}};
}

}  // namespace

int main(int argc, char** argv) {
    const auto read = readOptions(argc, argv);
    Failure end;
    if (const auto* options = std::get_if<Options>(&read)) {
        catchInterrupts();
        end = run(*options);
    } else {
        end = std::get<Failure>(read);
    }
    if (!end.sentence.empty()) std::cerr << "stratovane-render: " << end.sentence << '\n';
    if (const int signal = interruptSeen(); signal != 0) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    return static_cast<int>(end.exit);
}
