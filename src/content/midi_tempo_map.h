// Ticks of a Standard MIDI File as seconds and quarter notes, with tempo and bars along the way.
#pragma once

#include <cstdint>
#include <vector>

#include "content/midi_file.h"

namespace stratovane {

/// With SMPTE timing seconds per tick are fixed, tempo events count for nothing and beats are those
/// of a tempo of 120. Times before the first event have a tempo of 120 and bars of 4/4.
class MidiTempoMap {
  public:
    /// From one change of tempo or time signature to the next; the first stands at tick 0.
    struct Stretch {
        std::int64_t tick = 0;
        double seconds = 0;
        double beats = 0;    // quarter notes
        double tempo = 120;  // quarter notes a minute
        MidiFileEvent::Signature signature;
        double signatureBeats = 0;  // where the signature came, a bar's start
    };

    explicit MidiTempoMap(const MidiFile& file);

    double seconds(std::int64_t tick) const;
    double beats(std::int64_t tick) const;
    const std::vector<Stretch>& stretches() const { return stretches_; }

  private:
    const Stretch& stretchAt(std::int64_t tick) const;
    double secondsPerTick(const Stretch& stretch) const;

    double ticksPerSecond_ = 0;  // of SMPTE timing, else 0
    double pulsesPerQuarter_ = 1;
    std::vector<Stretch> stretches_;
};

}  // namespace stratovane
