// Times that follow the tempo.
#pragma once

#include "base/tempo_divisions.h"

namespace stratovane {

/// Length in samples of the division that 1 - v chooses, halved while it exceeds `most`.
inline float syncedSamples(float v, float samplesPerBeat, float most) {
    float samples = samplesPerBeat / tempoDivision(1.0f - v).perBeat;
    while (samples > most) samples *= 0.5f;
    return samples;
}

}  // namespace stratovane
