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
#include "parameters.h"
#include "plugin_host.h"
#include "private_settings.h"
#include "program_list.h"
#include "renderer.h"
#include "song_setup.h"

namespace {

using namespace stratovane::render;

using Result = std::variant<Summary, Failure>;

Result runSong(const Options& options) {
    // The files first: a damaged one needs no plug-in to be told.
    auto song =
        readSong(options.input, options.sampleRate, {options.channel, options.leavesOutPrograms()});
    if (auto* failure = std::get_if<Failure>(&song)) return *failure;
    auto files = readSetupFiles(options);
    if (auto* failure = std::get_if<Failure>(&files)) return *failure;
    PrivateSettings settings;
    if (auto failure = settings.make(options.userSettings, options.settings)) return *failure;
    PluginHost plugIn;
    if (auto failure = plugIn.load(options.plugIn)) return *failure;
    return renderSong(plugIn, std::get<Song>(song), std::get<SetupFiles>(files), options);
}

Failure listPlugIn(const Options& options) {
    auto files = readSetupFiles(options);
    if (auto* failure = std::get_if<Failure>(&files)) return *failure;
    PrivateSettings settings;
    if (auto failure = settings.make(options.userSettings, options.settings)) return *failure;
    PluginHost plugIn;
    if (auto failure = plugIn.load(options.plugIn)) return *failure;
    plugIn.start(options.sampleRate, options.blockFrames);
    if (options.listPrograms) {
        std::cout << programList(plugIn);
        return {Exit::ok, {}};
    }
    ProgramWatch watch{plugIn};
    if (auto failure = setUp(plugIn, options, std::get<SetupFiles>(files),
                             options.generalMidi == GeneralMidi::on, watch))
        return *failure;
    std::cout << parameterList(plugIn);
    return {Exit::ok, {}};
}

Failure run(const Options& options) {
    if (options.listPrograms || options.listParameters) return listPlugIn(options);
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
