#include "voice/part_events.h"

#include "voice/controller_handling.h"
#include "voice/element_notes.h"
#include "voice/note_handling.h"
#include "voice/part_state.h"

namespace stratovane {

namespace {

/// The arpeggiator's say in a key's way; 128 and up are no keys of its.
EventSource offerKey(PartState& part, int key, int velocity, EventSource source) {
    if (source != EventSource::host || key > 127) return source;
    const ArpeggiatorScore score = part.score();
    const bool taken = velocity > 0 ? part.arpeggiator.keyDown(key, velocity, score)
                                    : part.arpeggiator.keyUp(key, score);
    return taken ? EventSource::taken : source;
}

/// The player's controllers that mean something to the arpeggiator, before whatever else they mean.
/// True: it takes this one.
bool offerController(PartState& part, int number, int value) {
    switch (number) {
        case controller::sustain:
            return part.arpeggiator.sustainPedal(value, part.score());
        case controller::reset:
            part.arpeggiator.resetPedal(part.score());
            return false;
        case controller::allSoundOff:
        case controller::allNotesOff:
            part.arpeggiator.stop([&part](int note) { part.held.release(note); });
            return false;
        default:
            return false;
    }
}

}  // namespace

void handlePartEvent(PartState& part, const MidiBytes& bytes, EventSource source) {
    enum : std::uint8_t { keyUp = 0x80, keyDown = 0x90, control = 0xB0 };
    enum : std::uint8_t { pressure = 0xD0, bend = 0xE0 };
    const int first = bytes[1], second = bytes[2];
    const auto up = [&] {
        if (first != pedalKey) noteOff(part, first, offerKey(part, first, 0, source));
    };
    switch (bytes[0] & 0xF0) {
        case keyUp:
            return up();
        case keyDown:
            if (second == 0) return up();
            if (first > 127 || second > 127) return;
            // A key outside the part's zones is not for the arpeggiator either, which takes its
            // keys here; such a key then reaches only the elements that want nothing of it.
            if (source == EventSource::host && partZoneGain(part, first, second) == 0) return;
            return noteOn(part, first, second, static_cast<std::int8_t>(bytes[3]),
                          offerKey(part, first, second, source));
        case control:
            if (source == EventSource::host && offerController(part, first, second)) return;
            return controlChange(part, first, second, source);
        case pressure:
            return channelPressure(part, first);
        case bend:
            return pitchBend(part, first, second);
        default:
            return;
    }
}

}  // namespace stratovane
