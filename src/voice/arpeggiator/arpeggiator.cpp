#include "voice/arpeggiator/arpeggiator.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "voice/arpeggiator/event_frames.h"
#include "voice/arpeggiator/patterns.h"

namespace stratovane {

namespace {

using Sync = ArpeggiatorView::Sync;

bool isOnBeat(const ArpeggiatorView& view) { return view.sync() == Sync::beat; }

StepGrid::Settings gridSettings(const ArpeggiatorView& view) {
    return {view.stepBeats(), view.swing(), isOnBeat(view)};
}

}  // namespace

// Input.

bool Arpeggiator::keyDown(int note, int velocity, const ArpeggiatorScore& score) {
    follow(score);
    const ArpeggiatorView view{score.settings};
    const auto key = static_cast<std::size_t>(note);
    const bool listens =
        on_ && !(mode_ == ArpeggiatorMode::elementSequence && note < view.phraseLowKey());
    const bool passes = mode_ == ArpeggiatorMode::controllerSequence ||
                        (playsPhrase() && hasEvents(score.phrase) && score.phrase->passThrough);
    taken_[key] = listens && !passes;
    if (!listens) return false;

    const bool waited = keys_.empty();  // with nothing under way but note-offs
    keys_.dropReleased();               // a new chord replaces a latched one
    dropsReleased_ = false;
    const bool added = keys_.press(note, velocity);
    if (!running_)
        start(score);
    else if (added && view.sync() == Sync::eachNote)
        start(score);
    else if (added && waited)
        resume(score);
    return taken_[key];
}

bool Arpeggiator::keyUp(int note, const ArpeggiatorScore& score) {
    follow(score);
    if (ArpeggiatorView{score.settings}.latch() || pedalLatch_)
        keys_.latch(note);
    else
        keys_.remove(note);
    settle();
    const auto key = static_cast<std::size_t>(note);
    const bool taken = taken_[key];
    taken_.reset(key);
    return taken;
}

bool Arpeggiator::sustainPedal(int value, const ArpeggiatorScore& score) {
    constexpr int down = 64;
    follow(score);
    const bool listens = on_ && mode_ != ArpeggiatorMode::controllerSequence;
    if (value >= down) {
        pedalLatch_ = pedalLatch_ || listens;
        return listens;
    }
    if (std::exchange(pedalLatch_, false) || listens) releaseLatched();
    return false;
}

void Arpeggiator::resetPedal(const ArpeggiatorScore& score) {
    follow(score);
    if (std::exchange(pedalLatch_, false)) releaseLatched();
}

/// What a latch kept goes at the next step.
void Arpeggiator::releaseLatched() {
    if (!running_) return keys_.dropReleased();
    dropsReleased_ = true;
    settle();
}

/// Where no held key waits for the next step, what was let go is dropped at once; without keys the
/// pattern ends with its last note.
void Arpeggiator::settle() {
    if (dropsReleased_ && !keys_.anyHeld()) {
        keys_.dropReleased();
        dropsReleased_ = false;
    }
    if (keys_.empty() && !output_.offsPending()) running_ = false;
}

// Changes of settings.

void Arpeggiator::follow(const ArpeggiatorScore& score) {
    const ArpeggiatorView view{score.settings};
    const bool wasOn = std::exchange(on_, view.on());
    if (!on_) {
        if (!wasOn) return;
        keys_.clear();
        requestStop();
    }
    followMode(score);
    if (std::exchange(latch_, view.latch()) && !latch_) releaseLatched();
    const bool otherPhrase = std::exchange(phrase_, score.phrase) != score.phrase;
    if (running_ && playsPhrase()) {
        if (!hasEvents(score.phrase))
            requestStop();
        else if (otherPhrase)
            player_.seek(position_, *score.phrase, view.swing());
    }
    if (running_ && !playsPhrase() && view.stepBeats() != grid_.stepBeats())
        grid_.retune(position_, gridSettings(view));
}

void Arpeggiator::followMode(const ArpeggiatorScore& score) {
    const ArpeggiatorView view{score.settings};
    const bool wasPhrase = playsPhrase();
    const double next = std::max(nextStep(), position_);
    mode_ = view.mode();
    if (!running_ || playsPhrase() == wasPhrase) return;
    if (playsPhrase() && !hasEvents(score.phrase)) return requestStop();
    const double begin = std::isfinite(next) ? next : position_;
    output_.forgetLastNote();
    counter_ = 0;
    if (playsPhrase())
        player_.begin(begin, *score.phrase, view.swing());
    else
        grid_.begin(begin, {view.stepBeats(), view.swing(), false});
}

void Arpeggiator::requestStop() {
    if (!running_) return;
    keys_.clear();
    running_ = dropsReleased_ = false;
    stopping_ = true;
}

void Arpeggiator::sendStop() {
    enum : int { controlStatus = 0xB0, allNotesOff = 123, fullValue = 127 };
    output_.sendAllOffs();
    output_.send(controlStatus, allNotesOff, fullValue);
    stopping_ = false;
}

// Patterns.

void Arpeggiator::start(const ArpeggiatorScore& score) {
    const ArpeggiatorView view{score.settings};
    if (playsPhrase() && !hasEvents(score.phrase)) return;
    running_ = begun_ = true;
    counter_ = 0;
    output_.forgetLastNote();
    if (!playsPhrase()) return grid_.begin(position_, gridSettings(view));
    constexpr double unit = PhrasePlayer::beatUnit;
    player_.begin(isOnBeat(view) ? firstMultiple(position_, unit) * unit : position_, *score.phrase,
                  view.swing());
}

/// The first key after none were left: goes on as if there had been keys all the time, from what
/// falls on this frame on.
void Arpeggiator::resume(const ArpeggiatorScore& score) {
    const ArpeggiatorView view{score.settings};
    const double earliest = earliestOn(position_, score.beatsPerFrame);
    if (playsPhrase())
        player_.seek(earliest, *score.phrase, view.swing());
    else
        grid_.resume(earliest, gridSettings(view));
}

/// Follows the song position. Small differences move nothing.
void Arpeggiator::moveTo(double position, const ArpeggiatorScore& score) {
    constexpr double jumpBeats = 0.2;
    const double difference = position - position_;
    position_ = position;
    const bool jumped = !std::exchange(located_, true) || std::fabs(difference) > jumpBeats;
    const bool begun = std::exchange(begun_, false);
    if (difference == 0) return;
    if (!jumped) {
        if (begun && running_) start(score);  // where the key's frame turns out to be
        begun_ = false;
        return;
    }
    output_.move(difference);
    grid_.move(difference);
    player_.move(difference);
    const ArpeggiatorView view{score.settings};
    if (!running_ || !isOnBeat(view)) return;
    if (!playsPhrase())
        grid_.begin(position, gridSettings(view));
    else if (hasEvents(score.phrase))
        player_.align(*score.phrase, view.swing());
}

double Arpeggiator::nextStep() const {
    if (keys_.empty()) return std::numeric_limits<double>::infinity();
    return playsPhrase() ? player_.next() : grid_.next();
}

int Arpeggiator::framesUntilNext(int frames, double position, const ArpeggiatorScore& score) {
    moveTo(position, score);
    follow(score);
    int earliest = takenOnFrame_ < eventsPerFrame ? 0 : 1;
    // A step or an event may make nothing that is heard; time passes all the same.
    while (running()) {
        if (!output_.empty()) return std::min(earliest, frames);
        if (stopping_) {
            if (earliest < frames) sendStop();
            return std::min(earliest, frames);
        }
        const double next = std::min(output_.nextOff(), nextStep());
        const double frame =
            std::max(frameOf(next, position, score.beatsPerFrame), static_cast<double>(earliest));
        if (!(frame < frames)) break;
        playNext(next, position + frame * score.beatsPerFrame, score);
        earliest = static_cast<int>(frame);
        if (!output_.empty()) return earliest;
    }
    return frames;
}

/// What is due at a beat, on the frame at `position`.
void Arpeggiator::playNext(double beat, double position, const ArpeggiatorScore& score) {
    if (output_.nextOff() <= nextStep()) {
        output_.sendOff();
        return settle();
    }
    if (std::exchange(dropsReleased_, false)) keys_.dropReleased();
    if (keys_.empty()) return settle();
    // What comes late counts from when it comes.
    constexpr double lateFrames = 1.5;
    const bool late = beat < position - lateFrames * score.beatsPerFrame;
    const double now = late ? position : beat;
    if (!playsPhrase()) return playGridStep(now, position, score);
    const ArpeggiatorView view{score.settings};
    player_.playEvent(*score.phrase,
                      {keys_, output_, random_, view.swing(), view.scaleRoot(), now});
}

void Arpeggiator::playGridStep(double now, double position, const ArpeggiatorScore& score) {
    const ArpeggiatorView view{score.settings};
    playStep({view, keys_, output_, random_, counter_, grid_.nextIsOdd(), grid_.stepBeats(),
              grid_.swing(), now});
    ++counter_;
    const auto steps = static_cast<std::uint32_t>(view.steps());
    if (steps > 0 && counter_ >= steps) counter_ = 0;
    grid_.stepPlayed(position, score.beatsPerFrame, view.swing());
}

}  // namespace stratovane
