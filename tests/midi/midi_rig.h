// What the tests of MIDI messages share.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "automation/host_parameters.h"
#include "base/text_out.h"
#include "engine/command_ring.h"
#include "engine/content_presence.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "midi/message_settings.h"
#include "midi/midi_input.h"
#include "midi/status_line.h"
#include "mrx/events.h"
#include "settings/settings.h"

namespace stratovane {

/// Everything that messages act on, and no library.
struct MidiRig {
    EngineShared shared;
    Trace trace;
    MultiSetup multi;
    CommandRing commands;
    Settings settings;
    ContentPresence presence;
    HostParameters parameters{shared, multi, commands};
    Engine engine{shared, trace, 4};
    MessageSettings messages{multi, parameters, shared, trace};
    StatusLine line;
    MidiInput midi{multi, settings, presence, messages, line, trace};

    MidiRig() {
        parameters.attach(engine);
        makeVelocityCurve(0.5f, settings.velocityCurve);
        makeTouchCurve(1.0f, settings.touchCurve);
    }
    void send(int status, int d1, int d2 = 0, std::int32_t frame = 0, std::int8_t detune = 0) {
        MidiEvent event;
        event.head.frame = frame;
        event.bytes[0] = static_cast<std::uint8_t>(status);
        event.bytes[1] = static_cast<std::uint8_t>(d1);
        event.bytes[2] = static_cast<std::uint8_t>(d2);
        event.detuneCents = detune;
        EventList list;
        list.count = 1;
        list.events[0] = &event.head;
        midi.process(&list, engine);
    }
    /// A whole message of the bytes between 0xF0 and 0xF7.
    void exclusive(std::vector<std::uint8_t> bytes) {
        bytes.insert(bytes.begin(), 0xF0);
        bytes.push_back(0xF7);
        dump(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    }
    void dump(const std::uint8_t* bytes, std::int32_t length) {
        SystemExclusiveEvent event;
        event.dump = bytes;
        event.dumpLength = length;
        EventList list;
        list.count = 1;
        list.events[0] = &event.head;
        midi.process(&list, engine);
    }
    std::string status() const {
        char text[64];
        TextOut out{text};
        line.show(out);
        return std::string{out.view()};
    }
    /// What waits for the idle call, which says it is done.
    std::vector<Request> takeRequests() {
        std::vector<Request> all;
        for (Request request; multi.requests.pop(request); multi.requests.done())
            all.push_back(request);
        return all;
    }
    void controllers(std::initializer_list<std::pair<int, int>> list, int channel = 0) {
        for (const auto& [number, value] : list) send(0xB0 | channel, number, value);
    }
    /// What was queued for a part, as "frame:status d1 d2 extra", and forgets it all.
    std::string take(int part) {
        std::string all;
        for (const EventRecord& e : midi.lists()[static_cast<std::size_t>(part)]) {
            char text[64];
            TextOut out{text};
            out.print("%d:%X %d %d %d", e.frame, e.status, e.data1, e.data2, e.extra);
            all += (all.empty() ? "" : ", ") + std::string{out.view()};
        }
        midi.clear();
        return all;
    }
    std::uint32_t pending(int part) const {
        return multi.part[static_cast<std::size_t>(part)].pendingProgram.get();
    }
};

}  // namespace stratovane
