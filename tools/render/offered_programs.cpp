#include "offered_programs.h"

#include <algorithm>
#include <iterator>

#include "content/patch_record_layout.h"
#include "shared/windows_1252.h"

namespace stratovane::render {

namespace {
constexpr std::int32_t anyChannel = 0;  // all are offered the same
}

std::string recordName(std::string_view field) {
    return utf8FromWindows1252(field.substr(0, field.find('\0')));
}

std::vector<MidiProgramName> offeredPrograms(PluginHost& plugIn) {
    std::vector<MidiProgramName> programs;
    // Entry 0 asks the user to choose.
    for (std::int32_t index = 1;; ++index) {
        MidiProgramName program{};
        program.index = index;
        if (index >= plugIn.request(Opcode::getMidiProgramName, anyChannel, 0, &program)) break;
        programs.push_back(program);
    }
    return programs;
}

std::optional<std::string> offeredName(PluginHost& plugIn, int bank, int program) {
    for (const MidiProgramName& each : offeredPrograms(plugIn))
        if (each.bankLsb == bank && each.program == program)
            return recordName({each.name, sizeof each.name});
    return {};
}

bool offersBank(PluginHost& plugIn, int bank) {
    const auto programs = offeredPrograms(plugIn);
    return std::any_of(programs.begin(), programs.end(),
                       [bank](const MidiProgramName& program) { return program.bankLsb == bank; });
}

bool isSetup(PluginHost& plugIn, int bank, int program) {
    constexpr std::size_t longestName = 31;  // of a setup; a program's may be longer
    const std::string name = plugIn.text(Opcode::getProgramName);
    auto offered = offeredName(plugIn, bank, program);
    if (!offered) return false;
    offered->erase(0, offered->find_first_not_of(' '));
    return *offered == name || (name.size() >= longestName && offered->starts_with(name));
}

Origin originOf(PluginHost& plugIn, int channel) {
    MidiProgramName program{};
    const std::intptr_t index = plugIn.request(Opcode::getCurrentMidiProgram, channel, 0, &program);
    if (index < 0) return {};
    if (index == 0) return {true, {}};
    // What it answers has no name yet.
    MidiProgramName named{};
    named.index = static_cast<std::int32_t>(index);
    plugIn.request(Opcode::getMidiProgramName, channel, 0, &named);
    std::copy(std::begin(named.name), std::end(named.name), program.name);
    return {true, program};
}

std::optional<Program> programOf(PluginHost& plugIn, int part) {
    if (const Origin origin = originOf(plugIn, part); origin.program)
        return Program{recordName({origin.program->name, sizeof origin.program->name}),
                       origin.program->bankLsb, origin.program->program};
    plugIn.selectPart(part);
    const Bytes preset = plugIn.getChunk(true);
    if (preset.empty()) return {};
    return Program{presetName(preset), {}, 0};
}

std::string presetName(ByteView chunk) {
    return utf8FromWindows1252(
        chunk.part(recordLayout::name, recordLayout::nameBytes).terminatedText());
}

}  // namespace stratovane::render
