// What the arpeggiators played, for whoever wants to read it.
#pragma once

#include <cstdint>

#include "base/ring.h"
#include "base/shared.h"
#include "voice/midi_bytes.h"

namespace stratovane {

/// A message that an arpeggiator gave its part: 0x80, 0x90, 0xB0, 0xD0 or 0xE0 without channel;
/// controllers 128 and 129 are the step sequencer's two rows.
struct ArpeggiatorEvent {
    std::int64_t frame = 0;  // since the engine's first
    std::int32_t part = 0;
    MidiBytes bytes{};
};

/// Off until someone wants it, so that nothing is written for nobody. Threads: the audio thread
/// notes, the UI thread switches and takes.
class ArpeggiatorLog {
  public:
    void turn(bool on) { on_ = on; }
    bool isOn() const { return on_; }
    /// What does not fit is counted, not kept.
    void note(const ArpeggiatorEvent& event) {
        if (on_ && !events_.push(event)) lost_.bump();
    }
    bool take(ArpeggiatorEvent& event) { return events_.pop(event); }
    std::uint32_t lost() const { return lost_.get(); }

  private:
    Shared<bool> on_{false};
    Ring<ArpeggiatorEvent, 4096> events_;
    SharedCounter lost_;
};

}  // namespace stratovane
