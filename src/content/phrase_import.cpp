#include "content/phrase_import.h"

#include <algorithm>
#include <cmath>

#include "base/trace.h"
#include "content/file_bytes.h"
#include "content/midi_file.h"

namespace stratovane {

namespace {

constexpr int mostTracks = 32;
constexpr std::size_t mostEvents = 2000;
constexpr double barBeats = 4;
constexpr double longestBeats = 32;

using Kind = MidiFileFault::Kind;

int asInt(std::size_t value) { return static_cast<int>(value); }

/// Lines of the file reader: what is wrong with a file, and what was made of it.
void tellFile(const MidiFile& midi, Trace& trace) {
    auto warn = [&](std::string_view format, auto... numbers) {
        trace.write(TraceLevel::warning, format, numbers...);
    };
    const bool hasFault = midi.fault.has_value();
    const Kind kind = hasFault ? midi.fault->kind : Kind::tooShort;
    if (hasFault && kind == Kind::tooShort) return warn("ReadSMF: File too short!");
    if (hasFault && kind == Kind::noHeader) return warn("ReadSMF: No 'MThd' header!");
    if (midi.smpte)
        warn("ReadSMF: SMPTE locked!  %d ticks per frame.  To do: frame rate",
             midi.smpte->ticksPerFrame);
    if (hasFault && kind == Kind::noDivision) return warn("ReadSMF: ppqn = 0 !");
    if (midi.declaredTracks > mostTracks)
        warn("ReadSMF: Increase MAX_TRACKS! (%d -> %d)", mostTracks, midi.declaredTracks);
    if (hasFault && kind == Kind::noTrackHeader) return warn("ReadSMF: No 'MTrk' header!");
    if (hasFault && kind == Kind::trackBeyondEnd)
        return warn("Unexpected end of file! (byte %d)", asInt(midi.fault->offset));
    if (hasFault)
        warn("ReadSMF: %s (byte %d)", std::string_view{midi.fault->sentence},
             asInt(midi.fault->offset));
    if (midi.leftoverBytes != 0)
        warn("Unexpected non-end of file! (%d extra bytes @ %d)", asInt(midi.leftoverBytes),
             asInt(midi.leftoverOffset));
}

struct FileEvent {
    double beats = 0;
    std::uint8_t status = 0, data1 = 0, data2 = 0;

    int kind() const { return status & 0xF0; }
    bool isNoteOn() const { return kind() == 0x90 && data2 > 0; }
    bool isNoteOff() const { return kind() == 0x80 || (kind() == 0x90 && data2 == 0); }
    bool isControl() const { return kind() == 0xB0 || kind() == 0xE0; }
    /// Controls at the very start set things up; only later ones say where music is.
    bool placesPhrase() const { return isNoteOn() || (isControl() && beats > 0); }
};

std::vector<FileEvent> channelEvents(const MidiFile& midi) {
    std::vector<FileEvent> events;
    for (const MidiFileEvent* event : mergeTracks(midi))
        if (event->isChannelMessage())
            events.push_back({static_cast<double>(event->tick) / midi.pulsesPerQuarter,
                              event->status, event->data1, event->data2});
    return events;
}

/// Chords from the lowest note up.
void orderChords(std::vector<FileEvent>& events) {
    for (auto first = events.begin(); first != events.end();) {
        const auto end = std::find_if(first, events.end(), [&](const FileEvent& event) {
            return !event.isNoteOn() || event.beats != first->beats;
        });
        std::stable_sort(first, end,
                         [](const FileEvent& a, const FileEvent& b) { return a.data1 < b.data1; });
        first = end == first ? first + 1 : end;
    }
}

struct Stretch {
    double start = 0, length = barBeats;
};
Stretch stretchOf(const std::vector<FileEvent>& events) {
    Stretch stretch;
    bool found = false;
    for (const FileEvent& event : events) {
        if (!event.placesPhrase()) continue;
        if (!found) stretch.start = std::trunc(event.beats / barBeats) * barBeats;
        found = true;
        while (stretch.length <= event.beats - stretch.start && stretch.length < longestBeats)
            stretch.length += barBeats;
    }
    return stretch;
}

/// Gives the open notes that a note-off ends their length. A note that begins with the note-off is
/// meant only when no earlier one is.
void endNotes(std::vector<PhraseEvent>& events, const FileEvent& off, double beats) {
    auto end = [&](bool earlier) {
        bool ended = false;
        for (PhraseEvent& on : events) {
            const bool isOpen = on.isNote() && on.lengthBeats < 0;
            const bool matches = on.data1 == off.data1 && (on.status & 15) == (off.status & 15);
            if (!isOpen || !matches || (on.beats < beats) != earlier) continue;
            on.lengthBeats = beats - on.beats;
            ended = true;
        }
        return ended;
    };
    if (!end(true)) end(false);
}

Phrase makePhrase(const std::vector<FileEvent>& events, Trace& trace) {
    const Stretch stretch = stretchOf(events);
    Phrase phrase{.lengthBeats = static_cast<float>(stretch.length)};
    std::size_t left = 0;
    for (const FileEvent& event : events) {
        const double beats = std::max(event.beats - stretch.start, 0.0);
        if (beats >= stretch.length) break;
        if (event.isNoteOff()) endNotes(phrase.events, event, beats);
        if (!event.isNoteOn() && !event.isControl()) continue;
        if (phrase.events.size() == mostEvents) {
            ++left;
            continue;
        }
        phrase.events.push_back(
            {beats, event.isNoteOn() ? -1.0 : 0.0, event.status, event.data1, event.data2});
    }
    if (left > 0)
        trace.write(TraceLevel::warning, "Phrase cut to %d events (%d left out)", asInt(mostEvents),
                    asInt(left));
    for (PhraseEvent& event : phrase.events)
        if (event.lengthBeats < 0) event.lengthBeats = stretch.length - event.beats;
    // Controllers alone: keys are played as well.
    phrase.passThrough =
        std::none_of(events.begin(), events.end(), [](const FileEvent& e) { return e.isNoteOn(); });
    checkPhrase(phrase);
    return phrase;
}

}  // namespace

std::string_view phraseName(std::string_view path) {
    constexpr std::size_t longest = 31;
    constexpr std::string_view extension = ".mid";
    path.remove_prefix(path.find_last_of("/\\") + 1);
    if (path.size() >= extension.size()) {
        const std::string_view end = path.substr(path.size() - extension.size());
        const bool isExtension =
            std::equal(end.begin(), end.end(), extension.begin(), [](char a, char b) {
                return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
            });
        if (isExtension) path.remove_suffix(extension.size());
    }
    return path.substr(0, longest);
}

std::optional<Scene> importPhrase(std::span<const std::uint8_t> file, std::string_view path,
                                  Trace& trace) {
    const MidiFile midi = readMidiFile(file, mostTracks);
    tellFile(midi, trace);
    if (midi.pulsesPerQuarter <= 0) return std::nullopt;
    auto events = channelEvents(midi);
    orderChords(events);
    Scene scene;
    scene.phrase = makePhrase(events, trace);
    if (scene.phrase.events.empty()) return std::nullopt;
    scene.name = phraseName(path);
    int index = 0;
    for (const PhraseEvent& event : scene.phrase.events)
        trace.write(TraceLevel::patch, "event %d  %d: %d %d %.3f & %.3f", index++, event.status,
                    event.data1, event.data2, event.lengthBeats, event.beats);
    trace.write(TraceLevel::patch, "Renamed phrase to %s", std::string_view{scene.name});
    return scene;
}

std::optional<Scene> importPhrase(const std::string& path, Trace& trace) {
    const auto bytes = readFile(path);
    if (!bytes) {
        trace.write(TraceLevel::warning, "ReadSMF: %s cannot be read", std::string_view{path});
        return std::nullopt;
    }
    return importPhrase(*bytes, path, trace);
}

}  // namespace stratovane
