// How far the whole instrument is tuned away.
#pragma once

#include <cstdint>

#include "base/shared.h"

namespace stratovane {

class Engine;
struct EngineShared;

/// Written by messages and by the restoring of a bank; kept apart in two numbers, since messages
/// set them apart. Any thread.
struct MasterTune {
    static constexpr std::int32_t mostSemitones = 24;  // either way

    Shared<std::int32_t> semitones{0};
    Shared<float> fraction{0.0f};  // semitones
};

/// Tunes every part, what waits to be handed over included. Any thread.
void applyMasterTune(Engine& engine, EngineShared& shared, const MasterTune& tune);

}  // namespace stratovane
