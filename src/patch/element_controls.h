// What an element's parameters mean to the engine: converted values, one writer, read at every
// tick.
#pragma once

#include <array>
#include <cstdint>

#include "patch/modulation_row.h"
#include "patch/zone_table.h"

namespace stratovane {

/// Stored in patches; do not renumber. 6 ("Model") and above are kept and displayed but make no
/// sound.
enum class ElementType : std::int32_t { effect, drawbar, sample, wavetable, fm, analog };

enum class TriggerCondition : std::int32_t {
    none,
    modWheelUp,
    modWheelDown,
    sustainUp,
    sustainDown,
    oddPatchNote,
    evenPatchNote,
    oddElementNote,
    evenElementNote,
    noArpeggiator,
};

enum class MonoMode : std::int32_t { poly, lowest, highest, first, last };

/// How a voice is re-pitched when a note takes it over.
enum class Retrigger : std::int32_t { newVoice, allModulation, filterAndAmp, filter, pitchOnly };

enum class GlideMode : std::int32_t { off, bendOnly, fingered, always };

enum class NoteDelay : std::int32_t { off, time, tempo, noteOff };  // above: as off

/// Values of the "Mute Condition"; from `firstGroup` on, voices of equal value mute each other.
enum class MuteCondition : std::int32_t {
    none,
    sameNote,
    otherElements,
    wholePatch,
    none4,
    firstGroup
};

enum class FilterMode : std::int32_t {
    off,
    low24,
    low12,
    band18,
    band12,
    high12,
    peak,
    presence,
    damper,  // above: as damper
};

enum class LfoSync : std::int32_t { off, firstNote, eachNote, tempoAndNote, tempoAndBeat };

/// An exponential envelope (amplitude or filter). Times in seconds before velocity, key and tempo.
struct EnvelopeControls {
    float attackSeconds = 0, decaySeconds = 0, releaseSeconds = 0;
    float sustain = 1;              // 0..1 of the peak
    float fadeSeconds = 0;          // of the sustain stage: < 0 down, > 0 up, 0 holds
    float decayCurve = 0;           // e^(9v - 7)
    float velocityToLevel = 0;      // -2..2
    float velocityToAttack = 0;     // exponent per normalised velocity, -4..4
    float velocityToDecay = 0;      // likewise
    float velocityToRelease = 0;    // likewise, -2..2
    float decayKeytrack = 0;        // exponent per unit of key pitch, -2..2
    float releaseKeytrack = 0;      // likewise
    float legatoAttackSeconds = 0;  // added to the attack of a legato retrigger ("Sample" elements)
};

/// The multi-stage modulation envelope.
struct ModulationEnvelopeControls {
    std::array<float, 5> levels{};  // Level 1..3, sustain, Level 5: -1..1
    std::array<float, 4> ticks{1, 1, 1,
                               1};  // Time 1..3, release: control ticks before the tempo factor
};

/// An LFO of a part or of an element's voices.
struct LfoControls {
    std::int32_t wave = 0;
    LfoSync sync = LfoSync::off;
    float freePerTick = 0;   // half cycles per tick
    float tempoPerBeat = 1;  // divisions per beat
    float phase = 0;         // 0..0.9 start phase / 0.9; above: random
};

struct AnalogControls {
    bool ladder = true;     // "Filter" on "Analog"
    std::int32_t wave = 0;  // 0..6
    float leak = 0;         // of the shape and Osc3 integrators, 0..1 (1 - e^(7h + 3) / rate)
    float mix1 = 1;         // negative when Osc1's phase is inverted
    float mix2 = 0;
    float ratio1 = 1, ratio2 = 1;  // of semitones and cents; frequency factors
    float minimumPulseWidth = 0;
    std::int32_t wave2 = 0;  // 0..6
    std::int32_t wave3 = 0;  // 0 saw, 1 square, 2 triangle
    float mix3 = 0;
    float sub = 0;
    float noise = 0;
    float filterMod = 0;         // Osc3 to cutoff, 0..0.68
    float filterDistortion = 0;  // 0..0.5
    std::int32_t aliasing = 0;   // of the wavetable waves, 0..16383
    bool mute3 = false;
};

struct DrawbarControls {
    std::int32_t bank = 0, set = 128;    // set 128: none
    std::int32_t percussionTrigger = 0;  // 0 normal, 1 + velocity, 2 mono, 3 poly
    bool percussion = false, loud = false, fast = false, third = false;
    std::array<std::int32_t, 9> bars{};  // 0..8
    float clickLevel = 0;                // 6v²
    float clickSamples = 0;  // at the audio rate; the voice counts as many control ticks
    float offClick = 0;
};

struct SampleControls {
    std::int32_t velocityMapMode = 0;  // 0..15
    std::int32_t bank = 0, set = 128;  // set 128: none
    bool forceMono = false;
    float formant = 0.5f;  // raw, after its macro
    float velocity = 0;    // -0.1905..0.1905
    float random = 0;
    float legatoStart = 0;
    std::int32_t velocityOffset = 0;  // -128..128
    float velocityScale = 1;          // -1..3
    float velocityRandom = 0;         // 0..64
};

struct WavetableControls {
    std::int32_t bank = 0, item = 128;  // item 128: none
    bool sync = false;
    float ratio2 = 1;
    std::int32_t aliasing = 0;  // 0..16383
    std::int32_t wave2 = 0;
    float mix2 = 0;
};

struct FmOperatorControls {
    float coarse = 1, fine = 0;  // frequency ratio is their sum
    float depth = 0;
    float velocity = 0;
    float lowScale = 0, breakpoint = 0, highScale = 0;
};

struct FmControls {
    std::array<FmOperatorControls, 2> operators{};
    float through = 0;  // mix of operator 1 past operator 2, 0..3
    float keytrack = 0;
    float envelopePerTick = 1;  // coefficient
    float envelopeLevel = 0;
    float carrierHz = 0;  // > 0: fixed low-frequency carrier
};

struct EffectControls {
    std::int32_t type = 128;       // above 110: no unit
    std::int32_t auxOut = 0;       // 0..15
    std::int32_t pair = 0;         // of a send slot: 1-based output pair, 0 none
    std::array<float, 4> sends{};  // 4v²
};

/// Owner: the thread that plays the patch (before hand-over: its builder). Every field is the
/// result of Element::apply; the stored normalised values are Element's.
struct ElementControls {
    // Head
    bool muted = true;
    bool silent = true;   // muted, or a sound element whose level is below 0.0001
    bool receive = true;  // follows the patch's macros, mono/poly and ECO switch
    bool eco = false;     // effective
    // When it plays
    ZoneTable keyGain{}, velocityGain{};
    std::int32_t keyLow = 0, keyHigh = 127;  // ends of the key zone, either may be the higher
    TriggerCondition trigger = TriggerCondition::none;
    std::int32_t muteCondition = 0;
    MonoMode monoMode = MonoMode::poly;  // effective
    std::int32_t maxVoices = 64;         // 1..64
    std::int32_t priority = 1;           // 0, 1 or 6; lower is stolen first
    bool resumeEnvelopes = false;        // "Analog (Resume)"
    NoteDelay noteDelay = NoteDelay::off;
    float delayTime = 0;  // raw: a time (timeSeconds) or a division of 1 - v
    float velocityToDelay = 0, randomDelay = 0;
    std::int32_t undampedFrom = 128;  // note number, 128 none
    // Unison
    std::int32_t unisonExtra = 0;  // 0..7 voices beside the first
    float unisonDetune = 0;        // pitch
    float unisonPan = 0;
    // Pitch
    float pitchOffset = 0;            // octave, semitones, cents; pitch
    std::int32_t wholeSemitones = 0;  // octave and semitones alone
    float pitchKeytrack = 1;
    float randomPitch = 0;  // pitch
    bool patchBend = true;
    GlideMode glideMode = GlideMode::off;
    bool resumeGlide = false;
    float glideCoefficient = 1;             // per tick
    float velocityToGlide = 0;              // exponent
    float attackBend = 0, releaseBend = 0;  // pitch
    float velocityToBend = 0;
    Retrigger legatoRetrigger = Retrigger::pitchOnly, releaseRetrigger = Retrigger::pitchOnly;
    // Oscillator start and shape
    float start = 0, velocityToStart = 0, randomStart = 0;
    float wave = 0, keyToWave = 0, velocityToWave = 0, randomWave = 0;
    float wave2 = 0;  // continuous shape of oscillator 2
    // Modulation
    LfoControls lfo3;
    ModulationEnvelopeControls modulation;
    ModulationRows rows;
    EnvelopeControls filterEnvelope, ampEnvelope;
    float tempoToEnvelopes = 0;  // 0..1
    float muteFadeSeconds = 0;
    float noteOnClick = 0;
    // Filter
    FilterMode filterMode = FilterMode::off;
    float resonance = 0, velocityToResonance = 0;
    float cutoff = 0;  // pitch of the cutoff over the sample rate
    float cutoffKeytrack = 0;
    float velocityToCutoff = 0, randomCutoff = 0;  // of ten octaves
    float envelopeToCutoff = 0;                    // pitch
    // Output
    bool velocityToAll = true;  // "Receive Velocity" on; off: velocity reaches the amp peak alone
    float level = 0;            // 2v², before expression
    float pan = 0.5f;
    float panKeytrack = 0, randomPan = 0, alternatingPan = 0;
    bool receivePressure = true, receiveModWheel = true;
    // By type
    AnalogControls analog;
    DrawbarControls drawbar;
    SampleControls sample;
    WavetableControls wavetable;
    FmControls fm;
    EffectControls effect;
};

}  // namespace stratovane
