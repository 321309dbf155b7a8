#include "content/phrase.h"

#include <algorithm>
#include <cmath>

namespace stratovane {

namespace {

constexpr float shortestPhrase = 1.0f / 16, longestPhrase = 1024;
constexpr double shortestNote = 0.01;
constexpr int highestController = 129;  // two beyond MIDI's: the step sequencer's

bool isPlayable(const PhraseEvent& event) {
    if (!std::isfinite(event.beats) || event.beats < 0 || event.data2 > 127) return false;
    switch (event.status & 0xF0) {
        case 0x90:
            return event.data1 <= 127 && event.data2 >= 1;
        case 0xB0:
            return event.data1 <= highestController;
        case 0xD0:
        case 0xE0:
            return event.data1 <= 127;
        default:
            return false;
    }
}

}  // namespace

void checkPhrase(Phrase& phrase) {
    if (!(phrase.lengthBeats >= shortestPhrase && phrase.lengthBeats <= longestPhrase)) {
        phrase = {};
        return;
    }
    std::erase_if(phrase.events, [](const PhraseEvent& event) { return !isPlayable(event); });
    if (phrase.events.empty()) phrase.passThrough = false;  // kept with the first event
    std::stable_sort(phrase.events.begin(), phrase.events.end(),
                     [](const PhraseEvent& a, const PhraseEvent& b) { return a.beats < b.beats; });
    for (PhraseEvent& event : phrase.events) {
        const bool known = std::isfinite(event.lengthBeats) && event.lengthBeats >= 0;
        if (!event.isNote()) {
            if (!known) event.lengthBeats = 0;
            continue;
        }
        if (!known) event.lengthBeats = static_cast<double>(phrase.lengthBeats) - event.beats;
        event.lengthBeats = std::max(event.lengthBeats, shortestNote);
    }
}

}  // namespace stratovane
