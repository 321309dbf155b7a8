#include "effects/catalogue.h"

#include <algorithm>

#include "base/displays.h"
#include "effects/all_types.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

constexpr const EffectType* types[] = {
    &effect::reverb,
    &effect::hallReverb,
    &effect::plateReverb,
    &effect::roomReverb,
    &effect::reverseReverb,
    &effect::nonLinearReverb,
    &effect::earlyReflections,
    &effect::tunedResonators,
    &effect::overheads,
    &effect::delay,
    &effect::stereoDelay,
    &effect::longDelay,
    &effect::tapeDelay,
    &effect::duckingDelay,
    &effect::grainDelay,
    &effect::diffuserDelay,
    &effect::chorusReverb,
    &effect::chorus,
    &effect::quadChorus,
    &effect::spaceChorus,
    &effect::ensemble,
    &effect::flanger,
    &effect::stepFlanger,
    &effect::phaser,
    &effect::deepPhaser,
    &effect::biPhaser,
    &effect::panTremolo,
    &effect::stereoWidth,
    &effect::stereoEnhancer,
    &effect::scannerVibrato,
    &effect::rotarySpeaker,
    &effect::rotarySpeaker2,
    &effect::pitchShift,
    &effect::detune,
    &effect::vintageFilter,
    &effect::wahPedal,
    &effect::talkBox,
    &effect::shelfEq,
    &effect::parametricEq,
    &effect::enhancer,
    &effect::limiter,
    &effect::compressor,
    &effect::multiband,
    &effect::punch,
    &effect::gate,
    &effect::distortion,
    &effect::overdrive,
    &effect::bitReduction,
    &effect::ampSimulator,
    &effect::tubeDrive,
    &effect::waveshaper,
    &effect::modulateLeftRight,
};

}  // namespace

std::span<const EffectType* const> effectTypes() { return types; }

const EffectType* effectType(int number) {
    const auto* const* found =
        std::find_if(std::begin(types), std::end(types),
                     [number](const EffectType* t) { return t->number == number; });
    return found == std::end(types) ? nullptr : *found;
}

std::unique_ptr<EffectUnit> makeEffectUnit(int number) {
    const EffectType* type = effectType(number);
    return type == nullptr ? nullptr : type->make();
}

void showEffectLabel(TextOut& out, const EffectType& type, int index) {
    if (index == -1) return out.text(type.shown.empty() ? type.name : type.shown);
    if (index >= 0 && index < effectParameters)
        out.text(type.rows[static_cast<std::size_t>(index)].label);
}

void showEffectValue(TextOut& out, const EffectType& type, int index, const EffectView& view) {
    if (index < 0 || index >= effectParameters) return;
    const auto at = static_cast<std::size_t>(index);
    const float v = view.values[at];
    if (type.rows[at].show != nullptr) return type.rows[at].show(out, v, view);
    showPercent(out, v);
}

}  // namespace stratovane
