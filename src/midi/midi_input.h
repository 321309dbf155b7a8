// The host's MIDI events, sorted into the parts' event lists.
#pragma once

#include <cstdint>

#include "base/trace.h"
#include "engine/part_events.h"

namespace stratovane {

class ContentPresence;
class Engine;
class HostParameters;
struct Command;
struct EventList;
struct MidiEvent;
struct MultiSetup;
struct Settings;

/// Curves, bank select, registered and non-registered parameters, program changes and combi steps
/// are acted on here; everything else is queued for the parts. Audio thread.
class MidiInput {
  public:
    MidiInput(MultiSetup& multi, const Settings& settings, const ContentPresence& presence,
              HostParameters& parameters, Trace& trace);

    /// Appends a host's list to the parts' lists. Null lists and events, counts below 0 and events
    /// of other kinds are ignored.
    void process(const EventList* events, Engine& engine);
    /// Queues what the editor or a host parameter sent, behind what the part has already.
    void queue(const Command& command);

    const PartEventLists& lists() const { return lists_; }
    void clear();

  private:
    void handle(const MidiEvent& event, Engine& engine);
    void controller(int channel, std::int32_t frame, int number, int value, Engine& engine);
    void dataEntry(int channel, int value, Engine& engine);
    void setByNumber(int channel, int number, float value, Engine& engine);
    void programChange(int channel, int program, std::int32_t frame);
    /// Asks the idle call for a program.
    void request(int channel, std::int32_t location, std::int32_t frame);
    /// A combi sets all parts: what waited for one of them is replaced.
    void replaceWaiting();
    bool combiStep(int number, int value);
    /// To a part and, while it is linked, to the next, and so on.
    void add(int channel, const EventRecord& record);
    void append(int part, const EventRecord& record);
    void setHost(int channel, int row, float value);

    MultiSetup& multi_;
    const Settings& settings_;
    const ContentPresence& presence_;
    HostParameters& parameters_;
    Trace& trace_;
    PartEventLists lists_;
    std::int32_t dropped_ = 0;  // events beyond what a part takes in a block
    bool droppedTold_ = false;
};

}  // namespace stratovane
