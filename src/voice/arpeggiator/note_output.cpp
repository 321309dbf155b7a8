#include "voice/arpeggiator/note_output.h"

#include <algorithm>

namespace stratovane {

namespace {

enum : int { noteOffStatus = 0x80, noteOnStatus = 0x90 };

constexpr int octave = 12, lowestNote = 2, highestNote = 127;

constexpr int inRange(int note) {
    while (note < lowestNote) note += octave;
    while (note > highestNote) note -= octave;
    return note;
}

/// Notes between those of the major scale move up to the next of them.
constexpr int onScale(int note, int root) {
    switch ((note - root + octave) % octave) {
        case 1:
        case 3:
        case 6:
        case 8:
        case 10:
            return note == highestNote ? note + 1 - octave : note + 1;
        default:
            return note;
    }
}

}  // namespace

void NoteOutput::send(int status, int data1, int data2) {
    if (written_ == eventCapacity) return;
    events_[static_cast<std::size_t>(written_++)] = {static_cast<std::uint8_t>(status),
                                                     static_cast<std::uint8_t>(data1),
                                                     static_cast<std::uint8_t>(data2), 0};
}

bool NoteOutput::take(MidiBytes& bytes) {
    if (empty()) return false;
    bytes = events_[static_cast<std::size_t>(read_++)];
    if (empty()) read_ = written_ = 0;
    if (bytes[0] == noteOnStatus) sounding_.set(bytes[1]);
    if (bytes[0] == noteOffStatus) sounding_.reset(bytes[1]);
    return true;
}

void NoteOutput::play(const Note& played, Ties ties) {
    int note = inRange(played.note);
    if (played.scaleRoot >= 0) note = onScale(note, played.scaleRoot);
    PendingOff* pending = std::find_if(pending_.data(), pendingEnd(),
                                       [note](const PendingOff& off) { return off.note == note; });
    const bool found = pending != pendingEnd();
    const int place = static_cast<int>(pending - pending_.data());
    const bool tied =
        found && pending->beat > played.now && (ties == Ties::any || note == lastNote_);
    lastNote_ = note;
    if (tied) {
        const PendingOff later{note, std::max(pending->beat, played.off)};
        std::copy(pending + 1, pendingEnd(), pending);
        --pendingCount_;
        return schedule(later);
    }
    if (found) sendOffAt(place);
    if (pendingCount_ == pendingCapacity) sendOff();
    send(noteOnStatus, note, played.velocity);
    schedule({note, played.off});
}

/// Behind those of the same time.
void NoteOutput::schedule(const PendingOff& off) {
    PendingOff* place =
        std::upper_bound(pending_.data(), pendingEnd(), off,
                         [](const PendingOff& a, const PendingOff& b) { return a.beat < b.beat; });
    std::copy_backward(place, pendingEnd(), pendingEnd() + 1);
    *place = off;
    ++pendingCount_;
}

double NoteOutput::nextOff() const {
    return pendingCount_ > 0 ? pending_[0].beat : std::numeric_limits<double>::infinity();
}

void NoteOutput::sendOffAt(int place) {
    PendingOff* off = pending_.data() + place;
    send(noteOffStatus, off->note, 0);
    std::copy(off + 1, pendingEnd(), off);
    --pendingCount_;
}

void NoteOutput::sendOff() {
    if (pendingCount_ > 0) sendOffAt(0);
}

void NoteOutput::sendAllOffs() {
    while (pendingCount_ > 0) sendOffAt(0);
}

void NoteOutput::move(double beats) {
    std::for_each(pending_.data(), pendingEnd(), [beats](PendingOff& off) { off.beat += beats; });
}

}  // namespace stratovane
