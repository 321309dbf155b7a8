// What the command line asks for.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "failure.h"

namespace stratovane::render {

enum class Format { wav16, wav24, floatWav, flac };

struct Options {
    static constexpr int allPairs = 0;
    enum class Tail { automatic, none, seconds };

    std::string song;
    std::string output;
    std::string plugIn;   // absolute
    std::string content;  // absolute; empty: the plug-in's own choice
    int sampleRate = 44100;
    int blockFrames = 512;
    Tail tail = Tail::automatic;
    double tailSeconds = 0;
    double gainDb = 0;
    bool normalize = false;
    Format format = Format::wav16;
    int outputPair = 1;
    std::optional<int> channel;  // 0..15
    std::vector<std::pair<std::string, std::string>> settings;
    bool userSettings = false;
    bool listPrograms = false;
    bool quiet = false;
    bool json = false;
};

/// Either the options or how to end at once (help counts as success and has been printed).
std::variant<Options, Failure> readOptions(int argc, char** argv);

}  // namespace stratovane::render
