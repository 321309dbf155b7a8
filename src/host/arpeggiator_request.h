// The vendor-specific request for what the arpeggiators play.
#pragma once

#include <algorithm>
#include <cstdint>

#include "mrx/effect_record.h"
#include "voice/arpeggiator_log.h"

namespace stratovane {

inline constexpr std::int32_t arpeggiatorRequest = fourCharacters("arpe");

/// What its pointer points at: room for events, of which `count` are filled in.
struct ArpeggiatorTake {
    std::int32_t capacity = 0, count = 0;
    ArpeggiatorEvent* events = nullptr;
};

/// Without a pointer value 1 turns the log on and 0 off, any other value changes nothing, and the
/// answer is whether it is on now; what waits stays. With a pointer it moves events, oldest first,
/// into the room there is; as many as there is room for may mean that more wait. The answer is then
/// how many events were lost so far because the log was full. UI thread.
inline std::intptr_t answerArpeggiatorRequest(ArpeggiatorLog& log, std::intptr_t value,
                                              ArpeggiatorTake* take) {
    if (take == nullptr) {
        if (value == 0 || value == 1) log.turn(value == 1);
        return log.isOn() ? 1 : 0;
    }
    take->count = 0;
    while (take->events != nullptr && take->count < take->capacity &&
           log.take(take->events[take->count]))
        ++take->count;
    return static_cast<std::intptr_t>(log.lost());
}

}  // namespace stratovane
