// What a part's controllers, pedals and levers stand at.
#pragma once

#include <cstdint>

#include "base/units.h"

namespace stratovane {

/// Controller numbers that the part acts on itself. 128 and 129 exist inside the instrument only.
namespace controller {
enum : int {
    modWheel = 1,
    breath = 2,
    general3 = 3,
    foot = 4,
    expression = 11,
    sustain = 64,
    sostenuto = 66,
    softPedal = 67,
    legato = 68,
    glideStart = 84,
    allSoundOff = 120,
    reset = 121,
    allNotesOff = 123,
    mono = 126,
    poly = 127,
    sequencer1 = 128,
    sequencer2 = 129,
};
}  // namespace controller

constexpr bool pedalDown(int value) { return value >= 64; }

/// One owner: the audio thread. Values are 0..1 (127 is 1) unless noted.
struct Controllers {
    static constexpr float noKeyPitch = -10;

    float modWheel = 0, breath = 0, general3 = 0, foot = 0;
    float wheelPosition = 0;  // the wheel itself, also when it is mapped to something else
    float expression = 1;     // square of the controller
    float pressure = 0;       // where the smoothed pressure moves to
    float sustain = 0;        // the pedal's position
    bool sustainDown = false, sostenutoDown = false, legato = false;
    float softPedal = 0;                   // 0 or 1
    float sequencer1 = 0, sequencer2 = 0;  // -1..1
    float bendPosition = 0;                // -1..1
    float bendSemitones = 0;
    float highestKeyPitch =
        noKeyPitch;  // of note 0, bend included; for effects that follow the key
};

/// A controller value 0..127 as a fraction. Never quite 0: logarithms of it are taken.
constexpr float controllerFraction(int value) {
    return static_cast<float>(value) * 0.007874016f + 1e-8f;
}

}  // namespace stratovane
