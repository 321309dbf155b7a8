// The host's inspector: which programs it may offer per channel.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/shared.h"
#include "mrx/host_records.h"

namespace stratovane {

class ContentLibrary;

/// UI thread.
class ProgramList {
  public:
    struct Shown {
        bool combis = true;   // banks 120..127
        bool gmBanks = true;  // banks 77..79
        bool banks80to89 = true;
    };

    explicit ProgramList(const ContentLibrary& library) : library_{library} {}

    /// Entry 0 is the placeholder; then every named program of every shown bank with a name.
    /// Answers the number of entries.
    int rebuild(const Shown& shown);
    /// All channels' programs are to be asked for again.
    void markAllChanged() { changed_.store(0xFFFF); }

    /// Fills the record at its own index, when there is such an entry; answers the number of
    /// entries.
    std::int32_t program(MidiProgramName& record) const;
    /// Fills the record from the entry that stands for a location; answers its index, 0 for none.
    std::int32_t current(std::int32_t location, MidiProgramName& record) const;
    /// Answers the number of categories.
    std::int32_t category(MidiProgramCategory& record) const;
    /// Whether the channel's mark was set; takes it.
    bool takeChanged(int channel) { return (changed_.clear(1u << channel) >> channel & 1) != 0; }

  private:
    int bankOfEntry(std::size_t entry) const { return banks_[entries_[entry] >> 8]; }

    const ContentLibrary& library_;
    std::vector<std::uint16_t> entries_;  // category << 8 | program
    std::vector<std::uint8_t> banks_;     // by category
    SharedBits changed_;
};

}  // namespace stratovane
