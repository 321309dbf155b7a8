// The audio thread: events in, blocks out.

#include <algorithm>

#include "engine/engine.h"
#include "host/synth.h"

namespace stratovane {

namespace {

/// Denormal numbers count as zero while a block is rendered; what the host had comes back after it.
class FlushToZero {
  public:
#if defined(__SSE2__)
    FlushToZero() : saved_{__builtin_ia32_stmxcsr()} { __builtin_ia32_ldmxcsr(saved_ | 0x8040); }
    ~FlushToZero() { __builtin_ia32_ldmxcsr(saved_); }

  private:
    unsigned saved_;
#else
    FlushToZero() = default;
#endif
};

}  // namespace

std::int32_t Synth::processEvents(const EventList* events) {
    const RenderGate::Pass pass{gate_};
    if (pass && resumed_) midi_.process(events, *engine_);
    return 1;
}

void Synth::process(float**, float** outputs, std::int32_t frames) {
    render(outputs, frames, Output::add);
}

void Synth::processReplacing(float**, float** outputs, std::int32_t frames) {
    render(outputs, frames, Output::replace);
}

void Synth::render(float** outputs, std::int32_t frames, Output output) {
    frames = std::max(frames, 0);
    const RenderGate::Pass pass{gate_};
    if (!pass || !resumed_) {
        if (output == Output::replace && outputs != nullptr)
            for (std::int32_t i = 0; i < record_.outputCount; ++i)
                if (outputs[i] != nullptr) std::fill_n(outputs[i], frames, 0.0f);
        return;
    }
    const FlushToZero flush;
    drainCommands();
    const std::intptr_t answer = callHost(HostRequest::getTime, 0, TimeInfo::wanted);
    const MusicalTime& time = transport_.sync(reinterpret_cast<const TimeInfo*>(answer));
    if (time.changes != 0)
        trace_.later(TraceLevel::transport, "sync(%ld, %.2fbpm, %.2fbpb, %.2f re %.2f)",
                     time.changes, time.tempo, time.beatsPerBar, time.position, time.barStart);
    engine_->render({&midi_.lists(), outputs, frames, output == Output::replace}, transport_);
    midi_.clear();
}

void Synth::drainCommands() {
    // These act before the block's events and need no room in any list.
    const std::uint32_t linkedOff = commands_.takeLinkedOff();
    std::uint32_t off = commands_.takeOff() | linkedOff;
    for (int part = 0; part < parts - 1; ++part)
        if ((linkedOff >> part & 1) != 0)
            for (int to = part; to < parts - 1 && multi_.part[static_cast<std::size_t>(to)].linked;
                 ++to)
                off |= 2u << to;
    if (commands_.takePanic()) engine_->retireAll();
    echo_.clear();
    for (int part = 0; part < parts; ++part) {
        if ((off >> part & 1) == 0) continue;
        engine_->allSoundOff(part);
        echo_.add({static_cast<std::uint8_t>(part), CommandKind::controller,
                   CommandRing::allSoundOff, 0});
    }
    Command command;
    while (!echo_.full() && commands_.pop(command)) {
        midi_.queue(command);
        echo_.add(command);
    }
    if (!echo_.empty()) callHost(HostRequest::sendEvents, 0, 0, echo_.list());
}

}  // namespace stratovane
