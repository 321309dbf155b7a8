#include "program_list.h"

#include <cstdio>

#include "offered_programs.h"

namespace stratovane::render {

std::string programList(PluginHost& plugIn) {
    std::string text;
    std::int32_t category = -1;
    for (const MidiProgramName& program : offeredPrograms(plugIn)) {
        if (program.parentCategory != category) {
            category = program.parentCategory;
            MidiProgramCategory bank{};
            bank.index = category;
            plugIn.request(Opcode::getMidiProgramCategory, 0, 0, &bank);
            text.append("Bank ").append(std::to_string(program.bankLsb)).append(": ");
            text.append(recordName({bank.name, sizeof bank.name})).push_back('\n');
        }
        char numbers[32];
        std::snprintf(numbers, sizeof numbers, "  %3d %3d  ", program.bankLsb, program.program);
        text.append(numbers);
        text.append(recordName({program.name, sizeof program.name})).push_back('\n');
    }
    if (text.empty())
        text = "The plug-in offers no programs. Is its content there? (--content DIR)\n";
    return text;
}

}  // namespace stratovane::render
