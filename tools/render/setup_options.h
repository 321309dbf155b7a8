// Options for what the song finds in the plug-in and what is kept of it.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "options.h"

namespace stratovane::render {

/// Their texts before they are understood.
struct SetupTexts {
    std::string generalMidi = "auto";
    std::vector<std::string> patches, parameters;
    std::vector<std::pair<int, std::string>> savePresets;  // part from 1, path
};

/// Understands the texts and refuses what contradicts itself; answers a sentence of what is wrong.
std::optional<std::string> understandSetup(const SetupTexts& texts, Options& options);

/// Refuses files to write that are the input or one another.
std::optional<std::string> understandTargets(const Options& options);

}  // namespace stratovane::render
