// What the command line asks for.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "effect_choice.h"
#include "failure.h"

namespace stratovane::render {

enum class Format { wav16, wav24, floatWav, flac };

struct Options {
    static constexpr int allPairs = 0;
    static constexpr int songBlockFrames = 512, soundBlockFrames = 256;
    enum class Tail { automatic, none, seconds };

    std::string input;
    bool fromSong = true;  // else a sound file goes through the effects alone
    std::string output;
    std::string plugIn;   // absolute
    std::string content;  // absolute; empty: the plug-in's own choice
    int sampleRate = 44100;
    int blockFrames = songBlockFrames;
    Tail tail = Tail::automatic;
    double tailSeconds = 0;
    double gainDb = 0;
    bool normalize = false;
    Format format = Format::wav16;
    int outputPair = 1;
    std::optional<int> channel;  // 0..15
    std::vector<EffectChoice> effects;
    std::optional<int> key;  // 0..127, held while a sound file passes
    float tempo = 120;       // of a sound file, beats per minute
    std::vector<std::pair<std::string, std::string>> settings;
    bool userSettings = false;
    bool listPrograms = false;
    bool listEffects = false;
    bool quiet = false;
    bool json = false;
};

/// Either the options or how to end at once (help counts as success and has been printed).
std::variant<Options, Failure> readOptions(int argc, char** argv);

}  // namespace stratovane::render
