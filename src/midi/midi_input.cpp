#include "midi/midi_input.h"

#include <algorithm>

#include "automation/host_parameters.h"
#include "engine/command_ring.h"
#include "engine/content_presence.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "midi/message_settings.h"
#include "mrx/events.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

constexpr std::uint8_t noteOff = 0x80, noteOn = 0x90, keyPressure = 0xA0, controlChange = 0xB0,
                       program = 0xC0, pressure = 0xD0, pitchBend = 0xE0;

}  // namespace

MidiInput::MidiInput(MultiSetup& multi, const Settings& settings, const ContentPresence& presence,
                     MessageSettings& messages, StatusLine& status, Trace& trace)
    : multi_{multi},
      settings_{settings},
      presence_{presence},
      messages_{messages},
      status_{status},
      trace_{trace} {}

void MidiInput::clear() {
    for (PartEvents& list : lists_) list.clear();
}

void MidiInput::process(const EventList* events, Engine& engine) {
    if (events == nullptr) return;
    for (std::int32_t i = 0; i < events->count; ++i) {
        const Event* event = events->events[i];
        if (event == nullptr) continue;
        if (event->type == Event::midi) {
            handle(*reinterpret_cast<const MidiEvent*>(event), engine);
            continue;
        }
        if (event->type == Event::systemExclusive)
            systemExclusive(*reinterpret_cast<const SystemExclusiveEvent*>(event), engine);
        multi_.part[parts - 1].changes.bump();
    }
}

void MidiInput::append(int part, const EventRecord& record) {
    if (lists_[static_cast<std::size_t>(part)].append(record)) return;
    ++dropped_;
    if (droppedTold_) return;
    droppedTold_ = true;
    trace_.later(TraceLevel::warning, "MIDI events dropped: more than %d for part %d in a block",
                 PartEvents::capacity, part + 1);
}

void MidiInput::add(int channel, const EventRecord& record) {
    append(channel, record);
    for (int part = channel; part < parts - 1 && multi_.part[static_cast<std::size_t>(part)].linked;
         ++part)
        append(part + 1, record);
}

void MidiInput::handle(const MidiEvent& event, Engine& engine) {
    const std::uint8_t status = event.bytes[0];
    const int channel = status & 15;
    const int d1 = event.bytes[1] & 127, d2 = event.bytes[2] & 127;
    const std::int32_t frame = std::max(event.head.frame, 0);
    trace_.later(TraceLevel::midi, "MIDI @ %d: %X %d %d", frame, status, d1, d2);

    auto record = [&](std::uint8_t command, int data1, int data2, int extra = 0) {
        return EventRecord{frame, static_cast<std::uint8_t>(command | channel),
                           static_cast<std::uint8_t>(data1), static_cast<std::uint8_t>(data2),
                           static_cast<std::uint8_t>(extra)};
    };
    auto curved = [](const MidiCurve& curve, int value) {
        return static_cast<int>(curve[static_cast<std::size_t>(value)]);
    };
    switch (status & 0xF0) {
        case noteOff:
            return add(channel, record(noteOff, d1, 0));
        case noteOn:
            if (d2 == 0) return add(channel, record(noteOff, d1, 0));
            return add(channel,
                       record(noteOn, d1, curved(settings_.velocityCurve, d2), event.detuneCents));
        case keyPressure:
            return add(channel, record(keyPressure, curved(settings_.touchCurve, d2), d1));
        case controlChange:
            return controller(channel, frame, d1, d2, engine);
        case program:
            return programChange(channel, d1, frame);
        case pressure:
            return add(channel, record(pressure, curved(settings_.touchCurve, d1), 0));
        case pitchBend:
            return add(channel, record(pitchBend, d1, d2));
        default:
            return;
    }
}

void MidiInput::controller(int channel, std::int32_t frame, int number, int value, Engine& engine) {
    PartSetup& part = multi_.part[static_cast<std::size_t>(channel)];
    constexpr int nrpnBit = 16384;
    const std::int32_t selected = part.parameterNumber, bank = part.bankSelect;
    auto queue = [&] {
        add(channel, {frame, static_cast<std::uint8_t>(controlChange | channel),
                      static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(value), 0});
    };
    if (combiStep(number, value, frame)) return;
    switch (number) {
        case 0:
            part.bankSelect = (value << 7) + (bank & 127);
            return;
        case 32:
            part.bankSelect = (bank & 0x3F80) + value;
            return;
        case 99:
            part.parameterNumber = nrpnBit + (value << 7) + (selected & 127);
            return;
        case 98:
            part.parameterNumber = nrpnBit + (selected & 0x3F80) + value;
            return;
        case 101:
            part.parameterNumber = (value << 7) + (selected & 127);
            return;
        case 100:
            part.parameterNumber = (selected & 0x3F80) + value;
            return;
        case 6:
            return dataEntry(channel, value, engine);
        case 121:
            part.parameterNumber = nullParameterNumber;
            return queue();
        case 126:
            part.sets.note(MessageSets::monoMode, value >= 1 ? 1.0f : 0.0f);
            return setHost(channel, strip::monoMode, value >= 1 ? 1.0f : 0.0f, engine);
        case 127:
            part.sets.note(MessageSets::monoMode, 0.0f);
            return setHost(channel, strip::monoMode, 0.0f, engine);
        default:
            return queue();
    }
}

void MidiInput::setHost(int channel, int row, float value, Engine& engine) {
    messages_.set(engine, MessageSettings::hostValue(channel * partRows + row, value));
}

void MidiInput::queue(const Command& command) {
    constexpr int wheel = 2;  // the on-screen pitch wheel: only its upper seven bits exist
    PartEvents& list = lists_[command.part];
    EventRecord record{list.lastFrame(), command.part, command.data1, command.data2, 0};
    if (command.isNote()) {
        record.status |= command.data2 != 0 ? noteOn : noteOff;
    } else if (command.data1 == wheel) {
        record.status |= pitchBend;
        record.data1 = 254;  // tells the wheel from a host's bend
        record.extra = command.data2 != 0 ? 127 : 0;
    } else {
        record.status |= controlChange;
    }
    command.isLinked() ? add(command.part, record) : append(command.part, record);
}

}  // namespace stratovane
