// What MIDI messages ask the idle call for, in their order.
#pragma once

#include <cstdint>

#include "base/ring.h"
#include "base/shared.h"

namespace stratovane {

struct Request {
    enum class Kind : std::int32_t {
        // What loads content is asked for on the audio thread and done by the idle call.
        loadCombi,         // argument: location
        resetGeneralMidi,  // argument: the mode it was asked under
        loadEffect,        // argument: preset * 4 + master effect 0..3; value: its output level
        // What acts at once, and once more behind a request that may undo it.
        generalMidi,    // argument: mode
        hostValue,      // argument: host parameter
        patchValue,     // argument: part * 65536 + element * 256 + index
        tuneSemitones,  // argument
        tuneFraction,   // value
    } kind = Kind::loadCombi;
    std::int32_t argument = 0;
    float value = 0;

    bool loadsAllParts() const { return kind == Kind::loadCombi || kind == Kind::resetGeneralMidi; }
};

/// Threads: any pushes; the UI thread pops, and says when it has done what it popped.
class RequestQueue {
  public:
    static constexpr std::uint32_t capacity = 256;

    /// False, and nothing stored, when there is no room.
    bool push(const Request& request) {
        if (!ring_.push(request)) return false;
        asked_.bump();
        return true;
    }
    /// Whether a push by the only pushing thread would succeed.
    bool hasRoom() const { return count() < capacity; }
    /// Requests pushed and not done yet.
    std::uint32_t count() const { return asked_.get() - done_.get(); }
    /// Whether a request was pushed that is not done yet. What is set while this is false is set
    /// after everything that was asked for before.
    bool waits() const { return count() != 0; }

    bool pop(Request& request) { return ring_.pop(request); }
    /// What was popped last has been carried out.
    void done() { done_.bump(); }

  private:
    Ring<Request, capacity> ring_;
    SharedCounter asked_, done_;
};

}  // namespace stratovane
