// What the sixteen parts have beside their patches: MIDI selections, links, waiting program
// changes.
#pragma once

#include <array>
#include <cstdint>

#include "base/shared.h"
#include "base/units.h"
#include "engine/master_tune.h"
#include "engine/request_queue.h"

namespace stratovane {

class Patch;

/// A program change that waits for the idle call: library location with bit 16 set while it waits.
inline constexpr std::uint32_t programWaits = 0x10000;
/// Equals no location, so that a program change that follows is never taken for a repetition.
inline constexpr std::uint32_t noProgram = 0xFFFF;
inline constexpr std::int32_t nullParameterNumber = 16383;

/// What registered parameter numbers and mode messages set since the last program change, for the
/// patch it loads. Written by the audio thread, applied by the UI thread.
struct MessageSets {
    enum Kind { bendRange, fineTune, coarseTune, monoMode, kinds };
    std::array<Shared<float>, kinds> values;
    SharedBits noted;

    void note(Kind kind, float value) {
        values[static_cast<std::size_t>(kind)] = value;
        noted.set(1u << kind);
    }
    void forget() { noted.take(); }
    /// Before the patch is handed over.
    void applyTo(Patch& fresh) const;
};

struct PartSetup {
    MessageSets sets;
    Shared<std::int32_t> location{0};    // bank << 8 | program of what it plays, 0 none. UI thread
    SharedBits pendingProgram;           // location and programWaits
    Shared<std::int32_t> bankSelect{0};  // MSB << 7 | LSB
    Shared<std::int32_t> parameterNumber{0};  // RPN, or NRPN with bit 14. Audio thread
    Shared<bool> linked{false};               // its events also go to the next part
    std::array<Shared<float>, 6> knobs;       // of the patch, for the editor
    SharedCounter changes;                    // the editor redraws
};

/// The combi slots that program changes and step controllers choose from.
struct CombiTable {
    static constexpr std::int32_t none = -1;
    std::array<Shared<std::int32_t>, 128> entries;  // library location 30720..32767, or none
    Shared<std::int32_t> current{none};
    Shared<std::int32_t> lastController{63};

    CombiTable() {
        for (auto& entry : entries) entry = none;
    }
    /// The location in a slot; none for what is no combi location.
    std::int32_t at(int slot) const {
        const std::int32_t location = entries[static_cast<std::size_t>(slot)];
        return location >= 30720 && location <= 32767 ? location : none;
    }
};

/// Threads: as each member says; what two threads use is shared.
struct MultiSetup {
    std::array<PartSetup, parts> part;
    Shared<std::int32_t> libraryState{0};  // bytes in use, 1 while it loads. UI thread
    CombiTable combis;
    MasterTune tune;
    SharedCounter programRequests;          // bumped by whoever asks for a program
    Shared<bool> defaultPatchWanted{true};  // bank 84, program 0 for part 1, at the first idle call
    Shared<bool> generalMidi{false};
    SharedCounter refresh;  // the editor polls it
    Shared<bool> dirty{false};
    Shared<bool> patchLoaded{false};  // asks the host to update its display. UI thread
    RequestQueue requests;
};

}  // namespace stratovane
