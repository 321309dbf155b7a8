// The arpeggiator of a part: takes the played keys and plays patterns, sequences or a phrase on
// them.
#pragma once

#include <bitset>
#include <cstdint>

#include "base/random.h"
#include "patch/arpeggiator_settings.h"
#include "voice/arpeggiator/arpeggiator_keys.h"
#include "voice/arpeggiator/arpeggiator_view.h"
#include "voice/arpeggiator/note_output.h"
#include "voice/arpeggiator/phrase_player.h"
#include "voice/arpeggiator/step_grid.h"
#include "voice/midi_bytes.h"

namespace stratovane {

/// What an arpeggiator plays from, given anew at each call; nothing of it is kept.
struct ArpeggiatorScore {
    const ArpeggiatorSettings& settings;
    const Phrase* phrase = nullptr;  // null, or without events: none
    double beatsPerFrame = 0;
};

/// It has no clock of its own: it follows the song position of each render, and a jump of that
/// moves all that is under way. Settings only change; what a change means is found at the next
/// call. Positions and times in beats.
/// Threads: the audio thread alone (its builder before hand-over).
/// Invariants: the keys are empty while it is off; what it plays depends on positions and inputs,
/// not on how renders are cut.
class Arpeggiator {
  public:
    explicit Arpeggiator(std::uint32_t seed) : random_{seed} {}

    // Input between two frames, from the player.

    /// A key 0..127 goes down (velocity 1..127) or up. True: taken, it is not for the voices.
    bool keyDown(int note, int velocity, const ArpeggiatorScore& score);
    bool keyUp(int note, const ArpeggiatorScore& score);
    /// The sustain pedal keeps keys that are let go. True: taken.
    bool sustainPedal(int value, const ArpeggiatorScore& score);
    /// Lifts the pedal without a pedal message.
    void resetPedal(const ArpeggiatorScore& score);
    /// Stops at once; nothing is played later. `release(note)` is told each note that the part was
    /// told to start and not to end.
    template <class Release>
    void stop(Release release) {
        keys_.clear();
        output_.drop(release);
        running_ = stopping_ = dropsReleased_ = false;
    }

    // Rendering.

    /// How many of `frames` frames from `position` on are to be rendered before its next message;
    /// `frames` when none falls among them. When fewer, `take` gives what is to be played then.
    int framesUntilNext(int frames, double position, const ArpeggiatorScore& score);
    /// Frames were rendered.
    void advance(int frames, double beatsPerFrame) {
        if (frames == 0) return;
        position_ += frames * beatsPerFrame;
        takenOnFrame_ = 0;
    }
    /// The next message for this frame.
    bool take(MidiBytes& bytes) {
        if (takenOnFrame_ == eventsPerFrame || !output_.take(bytes)) return false;
        ++takenOnFrame_;
        return true;
    }

    /// Whether something plays or is still to be played.
    bool running() const { return running_ || stopping_ || !output_.empty(); }

  private:
    static constexpr int eventsPerFrame = 256;  // the rest waits a frame

    void follow(const ArpeggiatorScore& score);
    void followMode(const ArpeggiatorScore& score);
    void moveTo(double position, const ArpeggiatorScore& score);
    void start(const ArpeggiatorScore& score);
    void resume(const ArpeggiatorScore& score);
    void requestStop();
    void sendStop();
    void releaseLatched();
    void settle();
    double nextStep() const;
    void playNext(double beat, double position, const ArpeggiatorScore& score);
    void playGridStep(double now, double position, const ArpeggiatorScore& score);
    bool playsPhrase() const { return mode_ == ArpeggiatorMode::phrase; }

    ArpeggiatorKeys keys_;
    NoteOutput output_;
    StepGrid grid_;
    PhrasePlayer player_;
    Random random_;
    std::uint32_t counter_ = 0;  // of steps

    bool running_ = false;
    bool stopping_ = false;       // note-offs and "all notes off" go out before the next frame
    bool dropsReleased_ = false;  // at the next step, keys that a latch kept
    bool pedalLatch_ = false;
    std::bitset<128> taken_;  // keys whose note-on was

    double position_ = 0;  // where the next render is expected
    bool located_ = false;
    bool begun_ = false;  // since the last render
    int takenOnFrame_ = 0;

    // As last seen.
    bool on_ = false, latch_ = false;
    ArpeggiatorMode mode_ = ArpeggiatorMode::up;
    const Phrase* phrase_ = nullptr;  // compared, never read through
};

}  // namespace stratovane
