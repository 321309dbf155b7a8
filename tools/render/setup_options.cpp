#include "setup_options.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string_view>

#include "numbers.h"

namespace stratovane::render {

namespace {

namespace fs = std::filesystem;
using Fault = std::optional<std::string>;

constexpr int partCount = 16;

std::optional<int> wholeIn(std::string_view text, int lowest, int highest) {
    const auto number = wholeNumber(text);
    if (!number || *number != std::floor(*number) || *number < lowest || *number > highest)
        return {};
    return static_cast<int>(*number);
}

Fault understandGeneralMidi(const std::string& text, Options& options) {
    constexpr std::pair<std::string_view, GeneralMidi> choices[] = {
        {"auto", GeneralMidi::automatic}, {"on", GeneralMidi::on}, {"off", GeneralMidi::off}};
    for (const auto& [name, choice] : choices) {
        if (text != name) continue;
        options.generalMidi = choice;
        return {};
    }
    return "--gm takes auto, on or off, not \"" + text + "\"";
}

Fault understandPatch(std::string_view text, Options& options) {
    const std::size_t sign = text.find('='), dot = text.find('.');
    std::optional<int> part, bank, program;
    if (sign != std::string::npos && dot != std::string::npos && sign < dot) {
        part = wholeIn(text.substr(0, sign), 1, partCount);
        bank = wholeIn(text.substr(sign + 1, dot - sign - 1), 0, 127);
        program = wholeIn(text.substr(dot + 1), 0, 127);
    }
    if (!part || !bank || !program)
        return "--patch takes PART=BANK.PROGRAM, a part from 1 to 16, bank and program from 0 to "
               "127, not \"" +
               std::string{text} + "\"";
    for (const PatchChoice& other : options.patches)
        if (other.part == *part - 1)
            return "part " + std::to_string(*part) + " cannot have two patches; give one --patch";
    options.patches.push_back({*part - 1, *bank, *program});
    return {};
}

Fault understandParameter(const std::string& text, Options& options) {
    const std::size_t sign = text.rfind('=');  // a knob's name may hold another
    const auto value = sign == std::string::npos
                           ? std::nullopt
                           : wholeNumber(std::string_view{text}.substr(sign + 1));
    if (!value || *value < 0 || *value > 1 || sign == 0)
        return "--parameter takes INDEX-OR-NAME=VALUE with a value from 0 to 1, not \"" + text +
               "\"";
    options.parameters.push_back({text.substr(0, sign), static_cast<float>(*value)});
    return {};
}

Fault understandSavedPresets(const SetupTexts& texts, Options& options) {
    for (const auto& [part, path] : texts.savePresets) {
        if (part < 1 || part > partCount)
            return "--save-preset takes a part from 1 to 16, not " + std::to_string(part);
        if (path.empty() || path.front() == '-') return "--save-preset needs a part and a file";
        options.savePresets.push_back({part - 1, path});
    }
    return {};
}

Fault findContradiction(const Options& options) {
    const auto combis = std::count_if(options.patches.begin(), options.patches.end(),
                                      [](const PatchChoice& patch) { return patch.isCombi(); });
    if (combis > 1) return "each combi fills all parts; give one --patch from banks 120 to 127";
    if (combis > 0 && !options.bank.empty())
        return "a bank and a combi each fill all parts; give --bank or a --patch from banks 120 "
               "to 127";
    if (options.generalMidi == GeneralMidi::on && (combis > 0 || !options.bank.empty()))
        return "--gm on sets up all parts, and so does a bank or combi; give one of them";
    if (!options.preset.empty())
        for (const PatchChoice& patch : options.patches)
            if (patch.part == options.mainPart() && !patch.isCombi())
                return "part " + std::to_string(patch.part + 1) +
                       " cannot have both --preset and --patch";
    return {};
}

/// A path by which files can be compared, there or not.
std::string realPath(const std::string& path) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(path, error);
    return error ? path : real.string();
}

}  // namespace

std::optional<std::string> understandSetup(const SetupTexts& texts, Options& options) {
    if (auto fault = understandGeneralMidi(texts.generalMidi, options)) return fault;
    for (const std::string& text : texts.patches)
        if (auto fault = understandPatch(text, options)) return fault;
    for (const std::string& text : texts.parameters)
        if (auto fault = understandParameter(text, options)) return fault;
    if (auto fault = understandSavedPresets(texts, options)) return fault;
    return findContradiction(options);
}

std::optional<std::string> understandTargets(const Options& options) {
    std::vector<std::string> targets{options.output, options.saveBank, options.events};
    for (const PresetTarget& preset : options.savePresets) targets.push_back(preset.path);
    std::erase(targets, std::string{});
    std::vector<std::string> real;
    for (const std::string& target : targets) {
        std::error_code error;
        if (fs::equivalent(options.input, target, error))
            return std::string{"the output would replace the "} +
                   (options.fromSong ? "song" : "sound file") + " itself";
        real.push_back(realPath(target));
        if (std::count(real.begin(), real.end(), real.back()) > 1)
            return target + " cannot take two outputs; give each a file of its own";
    }
    // A file that was loaded may be saved again as what it is, and be nothing else.
    for (const std::string& source : {options.preset, options.bank})
        for (const std::string& target : {options.output, options.events})
            if (std::error_code error;
                !source.empty() && !target.empty() && fs::equivalent(source, target, error))
                return target + " is loaded; the output would replace it";
    return {};
}

}  // namespace stratovane::render
