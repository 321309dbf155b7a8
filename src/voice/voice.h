// One sounding note of an element.
#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include "base/random.h"
#include "base/stereo_frame.h"
#include "base/units.h"
#include "patch/element.h"
#include "voice/analog/analog_voice.h"
#include "voice/drawbar/drawbar_voice.h"
#include "voice/envelope.h"
#include "voice/fm/fm_voice.h"
#include "voice/lfo.h"
#include "voice/modulation_envelope.h"
#include "voice/modulation_slot.h"
#include "voice/part_clock.h"
#include "voice/sample/sample_voice.h"
#include "voice/wavetable/wavetable_voice.h"

namespace stratovane {

/// What modulation may move; set to its bases at every tick.
struct VoiceInputs {
    float pitch = 0;  // relative to middle C
    float shape1 = 0, shape2 = 0;
    float cutoff = 0;  // pitch of the filter's coefficient
    float resonance = 0;
    float pan = 0.5f;
    float amplitude = 1;
    float lfo3Rate = 1, envelopeRate = 1;  // factors
    float nowhere = 0;                     // what rows without a destination move
};

/// What the note gave its voice: added to, or multiplied with, the element's own settings.
struct VoiceOffsets {
    float shape1 = 0;
    float cutoffVelocity = 0, cutoffRandom = 0;  // pitch
    float resonance = 0;
    float pan = 0;
    float level = 1;
};

/// 32 samples of a voice and the gains they are mixed with: start + index * perSample.
struct VoiceTick {
    alignas(64) float samples[tickFrames] = {};
    float right[tickFrames] = {};  // the other side of a stereo sound, else unused
    bool stereo = false;
    StereoGain start, perSample;
    std::int64_t firstFrame = 0;  // part time
};

/// Events write a voice's state; what has been rendered ahead (`ticks`) is played as it is, until a
/// restart drops it. Audio thread.
struct Voice {
    static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

    // The note
    Element* element = nullptr;
    // Of the element when the note began: what sounds goes on as it was when the type changes.
    ElementType type = ElementType::effect;
    // What the UI thread asks before it releases content: the ContentId that is played, 0 none.
    Shared<std::uint32_t> content{0};
    const ElementContent* chosen = nullptr;  // what it plays; valid while the note starts
    std::uint32_t elementChanges = 0;        // the element's counter as last seen
    std::int32_t startStamp = 0;             // event counter at note-on or release
    int unisonIndex = 0;                     // 0 without unison, else 1..n
    int note = 60;                           // key number it was started for
    float velocity = 0;                      // normalised, -1..1; 0 when the element ignores it
    float notePitch = 0;                     // relative to middle C
    float basePitch = 0;                     // of middle C in units of the sound's phase per sample
    float startGain = 0;                     // of key and velocity zones
    float randomValue = 0;                   // -1..1, drawn once a note
    float tuning2 = 0;  // semitones of the second tuning table, before its depth
    float sustain = 0, pressure = 0, softPedal = 0;  // captured; sustain follows the pedal
    Random random;

    // Time
    std::int64_t noteFrame = 0;
    std::int64_t dueFrame = 0;  // of the next tick
    bool ticked = false;        // false: new, or waiting for its note delay
    bool startsAtRelease = false;

    // Sound
    float glidePitch = 0, glideTarget = 0, glidePerTick = 1;
    SegmentEnvelope amp, filterEnvelope;
    ModulationEnvelope modulation;
    Lfo lfo3;
    std::array<ModulationSlot, modulationRows> slots;
    std::uint32_t rowChanges = 0;  // the element's count as last seen
    float lastPitch = 0;           // modulated, of the tick before
    float filterInput = 0;         // last sample that entered the filter
    VoiceOffsets offsets;
    VoiceInputs inputs;
    PartStep step;
    StereoGain gain;  // the next ramp starts here
    AnalogVoice analog;
    SampleVoice sample;
    DrawbarVoice drawbar;
    WavetableVoice wavetable;
    FmVoice fm;

    // Rendered ahead
    VoiceTick ticks[2];
    int playing = -1;  // index of the tick being played, -1 none

    const ElementControls& controls() const { return element->controls(); }
    bool waitsForRelease() const { return dueFrame == never; }
};

}  // namespace stratovane
