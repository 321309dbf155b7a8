// The arpeggiator's stored settings in the units it plays by.
#pragma once

#include "base/tempo_divisions.h"
#include "base/units.h"
#include "patch/arpeggiator_settings.h"

namespace stratovane {

/// Decodes at each call, so that it is never out of date. Any thread.
class ArpeggiatorView {
  public:
    enum class Sync { firstNote, eachNote, beat };  // higher values act as firstNote
    static constexpr int noScale = -1;

    explicit ArpeggiatorView(const ArpeggiatorSettings& settings) : settings_{settings} {}

    bool on() const { return isOn(value(ArpeggiatorSettings::on)); }
    bool latch() const { return isOn(value(ArpeggiatorSettings::latch)); }
    /// May also be 10..15, which play nothing.
    ArpeggiatorMode mode() const {
        return static_cast<ArpeggiatorMode>(choice(value(ArpeggiatorSettings::mode), 15.9f));
    }
    int octaves() const { return 1 + choice(value(ArpeggiatorSettings::octaves), 3.9f); }
    /// Length of the sequence, 0 without a limit.
    int steps() const { return choice(value(ArpeggiatorSettings::steps), 16.9f); }
    Sync sync() const {
        const int chosen = choice(value(ArpeggiatorSettings::sync), 7.9f);
        return chosen <= 2 ? static_cast<Sync>(chosen) : Sync::firstNote;
    }
    double stepBeats() const {
        return 1.0 / double{tempoDivision(value(ArpeggiatorSettings::rate)).perBeat};
    }
    /// Of a step's length, 0..1.
    float gate() const { return value(ArpeggiatorSettings::gate); }
    /// 0..1; 1 delays odd steps by a third of a step.
    float swing() const { return value(ArpeggiatorSettings::swing); }
    int transpose() const {
        return static_cast<int>(48.0f * value(ArpeggiatorSettings::transpose) + 0.5f) - 24;
    }
    /// Keys below it are not for the element sequencer.
    int phraseLowKey() const { return choice(value(ArpeggiatorSettings::phraseLowKey), 128.9f); }
    /// 0..11, or noScale.
    int scaleRoot() const { return choice(value(ArpeggiatorSettings::scale), 12.9f) - 1; }
    /// 0..15.
    const ArpeggiatorStep& step(std::size_t i) const { return settings_.steps16[i]; }

  private:
    float value(ArpeggiatorSettings::Parameter p) const { return settings_.values[p]; }

    const ArpeggiatorSettings& settings_;
};

}  // namespace stratovane
