// The host's transport, followed block by block.
#pragma once

#include <cstdint>

#include "base/engine_shared.h"
#include "base/shared.h"

namespace stratovane {

struct TimeInfo;

enum TransportChange : std::uint32_t {
    changePlaying = 1,  // the transport plays (only together with another change)
    changeStopped = 2,
    changeStarted = 4,
    changePosition = 8,  // jumped by more than 0.2 beats
    changeTempo = 32,
    changeSignature = 64,
};

/// Threads: the audio thread's, but `setSampleRate` (nothing renders meanwhile); `playing` is read
/// by any.
class Transport {
  public:
    void setSampleRate(double rate);
    /// Takes over what the host says (null: nothing) and answers the time of the block that
    /// follows; values that are not finite, and tempos and signatures not above 0, count as not
    /// given. `changes` of the result is 0 when every part knows all of it already.
    const MusicalTime& sync(const TimeInfo* info);
    /// Moves on by a rendered block.
    void advance(std::int32_t frames) { time_.position += frames * time_.beatsPerFrame; }
    const MusicalTime& time() const { return time_; }
    bool playing() const { return playing_; }

  private:
    double beatFactor_ = 1.0 / (44100.0 * 60.0);  // beats per frame at one beat a minute
    double knownTempo_ = 0;                       // 0 forces the next one to be taken
    MusicalTime time_;
    Shared<std::int32_t> playing_{0};
};

}  // namespace stratovane
