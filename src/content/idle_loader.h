// What one bank loads or frees in one idle step.
#pragma once

#include <cstdint>

namespace stratovane {

class ContentBank;
class Trace;

/// The library's account of what is resident. UI thread.
struct LoaderState {
    std::int64_t memoryInUse = 0;  // bytes of items and samples
    std::uint32_t pass = 0;        // idle passes so far
    bool keepItems = false;        // items stay resident without references
};

/// Does the first thing that is due: items, ECO items, up to 8 MiB of samples; then frees a sample,
/// an ECO item, an item. Answers 0 when nothing was done, else a code that says what; a bank that
/// was asked for something since the pass began waits (99). UI thread.
int runBankStep(ContentBank& bank, LoaderState& state, Trace& trace);

}  // namespace stratovane
