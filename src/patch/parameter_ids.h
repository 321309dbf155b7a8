// Parameter indices that code refers to by name. Stored in patches; do not renumber.
#pragma once

namespace stratovane {

/// Of the patch (element 0).
namespace global {
inline constexpr int mute = 0;
inline constexpr int eco = 1;
inline constexpr int glide = 3;
inline constexpr int knob1 = 14, knob2 = 15, knob3 = 103, knob4 = 105, knob5 = 107, knob6 = 109;
inline constexpr int knobs[6] = {knob1, knob2, knob3, knob4, knob5, knob6};
inline constexpr int oldKnobControllers[6] = {4, 5, 104, 106, 108, 110};  // of old records
inline constexpr int firstArpeggiator = 17;  // arpeggiator parameters 0..16
inline constexpr int arpeggiatorOn = 17, latch = 18, arpeggiatorMode = 19;
inline constexpr int gate = 24, phraseBank = 26, phraseProgram = 27, phraseHighKey = 30;
inline constexpr int keyLow = 49, keyHigh = 50, keyFade = 51;
inline constexpr int velocityMin = 52, velocityMax = 53, velocityFade = 54;
inline constexpr int transpose = 55, fineTune = 56, monoPoly = 57, maxVoices = 58;
inline constexpr int levelTrim = 59, pan = 60, output = 61;
inline constexpr int fxSends = 62, firstSend = 63;
inline constexpr int level = 67, type = 68, redamper = 69, lfoRateControl = 70;
inline constexpr int pianoCharacter = 71, pianoModel = 72, pianoResonance = 75, pianoMode = 84;
inline constexpr int bendUp = 73, bendDown = 74;
inline constexpr int tuningBank1 = 76, tuningItem1 = 77, tuningRoot1 = 78;
inline constexpr int tuningBank2 = 80, tuningItem2 = 81, tuningRoot2 = 82;
inline constexpr int lfo1Wave = 85, lfo1Sync = 86, lfo1Rate = 87, lfo1Phase = 88;
inline constexpr int lfo2Wave = 89, lfo2Sync = 90, lfo2Rate = 91, lfo2Phase = 92;
inline constexpr int firstMacro = 126;  // "GM Wave".."GM Release", destinations 0..9
inline constexpr int glideTime = 148;
inline constexpr int currentScene = 149, sceneMidiSelect = 150, sceneRootNote = 151;
inline constexpr int firstStep = 172;  // sixteen steps of five fields
}  // namespace global

/// Of elements 1..68; the block 17..48 means something else for each type.
namespace elementIndex {
inline constexpr int mute = 0, type = 1, receive = 2, eco = 3;
inline constexpr int firstSlotMode = 4;          // of two slots
inline constexpr int firstSlotDestination = 6;   // destination, depth, destination, depth; twice
inline constexpr int firstSlotInput = 14;        // of two slots
inline constexpr int firstRouted = 16;           // destinations of knobs begin here
inline constexpr int firstEffectParameter = 25;  // "Effect": twelve
inline constexpr int firstSlotKnob = 145;        // of two slots
inline constexpr int firstBlock = 17, lastBlock = 48;
inline constexpr int velocityMapMode = 17, bank = 18, item = 19;  // "Sample"
inline constexpr int analogTable = 34;                            // "Analog"
inline constexpr int fmVelocityToDecay = 36;                      // "FM"
inline constexpr int formant = 22;                                // "Sample"
inline constexpr int drumKitBanks = 10;                           // sample banks below are kits
inline constexpr int keyLow = 49, keyHigh = 50, keyFade = 51;
inline constexpr int velocityLow = 52, velocityHigh = 53, velocityFade = 54;
inline constexpr int monoMode = 57, noteDelay = 63, start = 67, randomStart = 69;
inline constexpr int octave = 70, semitones = 71, cents = 72, glideTime = 78;
inline constexpr int lfo3Sync = 86, lfo3Rate = 87, wave = 98;
inline constexpr int resonance = 104, cutoff = 106, filterEnvelope = 110;
inline constexpr int filterAttack = 111, filterDecay = 112, filterSustain = 113,
                     filterRelease = 115;
inline constexpr int filterVelocityToAttack = 118;
inline constexpr int noteOnClick = 125;
inline constexpr int attack = 126, decay = 127, sustain = 128, release = 130;
inline constexpr int decayKeytrack = 135, releaseKeytrack = 137;
inline constexpr int level = 139, pan = 140;
inline constexpr int firstModulationRow = 172;  // sixteen rows of five fields
}  // namespace elementIndex

}  // namespace stratovane
