#include "engine/master_tune.h"

#include "engine/engine.h"

namespace stratovane {

void applyMasterTune(Engine& engine, EngineShared& shared, const MasterTune& tune) {
    shared.tuningSemitones = static_cast<float>(tune.semitones.get()) + tune.fraction.get();
    for (int part = 0; part < parts; ++part) engine.patch(part).refreshTuning();
}

}  // namespace stratovane
