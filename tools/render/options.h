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

enum class GeneralMidi { automatic, on, off };

/// A program of the content library for a part.
struct PatchChoice {
    static constexpr int firstCombiBank = 120;
    int part = 0;  // 0..15
    int bank = 0, program = 0;
    bool isCombi() const { return bank >= firstCombiBank; }
};

/// A host parameter by index or name, as typed, and its value 0..1.
struct ParameterChoice {
    std::string parameter;
    float value = 0;
};

struct PresetTarget {
    int part = 0;  // 0..15
    std::string path;
};

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
    bool listParameters = false;
    bool quiet = false;
    bool json = false;

    // What the song finds in the plug-in, and what is kept of it.
    std::string preset, bank;  // files to load; empty: none
    std::vector<PatchChoice> patches;
    GeneralMidi generalMidi = GeneralMidi::automatic;
    bool keepPrograms = false;
    std::vector<ParameterChoice> parameters;
    std::string saveBank;
    std::vector<PresetTarget> savePresets;
    std::string multi;   // folder for a file per output pair
    std::string events;  // file for what the arpeggiators played

    /// Whether the command line says what plays, so that the song's own programs do not.
    bool choosesPrograms() const {
        return !preset.empty() || !bank.empty() || !patches.empty() || channel.has_value();
    }
    bool leavesOutPrograms() const { return choosesPrograms() && !keepPrograms; }
    /// The part (0..15) that a preset and effects are meant for.
    int mainPart() const { return channel.value_or(0); }
    bool listsOnly() const { return listPrograms || listEffects || listParameters; }
};

/// Either the options or how to end at once (help counts as success and has been printed).
std::variant<Options, Failure> readOptions(int argc, char** argv);

}  // namespace stratovane::render
