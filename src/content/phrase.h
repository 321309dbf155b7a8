// A phrase: events in beats that the arpeggiator plays relative to the held keys.
#pragma once

#include <cstdint>
#include <vector>

namespace stratovane {

struct PhraseEvent {
    double beats = 0;        // from the phrase's start
    double lengthBeats = 0;  // of a note
    std::uint8_t status = 0, data1 = 0, data2 = 0;

    bool isNote() const { return (status & 0xF0) == 0x90; }
    bool operator==(const PhraseEvent&) const = default;
};

/// Without events it counts as none.
struct Phrase {
    static constexpr float defaultBeats = 4;

    float lengthBeats = defaultBeats;
    bool passThrough = false;  // keys are played as well
    std::vector<PhraseEvent> events{};

    bool operator==(const Phrase&) const = default;
};

/// Brings a phrase from outside into the form the player relies on: a length of 1/16 to 1024 beats
/// (else the phrase is emptied), events sorted by time, no event of another kind than note-ons,
/// controllers 0..129, channel pressure and pitch bend, every data byte in range, every note at
/// least 0.01 beat long. Any thread but the audio thread.
void checkPhrase(Phrase& phrase);

}  // namespace stratovane
