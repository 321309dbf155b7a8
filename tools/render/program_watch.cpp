#include "program_watch.h"

#include <algorithm>
#include <utility>

namespace stratovane::render {

namespace {

constexpr int parts = 16, drumPart = 9, partParameters = 152, link = 0;
constexpr int melodicBank = 78, drumBank = 79, firstCombiBank = 120, lastBank = 127;
constexpr int drumBankMsb = 120, melodicBankMsb = 121;

}  // namespace

void ProgramWatch::send(std::span<const SongEvent> events, int rate) {
    for (const SongEvent& event : events) {
        if (!event.exclusive.empty()) {
            exclusive(event.exclusive);
            continue;
        }
        const int channel = event.channel();
        int& bank = bankSelect_[static_cast<std::size_t>(channel)];
        const std::uint8_t command = event.bytes[0] & 0xF0;
        if (event.isNoteOn())
            noteOn(channel);
        else if (command == 0xB0 && event.bytes[1] == 0)
            bank = event.bytes[2] * 128 + bank % 128;
        else if (command == 0xB0 && event.bytes[1] == 32)
            bank = bank / 128 * 128 + event.bytes[2];
        else if (command == 0xC0)
            waiting_ =
                Change{channel, bank, event.bytes[1], static_cast<double>(event.frame) / rate,
                       plugIn_.text(Opcode::getProgramName)};
    }
}

void ProgramWatch::exclusive(std::span<const std::uint8_t> message) {
    const GeneralMidiMessage asks = generalMidiMessage(message);
    if (asks == GeneralMidiMessage::none) return;
    generalMidi_ = asks == GeneralMidiMessage::on;
    if (!generalMidi_) return;
    bankSelect_.fill(melodicBank);
    bankSelect_[drumPart] = drumBank;
}

void ProgramWatch::noteOn(int part) {
    const auto at = static_cast<std::size_t>(part);
    if (!std::exchange(known_[at], true)) {
        auto& plays = plays_[at];
        const auto program = programOf(plugIn_, part);
        if (!program)
            silent_[at] = true;
        else if (std::find(plays.begin(), plays.end(), *program) == plays.end())
            plays.push_back(*program);
    }
    // A linked part gets the same notes.
    if (part + 1 < parts && plugIn_.parameter((part + 1) * partParameters + link) > 0.5f)
        noteOn(part + 1);
}

void ProgramWatch::loaded() {
    known_.fill(false);
    const auto change = std::exchange(waiting_, std::nullopt);
    if (change && !found(*change))
        notFound_.push_back({change->channel + 1, change->bank, change->program, change->seconds});
}

std::array<int, 2> ProgramWatch::lookedUp(const Change& change) const {
    if (!generalMidi_) return {change.bank, change.program};
    const int msb = change.bank / 128;
    if (msb == 64 || msb == 126) return {lastBank, lastBank};
    const bool drums = change.channel == drumPart ? msb != melodicBankMsb : msb == drumBankMsb;
    return {drums ? drumBank : melodicBank, change.program};
}

bool ProgramWatch::found(const Change& change) {
    const auto [bank, program] = lookedUp(change);
    const Origin origin = originOf(plugIn_, change.channel);
    if (!origin.told || origin.is(bank, program)) return true;
    // The standard kit stands for one that is not there.
    if (generalMidi_ && bank == drumBank && origin.is(drumBank, 0)) return true;
    // A combi brings patches from anywhere, and its name for the whole setup.
    return plugIn_.text(Opcode::getProgramName) != change.setupName ||
           (bank >= firstCombiBank && isSetup(plugIn_, bank, program));
}

void ProgramWatch::report(Summary& summary) const {
    for (int part = 0; part < parts; ++part) {
        const auto at = static_cast<std::size_t>(part);
        if (silent_[at]) summary.channelsWithoutPatch.push_back(part + 1);
        for (const Program& program : plays_[at])
            summary.played.push_back({part + 1, program.name, program.bank, program.number});
    }
    summary.programsNotFound = notFound_;
}

}  // namespace stratovane::render
