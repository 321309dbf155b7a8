// The notes an arpeggiator has under way: what it plays next, and what it has to let go when.
#pragma once

#include <array>
#include <bitset>
#include <limits>

#include "voice/midi_bytes.h"

namespace stratovane {

/// Messages wait in the order they were made; note-offs wait in the order of their time. Every
/// message's fourth byte is 0 and its status has no channel. Beats throughout. Audio thread.
class NoteOutput {
  public:
    static constexpr int eventCapacity = 64, pendingCapacity = 32;

    /// Which notes that still sound are lengthened instead of being struck again.
    enum class Ties { any, lastNote };

    struct Note {
        int note = 60;  // any; brought into range by octaves
        int velocity = 64;
        double now = 0, off = 0;
        int scaleRoot = -1;  // moves it onto that root's major scale; -1: leaves it
    };

    void play(const Note& note, Ties ties);
    void send(int status, int data1, int data2);

    /// When the earliest note-off falls due; infinity without one.
    double nextOff() const;
    bool offsPending() const { return pendingCount_ > 0; }
    /// Sends the earliest note-off.
    void sendOff();
    void sendAllOffs();
    void move(double beats);
    /// The next note is tied to none as "last note".
    void forgetLastNote() { lastNote_ = noNote; }

    bool empty() const { return read_ == written_; }
    /// The oldest message; false when there is none.
    bool take(MidiBytes& bytes);
    /// Drops everything; `release(note)` is told each note that was taken on and not off.
    template <class Release>
    void drop(Release release) {
        for (std::size_t note = 0; note < sounding_.size(); ++note)
            if (sounding_[note]) release(static_cast<int>(note));
        sounding_.reset();
        read_ = written_ = pendingCount_ = 0;
        lastNote_ = noNote;
    }

  private:
    static constexpr int noNote = -1;
    struct PendingOff {
        int note = 0;
        double beat = 0;
    };
    PendingOff* pendingEnd() { return pending_.data() + pendingCount_; }
    void sendOffAt(int place);
    void schedule(const PendingOff& off);

    std::array<MidiBytes, eventCapacity> events_{};
    int read_ = 0, written_ = 0;  // begin again at 0 whenever all is taken
    std::array<PendingOff, pendingCapacity> pending_{};
    int pendingCount_ = 0;
    int lastNote_ = noNote;
    std::bitset<128> sounding_;  // of the messages taken
};

}  // namespace stratovane
