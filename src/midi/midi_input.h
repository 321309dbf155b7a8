// The host's MIDI events, sorted into the parts' event lists.
#pragma once

#include <cstdint>

#include "base/trace.h"
#include "engine/part_events.h"

namespace stratovane {

class ContentPresence;
class Engine;
class MessageSettings;
class StatusLine;
struct Command;
struct EventList;
struct MidiEvent;
struct MultiSetup;
struct Settings;
struct SystemExclusive;
struct SystemExclusiveEvent;

/// Curves, bank select, registered and non-registered parameters, program changes, combi steps and
/// system-exclusive messages are acted on here; everything else is queued for the parts. Audio
/// thread.
class MidiInput {
  public:
    MidiInput(MultiSetup& multi, const Settings& settings, const ContentPresence& presence,
              MessageSettings& messages, StatusLine& status, Trace& trace);

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
    void systemExclusive(const SystemExclusiveEvent& event, Engine& engine);
    void act(const SystemExclusive& message, std::int32_t frame, Engine& engine);
    void askForEffect(int slot, int preset, float level);
    void resetGeneralMidi(std::int32_t frame);
    /// Asks the idle call for a program.
    void request(int channel, std::int32_t location, std::int32_t frame);
    /// A combi sets all parts: what waited for one of them is replaced. In General MIDI mode what
    /// controllers said belongs to the channels and stays.
    void replaceWaiting(std::int32_t frame);
    /// What was sent to a part up to a frame gives way to the patch that is on its way.
    void forgetControllers(int part, std::int32_t frame);
    bool combiStep(int number, int value, std::int32_t frame);
    /// To a part and, while it is linked, to the next, and so on.
    void add(int channel, const EventRecord& record);
    void append(int part, const EventRecord& record);
    void setHost(int channel, int row, float value, Engine& engine);

    MultiSetup& multi_;
    const Settings& settings_;
    const ContentPresence& presence_;
    MessageSettings& messages_;
    StatusLine& status_;
    Trace& trace_;
    PartEventLists lists_;
    std::int32_t dropped_ = 0;  // events beyond what a part takes in a block
    bool droppedTold_ = false;
};

}  // namespace stratovane
