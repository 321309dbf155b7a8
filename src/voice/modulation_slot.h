// A modulation row as one voice runs it.
#pragma once

#include <cstdint>

#include "base/random.h"
#include "patch/modulation_row.h"

namespace stratovane {

/// Source, modifier and destination point into the voice and its part, so that a tick looks nothing
/// up. Audio thread.
struct ModulationSlot {
    const float* source = nullptr;
    const float* modifier = nullptr;
    float* destination = nullptr;
    std::int32_t processor = rowProcessor::plain;
    float amount = 0, depth = 0;
    float output = 0;  // before depth; other rows may read it
    float state = 0;
    std::uint32_t stamp = 0, edited = 0;  // of the row, as taken over
};

/// One tick: moves the state on and adds to (or scales) the destination. Outputs stay within ±1e6.
void runSlot(ModulationSlot& slot, Random& random);

}  // namespace stratovane
