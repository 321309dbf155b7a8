#include "host/program_list.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "content/content_library.h"

namespace stratovane {

namespace {

template <std::size_t n>
void copyText(char (&field)[n], std::string_view text) {
    std::memset(field, 0, n);
    std::memcpy(field, text.data(), std::min(text.size(), n - 1));
}

/// Names of programs may begin with a mark for the browser.
std::string_view withoutMark(std::string_view name) {
    constexpr std::string_view marks = "_{}[]";
    if (!name.empty() && marks.find(name.front()) != std::string_view::npos) name.remove_prefix(1);
    return name;
}

}  // namespace

int ProgramList::rebuild(const Shown& shown) {
    entries_.assign(1, 0);
    banks_.clear();
    for (int bank = 0; bank < (shown.combis ? 128 : 120); ++bank) {
        if (library_.bankName(bank).empty()) continue;
        if (bank >= 77 && bank <= 79 && !shown.gmBanks) continue;
        if (bank >= 80 && bank <= 89 && !shown.banks80to89) continue;
        const auto category = static_cast<std::uint16_t>(banks_.size());
        banks_.push_back(static_cast<std::uint8_t>(bank));
        for (int program = 0; program < 128; ++program)
            if (!library_.programName(bank, program).empty())
                entries_.push_back(static_cast<std::uint16_t>(category << 8 | program));
    }
    return static_cast<int>(entries_.size());
}

std::int32_t ProgramList::program(MidiProgramName& record) const {
    const auto count = static_cast<std::int32_t>(entries_.size());
    if (record.index < 0 || record.index >= count) return count;
    const auto index = static_cast<std::size_t>(record.index);
    record.program = static_cast<std::uint8_t>(entries_[index] & 255);
    record.bankMsb = 0;
    record.bankLsb = 0;
    record.parentCategory = entries_[index] >> 8;
    record.flags = 0;
    if (index == 0) {
        copyText(record.name, "Select Patch...");
    } else {
        record.bankLsb = static_cast<std::uint8_t>(bankOfEntry(index));
        copyText(record.name, withoutMark(library_.programName(record.bankLsb, record.program)));
    }
    return count;
}

std::int32_t ProgramList::current(std::int32_t location, MidiProgramName& record) const {
    if (location < 0) return 0;
    for (std::size_t i = entries_.size(); i-- > 1;) {
        if ((entries_[i] & 255) != programOf(location) || bankOfEntry(i) != bankOf(location))
            continue;
        record.index = static_cast<std::int32_t>(i);
        record.program = static_cast<std::uint8_t>(programOf(location));
        record.bankLsb = static_cast<std::uint8_t>(bankOf(location));
        record.bankMsb = 0;
        record.parentCategory = entries_[i] >> 8;
        record.flags = 0;
        return record.index;
    }
    return 0;
}

std::int32_t ProgramList::category(MidiProgramCategory& record) const {
    const auto count = static_cast<std::int32_t>(banks_.size());
    if (record.index >= 0 && record.index < count) {
        copyText(record.name, library_.bankName(banks_[static_cast<std::size_t>(record.index)]));
        record.parentCategory = -1;
        record.flags = 0;
    }
    return count;
}

}  // namespace stratovane
