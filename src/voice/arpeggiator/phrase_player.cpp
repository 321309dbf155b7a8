#include "voice/arpeggiator/phrase_player.h"

#include <algorithm>
#include <cmath>

#include "voice/arpeggiator/event_frames.h"

namespace stratovane {

namespace {

// Channels of a phrase's notes; the others play relative to every key.
enum : int {
    drums = 9,
    fromLowest = 10,
    fromHighest = 11,
    fromFirst = 12,
    fromLast = 13,
    chord = 14,
    likelyChord = 15,
};

constexpr int statusOf(const PhraseEvent& event) { return event.status & 0xF0; }
constexpr int channelOf(const PhraseEvent& event) { return event.status & 0x0F; }

/// A time within the phrase, moved by swing: nothing on eighth notes, most on the sixteenths
/// between them.
double swung(double beat, float swing) {
    constexpr double eighth = 0.5;
    const double t = std::fmod(beat, eighth);
    const double d = std::min(t, eighth - t) / 3;
    return beat + double{swing} * d;
}

double lengthOf(const Phrase& phrase) { return double{phrase.lengthBeats}; }

bool atEnd(const Phrase& phrase, std::size_t index) {
    return index >= phrase.events.size() || phrase.events[index].beats >= lengthOf(phrase);
}

}  // namespace

bool hasEvents(const Phrase* phrase) { return phrase != nullptr && !atEnd(*phrase, 0); }

void PhrasePlayer::begin(double start, const Phrase& phrase, float swing) {
    start_ = origin_ = start;
    index_ = 0;
    chord_.reset();
    schedule(phrase, swing, start);
}

void PhrasePlayer::schedule(const Phrase& phrase, float swing, double now) {
    if (atEnd(phrase, index_)) {
        const double length = lengthOf(phrase);
        index_ = 0;
        start_ += length;
        if (start_ + length <= now) start_ += std::floor((now - start_) / length) * length;
    }
    next_ = start_ + swung(phrase.events[index_].beats, swing);
}

void PhrasePlayer::seek(double now, const Phrase& phrase, float swing) {
    index_ = 0;
    if (now > origin_ - beatTolerance) {
        start_ += std::floor((now - start_) / lengthOf(phrase)) * lengthOf(phrase);
        const double target = now - start_ - beatTolerance;
        const auto first = std::ranges::partition_point(
            phrase.events,
            [=](const PhraseEvent& event) { return swung(event.beats, swing) < target; });
        index_ = static_cast<std::size_t>(first - phrase.events.begin());
    }
    schedule(phrase, swing, now);
}

void PhrasePlayer::move(double beats) {
    start_ += beats;
    origin_ += beats;
    next_ += beats;
}

void PhrasePlayer::align(const Phrase& phrase, float swing) {
    const double before = start_;
    start_ = firstMultiple(start_, beatUnit) * beatUnit;
    origin_ += start_ - before;
    schedule(phrase, swing, start_);
}

void PhrasePlayer::playEvent(const Phrase& phrase, const Context& context) {
    // Another phrase may stand where the one before it stood.
    if (atEnd(phrase, index_)) return schedule(phrase, context.swing, context.now);
    const PhraseEvent& event = phrase.events[index_];
    if (event.isNote())
        playNote(event, context);
    else
        context.output.send(statusOf(event), event.data1, event.data2);
    ++index_;
    schedule(phrase, context.swing, context.now);
}

void PhrasePlayer::playNote(const PhraseEvent& event, const Context& context) {
    constexpr int centre = 60;
    const auto sorted = context.keys.sorted(), played = context.keys.played();
    const int offset = event.data1 - centre + chord_.transpose();
    const auto from = [&](const ArpeggiatorKey& key) {
        strike(event, context, key.note + offset, key.velocity);
    };
    switch (channelOf(event)) {
        case drums:
            return strike(event, context, event.data1, sorted.front().velocity);
        case fromLowest:
            return from(sorted.front());
        case fromHighest:
            return from(sorted.back());
        case fromFirst:
            return from(played.front());
        case fromLast:
            return from(played.back());
        case chord:
        case likelyChord:
            return playChord(event, context);
        default:
            for (const ArpeggiatorKey& key : played) from(key);
    }
}

void PhrasePlayer::playChord(const PhraseEvent& event, const Context& context) {
    constexpr int octave = 12, certain = 127;
    const auto sorted = context.keys.sorted();
    const ChordNotes notes =
        chord_.command(event.data1, event.data2, context.keys.count(), context.random);
    for (const int index : notes) {
        const ArpeggiatorKey& key = sorted[static_cast<std::size_t>(index)];
        if (channelOf(event) == likelyChord && key.velocity != certain && event.data2 != certain) {
            const float softness = 1 - static_cast<float>(key.velocity) / 127;
            const float probability =
                (1 - softness * softness) * static_cast<float>(event.data2) / 127;
            if (!(context.random.unipolar() < probability)) continue;
        }
        strike(event, context, key.note + octave * chord_.octaveShift() + chord_.transpose(),
               key.velocity);
    }
}

void PhrasePlayer::strike(const PhraseEvent& event, const Context& context, int note,
                          int keyVelocity) {
    const int velocity = std::clamp(event.data2 * keyVelocity / 64, 1, 127);
    const double off = start_ + swung(event.beats + event.lengthBeats, context.swing);
    const int root = channelOf(event) == drums ? -1 : context.scaleRoot;
    context.output.play({note, velocity, context.now, off, root}, NoteOutput::Ties::lastNote);
}

}  // namespace stratovane
