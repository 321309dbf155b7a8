#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "numbers.h"
#include "setup_options.h"
#include "sound_input.h"

namespace stratovane::render {

namespace {

namespace fs = std::filesystem;

constexpr double longestTailSeconds = 3600;
constexpr std::size_t longestSetting = 1023;

// Every name the plug-in reads, so that a slip of the pen is told instead of ignored.
constexpr std::array<std::string_view, 19> settingNames{"Debug",
                                                        "Content Location",
                                                        "Outputs",
                                                        "Vel Sens",
                                                        "Touch Sens",
                                                        "MIDI Patches",
                                                        "MIDI Combis",
                                                        "Inspector",
                                                        "MIDI Numbering",
                                                        "CombiNextCC",
                                                        "CombiPrevCC",
                                                        "Meter Mode",
                                                        "Memory Use",
                                                        "Master Vol",
                                                        "Lift",
                                                        "Combi Preload Mode",
                                                        "Default Scene Root",
                                                        "Default Scene MIDI",
                                                        "UpdateDisplay"};

std::string besideTheProgram(const char* name) {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return (error ? fs::path{name} : program.parent_path() / name).string();
}

/// The texts of options that need more than a type, before they are understood.
struct Texts {
    std::string format, tail, outputPair = "1";
    std::vector<std::string> settings, effects;
    int channel = 0;
    SetupTexts setup;
};

std::optional<std::string> understandTail(const std::string& text, Options& options) {
    if (text == "auto") return {};
    options.tail = Options::Tail::none;
    if (text == "none") return {};
    const auto seconds = wholeNumber(text);
    if (!seconds || *seconds < 0 || *seconds > longestTailSeconds)
        return "--tail takes auto, none or seconds from 0 to 3600, not \"" + text + "\"";
    options.tail = Options::Tail::seconds;
    options.tailSeconds = *seconds;
    return {};
}

std::optional<std::string> understandOutputPair(const std::string& text, Options& options) {
    options.outputPair = Options::allPairs;
    if (text == "all") return {};
    const auto pair = wholeNumber(text);
    if (!pair || *pair < 1 || *pair > 16 || *pair != std::floor(*pair))
        return "--output-pair takes all or a number from 1 to 16, not \"" + text + "\"";
    options.outputPair = static_cast<int>(*pair);
    return {};
}

std::optional<std::string> understandFormat(std::string text, Options& options) {
    if (text.empty()) text = fs::path{options.output}.extension() == ".flac" ? "flac" : "wav16";
    constexpr std::pair<std::string_view, Format> formats[] = {{"wav16", Format::wav16},
                                                               {"wav24", Format::wav24},
                                                               {"float", Format::floatWav},
                                                               {"flac", Format::flac}};
    for (const auto& [name, format] : formats) {
        if (text != name) continue;
        options.format = format;
        return {};
    }
    return "--format takes wav16, wav24, float or flac, not \"" + text + "\"";
}

std::optional<std::string> understandSettings(const std::vector<std::string>& texts,
                                              Options& options) {
    for (const std::string& text : texts) {
        const std::size_t sign = text.find('=');
        if (sign == std::string::npos) return "--set takes \"Name=Value\", not \"" + text + "\"";
        const std::string name = text.substr(0, sign), value = text.substr(sign + 1);
        if (std::find(settingNames.begin(), settingNames.end(), name) == settingNames.end()) {
            std::string known;
            for (std::string_view each : settingNames)
                known.append(known.empty() ? "\"" : ", \"").append(each).append("\"");
            return "there is no setting \"" + name + "\"; there are " + known;
        }
        if (value.size() > longestSetting || value.find_first_of("\r\n") != std::string::npos)
            return "the value for \"" + name + "\" is too long or has more than one line";
        options.settings.emplace_back(name, value);
    }
    if (options.content.empty()) return {};
    std::error_code error;
    if (!fs::is_directory(options.content, error))
        return "--content: there is no folder \"" + options.content + "\"";
    options.content = fs::absolute(options.content, error).string();
    if (options.content.size() > longestSetting)
        return "--content: the path is longer than a setting can be";
    options.settings.emplace_back("Content Location", options.content);
    return {};
}

std::optional<std::string> understandEffects(const std::vector<std::string>& texts,
                                             Options& options) {
    for (const std::string& text : texts) {
        auto read = readEffect(text);
        if (const auto* fault = std::get_if<std::string>(&read)) return *fault;
        options.effects.push_back(std::get<EffectChoice>(read));
    }
    return {};
}

std::optional<std::string> understandFiles(const Options& options) {
    if (options.input.empty()) return "which song? stratovane-render SONG.mid -o OUT.wav";
    const bool writesElse = !options.multi.empty() || !options.events.empty() ||
                            !options.saveBank.empty() || !options.savePresets.empty();
    if (options.output.empty() && !writesElse)
        return "where to? stratovane-render " +
               std::string{options.fromSong ? "SONG.mid" : "IN.wav --effect \"Name\""} +
               " -o OUT.wav";
    return understandTargets(options);
}

/// What the kind of input needs and what makes no sense with it.
std::optional<std::string> understandKind(const CLI::App& app, Options& options) {
    constexpr const char* songOnly[] = {
        "--plugin", "--content",       "--rate",   "--output-pair", "--channel",      "--set",
        "--preset", "--bank",          "--patch",  "--gm",          "--parameter",    "--save-bank",
        "--multi",  "--keep-programs", "--events", "--save-preset", "--user-settings"};
    constexpr const char* soundOnly[] = {"--key", "--tempo"};
    const auto given = [&](const char* name) { return app.count(name) > 0; };
    if (options.fromSong) {
        for (const char* name : soundOnly)
            if (given(name))
                return std::string{name} + " is for a sound file; a song has keys and a tempo";
        return {};
    }
    for (const char* name : songOnly)
        if (given(name)) return std::string{name} + " is for a song; this is a sound file";
    if (options.effects.empty())
        return "a sound file needs an effect: --effect \"Name\" (--list-effects lists them)";
    if (!given("--block")) options.blockFrames = Options::soundBlockFrames;
    return {};
}

void declareSound(CLI::App& app, Options& options, Texts& texts) {
    app.add_option("INPUT", options.input,
                   "Standard MIDI File to play, or sound file to pass through effects alone; its "
                   "first bytes tell which");
    app.add_option("-o,--output", options.output, "File to write");
    app.add_option("--plugin", options.plugIn, "Plug-in library")
        ->default_str("stratovane2.so beside this program");
    app.add_option("--content", options.content, "Folder of the content library");
    app.add_option("--rate", options.sampleRate, "Sample rate in Hz")
        ->check(CLI::Range(8000, 192000))
        ->capture_default_str();
    app.add_option("--block", options.blockFrames, "Largest block in frames")
        ->check(CLI::Range(1, 8192))
        ->default_str("512, for a sound file 256");
    app.add_option("--tail", texts.tail,
                   "What follows the input: auto (until it is silent, 60 s at most), none, or "
                   "SECONDS [auto, for a sound file none]");
    app.add_option("--gain", options.gainDb, "Gain in dB; with --normalize the peak in dBFS")
        ->check(CLI::Range(-120.0, 60.0))
        ->capture_default_str();
    app.add_flag("--normalize", options.normalize, "Bring the peak to full scale");
    app.add_option("--format", texts.format,
                   "wav16, wav24, float (32-bit WAV) or flac (24-bit) [flac for OUT.flac, else "
                   "wav16]");
    app.add_option("--output-pair", texts.outputPair, "Output pair N, or all in one file")
        ->capture_default_str();
    app.add_option("--multi", options.multi,
                   "Folder for a file per output pair that sounds, all of one length, beside or "
                   "(without -o) instead of the output")
        ->type_name("DIR");
    app.add_option(
           "--channel", texts.channel,
           "Play the notes of all channels but 10 on this one; no program changes, no volume")
        ->check(CLI::Range(1, 16));
    app.add_option("--effect", texts.effects,
                   "An effect and its values, 0..1 from parameter 0 on; what is left out is as in "
                   "the effect's first preset. A song's stands behind the patch of the part of "
                   "--channel, else of part 1, until a program change loads another. Repeated: in "
                   "series")
        ->type_name("NAME[:P0,P1,...]")
        ->expected(1)
        ->take_all();
    app.add_option("--key", options.key,
                   "Key held while a sound file passes, for effects that "
                   "follow keys [none]")
        ->type_name("NOTE")
        ->check(CLI::Range(0, 127));
    app.add_option("--tempo", options.tempo, "Tempo of a sound file in beats per minute")
        ->type_name("BPM")
        ->check(CLI::Range(1.0, 1000.0))
        ->capture_default_str();
}

void declareSetup(CLI::App& app, Options& options, Texts& texts) {
    app.add_option("--preset", options.preset, "Preset file for the part of --channel, else part 1")
        ->type_name("FILE.fxp");
    app.add_option("--bank", options.bank, "Bank file: all parts and master effects")
        ->type_name("FILE.fxb");
    app.add_option("--patch", texts.setup.patches,
                   "A program of the content library for a part (from 1), by the numbers of "
                   "--list-programs. Repeated: for several parts")
        ->type_name("PART=BANK.PROGRAM")
        ->expected(1)
        ->take_all();
    app.add_option("--gm", texts.setup.generalMidi,
                   "General MIDI: auto (a GM system on comes first when the content has the GM "
                   "sounds, the song resets nothing itself, and none of --preset, --bank, --patch "
                   "and --channel is given), on, or off")
        ->capture_default_str();
    app.add_flag("--keep-programs", options.keepPrograms,
                 "Obey the song's program changes, bank selects and GM messages also with "
                 "--preset, --bank, --patch or --channel, which otherwise leave them out");
    app.add_option("--parameter", texts.setup.parameters,
                   "A host parameter by index or name (--list-parameters) and its value 0..1, set "
                   "before the song. Repeated: in order")
        ->type_name("INDEX-OR-NAME=VALUE")
        ->expected(1)
        ->take_all();
    app.add_option("--save-bank", options.saveBank, "Bank file to write after the song")
        ->type_name("OUT.fxb");
    app.add_option("--save-preset", texts.setup.savePresets,
                   "Preset file to write after the song from the patch of a part (from 1). "
                   "Repeated: for several parts")
        ->type_name("PART OUT.fxp")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    app.add_option("--events", options.events,
                   "Text file of what the arpeggiators played: seconds, beats, part, event")
        ->type_name("FILE");
    app.add_option("--set", texts.settings, "A setting of the plug-in, as \"Name=Value\"")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all();
    app.add_flag("--user-settings", options.userSettings,
                 "Start from a copy of your own settings, not from defaults");
    app.add_flag("--list-programs", options.listPrograms, "List the programs and end");
    app.add_flag("--list-parameters", options.listParameters,
                 "List the host parameters with index, name and display, as --preset, --bank, "
                 "--patch and --parameter leave them, and end");
    app.add_flag("--list-effects", options.listEffects,
                 "List the effects with their parameters, defaults and displays, and end");
    app.add_flag("--quiet", options.quiet, "No progress, hints and summary");
    app.add_flag("--json", options.json, "The summary as JSON");
}

}  // namespace

std::variant<Options, Failure> readOptions(int argc, char** argv) {
    CLI::App app{
        "Renders a Standard MIDI File through the Stratovane 2 plug-in, or a sound file "
        "through its effects, into a sound file.",
        "stratovane-render"};
    Options options;
    Texts texts;
    declareSound(app, options, texts);
    declareSetup(app, options, texts);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return Failure{Exit::ok, {}};
    } catch (const CLI::ParseError& error) {
        return Failure{Exit::usage, error.what()};
    }
    if (texts.channel > 0) options.channel = texts.channel - 1;
    options.fromSong = !isSoundFile(options.input);
    if (app.count("--tail") == 0) texts.tail = options.fromSong ? "auto" : "none";
    auto fault = understandTail(texts.tail, options);
    if (!fault) fault = understandOutputPair(texts.outputPair, options);
    if (!fault) fault = understandFormat(texts.format, options);
    if (!fault) fault = understandSettings(texts.settings, options);
    if (!fault) fault = understandEffects(texts.effects, options);
    if (!fault) fault = understandSetup(texts.setup, options);
    if (!fault && !options.listsOnly()) {
        fault = understandFiles(options);
        if (!fault) fault = understandKind(app, options);
    }
    if (!fault && !std::isfinite(options.gainDb)) fault = "--gain takes a number of dB";
    if (!fault && !std::isfinite(options.tempo)) fault = "--tempo takes beats per minute";
    if (fault) return Failure{Exit::usage, *fault};

    if (options.plugIn.empty()) options.plugIn = besideTheProgram("stratovane2.so");
    std::error_code error;
    options.plugIn = fs::absolute(options.plugIn, error).string();
    return options;
}

}  // namespace stratovane::render
