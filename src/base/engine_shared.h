// What every part of one instance reads: gain, tuning, rate and block size.
#pragma once

#include <cstdint>

#include "base/render_epoch.h"
#include "base/retired_list.h"
#include "base/shared.h"

namespace stratovane {

/// Threads: written by the UI thread (master gain and tuning by either), read by all, unless a
/// member says otherwise.
struct EngineShared {
    Shared<float> masterGain{1.0f};  // Lift compensation times the square of the master volume
    Shared<float> liftCompensation{2.0f};   // what makes up for the output enhancer's gain, 1.45..2
    Shared<float> tuningSemitones{0.0f};    // engine-wide fine tuning
    Shared<float> sampleRate{44100.0f};     // Hz
    Shared<float> tempo{120.0f};            // quarter notes a minute. Audio thread writes
    mutable RenderEpoch epoch;              // of the instance's renders
    mutable RetiredList retired;            // UI thread
    Shared<std::int32_t> blockFrames{256};  // largest piece the host announced
};

/// Musical time of a block as every part sees it. A plain value of the audio thread.
struct MusicalTime {
    float tempo = 120.0f;  // quarter notes a minute
    double beatsPerFrame = 4.5351473922902495e-5;
    float beatsPerBar = 4.0f;
    double position = 0.0;      // song position at the first frame, beats
    double barStart = 0.0;      // beats
    std::uint32_t changes = 0;  // TransportChange bits
};

}  // namespace stratovane
