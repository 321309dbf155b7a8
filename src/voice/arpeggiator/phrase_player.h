// Plays a phrase over the held keys.
#pragma once

#include <cstddef>

#include "base/random.h"
#include "content/phrase.h"
#include "voice/arpeggiator/arpeggiator_keys.h"
#include "voice/arpeggiator/chord_walk.h"
#include "voice/arpeggiator/note_output.h"

namespace stratovane {

/// Whether there is anything to play.
bool hasEvents(const Phrase* phrase);

/// Holds no pointer to the phrase: each call is given the one of the moment, of which hasEvents()
/// must be true. Events at or behind the phrase's length are not played. Swing moves what lies
/// between eighth notes. Beats throughout. Audio thread.
class PhrasePlayer {
  public:
    static constexpr double beatUnit = 0.25;  // where phrases begin when they begin on the beat

    /// Begins at a song position, from the first event.
    void begin(double start, const Phrase& phrase, float swing);
    /// Goes on with the first event at or after now, in the phrase's pass that now lies in; before
    /// the beginning nothing moves.
    void seek(double now, const Phrase& phrase, float swing);
    void move(double beats);
    /// Delays the pass to the next multiple of beatUnit.
    void align(const Phrase& phrase, float swing);

    double next() const { return next_; }
    struct Context {
        const ArpeggiatorKeys& keys;  // at least one
        NoteOutput& output;
        Random& random;
        float swing = 0;
        int scaleRoot = -1;
        double now = 0;
    };
    /// Plays the next event and moves on to the one behind it; passes of the phrase that lie wholly
    /// before now are left out.
    void playEvent(const Phrase& phrase, const Context& context);

  private:
    void schedule(const Phrase& phrase, float swing, double now);
    void playNote(const PhraseEvent& event, const Context& context);
    void playChord(const PhraseEvent& event, const Context& context);
    void strike(const PhraseEvent& event, const Context& context, int note, int keyVelocity);

    double start_ = 0;   // of the pass
    double origin_ = 0;  // of the pattern
    double next_ = 0;
    std::size_t index_ = 0;  // of the next event
    ChordWalk chord_;
};

}  // namespace stratovane
