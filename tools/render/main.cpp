// stratovane-render: renders a Standard MIDI File through the plug-in, faster than it plays.
#include <csignal>
#include <cstdio>
#include <iostream>

#include "midi_song.h"
#include "options.h"
#include "plugin_host.h"
#include "private_settings.h"
#include "program_list.h"
#include "renderer.h"

namespace {

using namespace stratovane::render;

Failure run(const Options& options) {
    // The song first: a damaged one needs no plug-in to be told.
    Song song;
    if (!options.listPrograms) {
        auto read = readSong(options.song, options.sampleRate, options.channel);
        if (auto* failure = std::get_if<Failure>(&read)) return *failure;
        song = std::move(std::get<Song>(read));
    }
    PrivateSettings settings;
    if (auto failure = settings.make(options.userSettings, options.settings)) return *failure;
    PluginHost plugIn;
    if (auto failure = plugIn.load(options.plugIn)) return *failure;
    if (options.listPrograms) {
        plugIn.start(options.sampleRate, options.blockFrames);
        std::cout << programList(plugIn);
        return {Exit::ok, {}};
    }
    const auto result = renderSong(plugIn, song, options);
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
