#include "event_list.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "host/arpeggiator_request.h"

namespace stratovane::render {

std::string eventWords(const MidiBytes& bytes) {
    const std::string first = std::to_string(bytes[1]), second = std::to_string(bytes[2]);
    constexpr int centre = 8192;
    switch (bytes[0] & 0xF0) {
        case 0x80:
            return "note-off " + first + " " + second;
        case 0x90:
            return "note-on " + first + " " + second;
        case 0xA0:
            return "key-pressure " + first + " " + second;
        case 0xB0:
            return "controller " + first + " " + second;
        case 0xD0:
            return "pressure " + first;
        case 0xE0:
            return "bend " + std::to_string(bytes[1] + bytes[2] * 128 - centre);
        default:
            return "message " + std::to_string(bytes[0]) + " " + first + " " + second;
    }
}

std::optional<Failure> EventList::open(const std::string& path, PluginHost& plugIn) {
    if (auto fault = file_.open(path)) return Failure{Exit::output, *fault};
    constexpr std::intptr_t on = 1;
    if (plugIn.request(Opcode::vendorSpecific, arpeggiatorRequest, on) == 1) return {};
    return Failure{Exit::plugIn, "the plug-in does not tell what its arpeggiators play"};
}

void EventList::collect(PluginHost& plugIn) {
    std::array<ArpeggiatorEvent, 512> portion;
    ArpeggiatorTake take{static_cast<std::int32_t>(portion.size()), 0, portion.data()};
    do {
        lost_ = plugIn.request(Opcode::vendorSpecific, arpeggiatorRequest, 0, &take);
        events_.insert(events_.end(), portion.begin(),
                       portion.begin() + std::clamp(take.count, 0, take.capacity));
    } while (take.count == take.capacity);
}

std::optional<Failure> EventList::write(const Song& song) {
    // Parts are rendered one behind the other, so their events come a block's length mixed up.
    std::stable_sort(events_.begin(), events_.end(),
                     [](const ArpeggiatorEvent& a, const ArpeggiatorEvent& b) {
                         return std::pair{a.frame, a.part} < std::pair{b.frame, b.part};
                     });
    std::string text;
    for (const ArpeggiatorEvent& event : events_) {
        char head[96];
        std::snprintf(head, sizeof head, "%.6f %.6f %d ",
                      static_cast<double>(event.frame) / song.rate, song.beatsAt(event.frame),
                      event.part + 1);
        text.append(head).append(eventWords(event.bytes)).append("\n");
    }
    if (auto fault = file_.write(text)) return Failure{Exit::output, *fault};
    return {};
}

std::optional<Failure> EventList::commit() {
    if (auto fault = file_.keep()) return Failure{Exit::output, *fault};
    return {};
}

}  // namespace stratovane::render
