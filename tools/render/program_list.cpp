#include "program_list.h"

#include <cstdio>

#include "mrx/host_records.h"

namespace stratovane::render {

namespace {

template <std::size_t size>
void appendName(std::string& text, const char (&name)[size]) {
    for (char c : name) {
        if (c == 0) break;
        text.push_back(c);
    }
    text.push_back('\n');
}

}  // namespace

std::string programList(PluginHost& plugIn) {
    constexpr std::int32_t channel = 0;
    std::string text;
    std::intptr_t count = 1;
    std::int32_t category = -1;
    // Entry 0 asks the user to choose.
    for (std::int32_t index = 1;; ++index) {
        MidiProgramName program{};
        program.index = index;
        count = plugIn.request(Opcode::getMidiProgramName, channel, 0, &program);
        if (index >= count) break;
        if (program.parentCategory != category) {
            category = program.parentCategory;
            MidiProgramCategory bank{};
            bank.index = category;
            plugIn.request(Opcode::getMidiProgramCategory, channel, 0, &bank);
            text.append("Bank ").append(std::to_string(program.bankLsb)).append(": ");
            appendName(text, bank.name);
        }
        char numbers[32];
        std::snprintf(numbers, sizeof numbers, "  %3d %3d  ", program.bankLsb, program.program);
        text.append(numbers);
        appendName(text, program.name);
    }
    if (text.empty())
        text = "The plug-in offers no programs. Is its content there? (--content DIR)\n";
    return text;
}

}  // namespace stratovane::render
