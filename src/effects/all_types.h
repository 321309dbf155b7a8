// The records of all effect types. Each is defined in a file of its own, which has no other header.
#pragma once

#include "effects/effect_type.h"

namespace stratovane::effect {

// A new effect is its file, its name here and its line in the catalogue.
extern const EffectType reverb, hallReverb, plateReverb, roomReverb, reverseReverb, nonLinearReverb,
    earlyReflections, tunedResonators, overheads;
extern const EffectType delay, stereoDelay, longDelay, tapeDelay, duckingDelay, grainDelay,
    diffuserDelay;
extern const EffectType chorusReverb, chorus, quadChorus, spaceChorus, ensemble, flanger,
    stepFlanger, phaser, deepPhaser, biPhaser, panTremolo, scannerVibrato, rotarySpeaker,
    rotarySpeaker2, pitchShift, detune;
extern const EffectType stereoWidth, stereoEnhancer, vintageFilter, wahPedal, talkBox, shelfEq,
    parametricEq, enhancer;
extern const EffectType limiter, compressor, multiband, punch, gate, distortion, overdrive,
    bitReduction, ampSimulator, tubeDrive, waveshaper, modulateLeftRight;

}  // namespace stratovane::effect
