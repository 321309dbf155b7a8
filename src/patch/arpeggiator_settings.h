// The arpeggiator's parameters, as the patch stores them and the arpeggiator reads them.
#pragma once

#include <array>
#include <cstdint>

#include "base/shared.h"

namespace stratovane {

/// Stored in patches; do not renumber.
enum class ArpeggiatorMode : std::int32_t {
    up,
    down,
    upAndDown,
    asPlayed,
    random,
    stepSequence,
    randomSequence,
    controllerSequence,
    elementSequence,
    phrase,
};

struct ArpeggiatorStep {
    Shared<float> note{
        0.5f};  // raw; trunc(48v + 0.5) - 24 semitones, or trunc(16v + 0.5) an element
    Shared<float> velocity{1.0f};                       // 0..2
    Shared<float> gate{0.5f};                           // 0..1
    Shared<std::int32_t> sequence1{63}, sequence2{63};  // 0..126
};

/// Parameters 0..16 by number as normalised values, and the sixteen steps. Written by whoever sets
/// the patch, read by the audio thread.
struct ArpeggiatorSettings {
    enum Parameter {
        on,
        latch,
        mode,
        octaves,
        steps,
        sync,
        rate,
        gate,
        swing,
        unused9,
        unused10,
        transpose,
        phraseLowKey,
        phraseHighKey,
        unused14,
        unused15,
        scale,
        parameterCount,
    };
    std::array<Shared<float>, parameterCount> values{};
    std::array<ArpeggiatorStep, 16> steps16{};
};

}  // namespace stratovane
