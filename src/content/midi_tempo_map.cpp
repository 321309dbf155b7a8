#include "content/midi_tempo_map.h"

#include <algorithm>

namespace stratovane {

MidiTempoMap::MidiTempoMap(const MidiFile& file)
    : ticksPerSecond_{file.smpte ? file.smpte->framesPerSecond * file.smpte->ticksPerFrame : 0},
      pulsesPerQuarter_{std::max(1.0, static_cast<double>(file.pulsesPerQuarter))} {
    stretches_.push_back({});
    for (const MidiFileEvent* event : mergeTracks(file)) {
        const auto microseconds = event->microsecondsPerQuarter();
        const auto signature = event->timeSignature();
        if (!signature && (!microseconds || file.smpte)) continue;
        Stretch next = stretches_.back();
        next.seconds = seconds(event->tick);
        next.beats = beats(event->tick);
        next.tick = event->tick;
        if (signature) {
            next.signature = *signature;
            next.signatureBeats = next.beats;
        } else {
            next.tempo = 60e6 / *microseconds;
        }
        if (next.tick == stretches_.back().tick)
            stretches_.back() = next;
        else
            stretches_.push_back(next);
    }
}

const MidiTempoMap::Stretch& MidiTempoMap::stretchAt(std::int64_t tick) const {
    const auto after = std::upper_bound(
        stretches_.begin(), stretches_.end(), tick,
        [](std::int64_t wanted, const Stretch& stretch) { return wanted < stretch.tick; });
    return after == stretches_.begin() ? *after : *(after - 1);
}

double MidiTempoMap::secondsPerTick(const Stretch& stretch) const {
    return ticksPerSecond_ > 0 ? 1 / ticksPerSecond_ : 60 / (stretch.tempo * pulsesPerQuarter_);
}

double MidiTempoMap::seconds(std::int64_t tick) const {
    const Stretch& from = stretchAt(tick);
    return from.seconds + static_cast<double>(tick - from.tick) * secondsPerTick(from);
}

double MidiTempoMap::beats(std::int64_t tick) const {
    if (ticksPerSecond_ > 0) return seconds(tick) * 2;
    return static_cast<double>(tick) / pulsesPerQuarter_;
}

}  // namespace stratovane
