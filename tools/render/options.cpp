#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <string_view>

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

/// A number of the whole text, finite; what from_chars would take, whatever the locale.
std::optional<double> wholeNumber(const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return {};
    return value;
}

/// The texts of options that need more than a type, before they are understood.
struct Texts {
    std::string format, tail = "auto", outputPair = "1";
    std::vector<std::string> settings;
    int channel = 0;
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

std::optional<std::string> understandFiles(Options& options) {
    if (options.listPrograms) return {};
    if (options.song.empty()) return "which song? stratovane-render SONG.mid -o OUT.wav";
    if (options.output.empty()) return "where to? stratovane-render SONG.mid -o OUT.wav";
    std::error_code error;
    if (fs::equivalent(options.song, options.output, error))
        return "the output would replace the song itself";
    return {};
}

void declare(CLI::App& app, Options& options, Texts& texts) {
    app.add_option("SONG.mid", options.song, "Standard MIDI File to play");
    app.add_option("-o,--output", options.output, "File to write");
    app.add_option("--plugin", options.plugIn, "Plug-in library")
        ->default_str("stratovane2.so beside this program");
    app.add_option("--content", options.content, "Folder of the content library");
    app.add_option("--rate", options.sampleRate, "Sample rate in Hz")
        ->check(CLI::Range(8000, 192000))
        ->capture_default_str();
    app.add_option("--block", options.blockFrames, "Largest block in frames")
        ->check(CLI::Range(1, 8192))
        ->capture_default_str();
    app.add_option("--tail", texts.tail,
                   "What follows the song: auto (until it is silent, 60 s at most), none, or "
                   "SECONDS")
        ->capture_default_str();
    app.add_option("--gain", options.gainDb, "Gain in dB; with --normalize the peak in dBFS")
        ->check(CLI::Range(-120.0, 60.0))
        ->capture_default_str();
    app.add_flag("--normalize", options.normalize, "Bring the peak to full scale");
    app.add_option("--format", texts.format,
                   "wav16, wav24, float (32-bit WAV) or flac (24-bit) [flac for OUT.flac, else "
                   "wav16]");
    app.add_option("--output-pair", texts.outputPair, "Output pair N, or all in one file")
        ->capture_default_str();
    app.add_option(
           "--channel", texts.channel,
           "Play the notes of all channels but 10 on this one; no program changes, no volume")
        ->check(CLI::Range(1, 16));
    app.add_option("--set", texts.settings, "A setting of the plug-in, as \"Name=Value\"")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all();
    app.add_flag("--user-settings", options.userSettings,
                 "Start from a copy of your own settings, not from defaults");
    app.add_flag("--list-programs", options.listPrograms, "List the programs and end");
    app.add_flag("--quiet", options.quiet, "No progress, hints and summary");
    app.add_flag("--json", options.json, "The summary as JSON");
}

}  // namespace

std::variant<Options, Failure> readOptions(int argc, char** argv) {
    CLI::App app{"Renders a Standard MIDI File through the Stratovane 2 plug-in into a sound file.",
                 "stratovane-render"};
    Options options;
    Texts texts;
    declare(app, options, texts);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return Failure{Exit::ok, {}};
    } catch (const CLI::ParseError& error) {
        return Failure{Exit::usage, error.what()};
    }
    if (texts.channel > 0) options.channel = texts.channel - 1;
    auto fault = understandTail(texts.tail, options);
    if (!fault) fault = understandOutputPair(texts.outputPair, options);
    if (!fault) fault = understandFormat(texts.format, options);
    if (!fault) fault = understandSettings(texts.settings, options);
    if (!fault) fault = understandFiles(options);
    if (!fault && !std::isfinite(options.gainDb)) fault = "--gain takes a number of dB";
    if (fault) return Failure{Exit::usage, *fault};

    if (options.plugIn.empty()) options.plugIn = besideTheProgram("stratovane2.so");
    std::error_code error;
    options.plugIn = fs::absolute(options.plugIn, error).string();
    return options;
}

}  // namespace stratovane::render
