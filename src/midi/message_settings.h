// What MIDI messages set and ask for.
#pragma once

#include "engine/request_queue.h"

namespace stratovane {

class Engine;
class HostParameters;
class Trace;
struct EngineShared;
struct MultiSetup;

/// A setting acts at once. While something that loads waits in the queue, which may undo it, it is
/// queued as well, so that the idle call repeats it in its place.
class MessageSettings {
  public:
    MessageSettings(MultiSetup& multi, HostParameters& parameters, EngineShared& shared,
                    Trace& trace)
        : multi_{multi}, parameters_{parameters}, shared_{shared}, trace_{trace} {}

    /// Does what a setting says; requests that load are not for this. Any thread.
    void apply(Engine& engine, const Request& setting);
    /// As `apply`, and in its turn once more. Audio thread.
    void set(Engine& engine, const Request& setting);
    /// Leaves something to the idle call; dropped and traced, with false, when the queue is full.
    /// Audio thread.
    bool ask(const Request& request);

    static Request hostValue(int index, float value) {
        return {Request::Kind::hostValue, index, value};
    }
    static Request patchValue(int part, int element, int index, float value) {
        return {Request::Kind::patchValue, part << 16 | element << 8 | index, value};
    }

  private:
    MultiSetup& multi_;
    HostParameters& parameters_;
    EngineShared& shared_;
    Trace& trace_;
};

}  // namespace stratovane
