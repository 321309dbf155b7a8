// Fills a fresh patch from a patch record, old versions included.
#pragma once

#include "patch/record_parser.h"

namespace stratovane {

class Trace;

/// What becomes of effects that a record took from the master channel.
enum class MasterEffects {
    offer,     // they fill slots of the master channel that are free
    stepOver,  // the master channel is brought back by other means
};

struct ReadOptions {
    Patch* master = nullptr;  // null: what is the master channel's goes to the patch's own slots
    MasterEffects masterEffects = MasterEffects::offer;
    float pianoMode = 0.5f;  // stands in for a stored "Piano Mode" of 1
};

struct ReadResult {
    std::array<bool, sendSlots> filledMaster{};  // master slots that took an effect of the record
};

/// Sets everything in a patch that nobody plays and nothing was set in. The master channel may play
/// meanwhile. Values out of range keep their defaults and are traced. UI thread.
ReadResult fillPatch(Patch& fresh, const PatchRecord& record, const ReadOptions& options,
                     Trace& trace);

/// Parses and fills; with a fault, neither the patch nor the master channel was touched. UI thread.
std::variant<ReadResult, RecordFault> readPatchRecord(Patch& fresh, ByteView block,
                                                      const ReadOptions& options, Trace& trace);

}  // namespace stratovane
