// What the plug-in tells its host about programs: those it offers, and what a channel plays.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mrx/host_records.h"
#include "plugin_host.h"

namespace stratovane::render {

/// A program of the content library; no bank: a patch that did not come from there.
struct Program {
    std::string name;  // UTF-8
    std::optional<int> bank;
    int number = 0;
    bool operator==(const Program&) const = default;
};

/// The name field of a record as UTF-8.
std::string recordName(std::string_view field);

/// Every program offered, in the order of the plug-in's list.
std::vector<MidiProgramName> offeredPrograms(PluginHost& plugIn);
/// The name of a program that is offered.
std::optional<std::string> offeredName(PluginHost& plugIn, int bank, int program);
bool offersBank(PluginHost& plugIn, int bank);
/// Whether the whole setup is named after a program that is offered: then it is that combi.
bool isSetup(PluginHost& plugIn, int bank, int program);

/// Where the patch of a channel (0..15) came from.
struct Origin {
    bool told = false;                       // the plug-in answers such questions
    std::optional<MidiProgramName> program;  // none: not from its list
    bool is(int bank, int number) const {
        return program && program->bankLsb == bank && program->program == number;
    }
};
Origin originOf(PluginHost& plugIn, int channel);

/// What a part (0..15) plays; nothing for a part without a patch. Selects that part.
std::optional<Program> programOf(PluginHost& plugIn, int part);

/// The patch name in a preset chunk, UTF-8.
std::string presetName(ByteView chunk);

}  // namespace stratovane::render
