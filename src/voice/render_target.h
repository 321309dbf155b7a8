// Where a part's sound goes.
#pragma once

#include <cstdint>

namespace stratovane {

class SendBus;
class ArpeggiatorLog;

/// The outputs and shared send buses of one block. Audio thread.
struct RenderTarget {
    float* const* outputs = nullptr;  // 2 * pairs buffers
    std::uint8_t* touched = nullptr;  // one flag an output, set by whoever writes into it
    int pairs = 0;
    SendBus* sends = nullptr;       // the four that all parts share; null: none
    ArpeggiatorLog* log = nullptr;  // where arpeggiators note what they play; null: nowhere
    std::int64_t firstFrame = 0;    // frames rendered before the block's first, for the log
};

}  // namespace stratovane
