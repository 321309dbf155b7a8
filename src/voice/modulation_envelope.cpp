#include "voice/modulation_envelope.h"

namespace stratovane {
namespace {

constexpr float heldTicks = 1e10f;

enum : std::size_t { sustainLevel = 3, lastLevel = 4, releaseTime = 3 };

}  // namespace

void ModulationEnvelope::setStage(int stage, const ModulationEnvelopeControls& controls,
                                  float timeFactor) {
    const auto& levels = controls.levels;
    elapsedTicks_ = 0;
    nextStage_ = stage + 1;
    if (stage == 3 || stage >= 5 || stage < 0) {
        level = stage == 3 ? levels[sustainLevel] : levels[lastLevel];
        durationTicks_ = heldTicks;
        perTick_ = 0;
        return;
    }
    const auto at = static_cast<std::size_t>(stage);
    if (stage == 1 || stage == 2) level = levels[at];
    const float target = stage == 4 ? levels[lastLevel] : levels[at + 1];
    durationTicks_ = controls.ticks[stage == 4 ? releaseTime : at] * timeFactor;
    perTick_ = (target - level) / durationTicks_;
}

void ModulationEnvelope::tick(float multiplier, const ModulationEnvelopeControls& controls,
                              float timeFactor) {
    elapsedTicks_ += multiplier;
    level += multiplier * perTick_;
    if (elapsedTicks_ >= durationTicks_) setStage(nextStage_, controls, timeFactor);
}

}  // namespace stratovane
