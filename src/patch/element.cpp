#include "patch/element.h"

#include "effects/catalogue.h"
#include "effects/effect_unit.h"
#include "patch/element_rows.h"
#include "patch/macro_readers.h"
#include "patch/patch.h"

namespace stratovane {

Element::Element() = default;
Element::~Element() = default;

void Element::apply(int index) {
    const ElementRow* row = elementRow(type_, index);
    if (!row || !row->apply) return;
    ElementScope scope{*this, controls_, patch_->controls_, index};
    float v = routed(index);
    if (row->macro >= 0) v = scope.macro(row->macro, v);
    row->apply(scope, v);
    if (row->voices) ++changes_;
    if (row->layout) patch_->layoutChanged_.set(1);
}

/// Everything but what loads in a patch that plays: none of that depends on the rate.
void Element::applyAll() {
    for (int i = 0; i < elementParameters; ++i)
        if (!patch_->live_ || !patch_->loads(number_, i)) apply(i);
    recompileRows();
}

void Element::reapplyMacroReaders() {
    for (const MacroReaders& readers : macroReaders)
        for (const int index : {readers.first, readers.second})
            if (index >= 0 && (index != elementIndex::formant || type_ == ElementType::sample))
                patch_->settle(number_, index, Patch::When::owner);
}

/// The new type starts without content; the block's stored values then bring back what it had.
void Element::changeType(ElementType to) {
    controls_.effect.type = noContent;
    controls_.drawbar.set = noContent;
    controls_.sample.set = noContent;
    controls_.wavetable.item = noContent;
    controls_.sample.velocityMapMode = 0;
    controls_.ampEnvelope.legatoAttackSeconds = 0;
    controls_.filterEnvelope.legatoAttackSeconds = 0;
    type_ = to;
    patch_->effectsChanged_ = true;
    for (int i = elementIndex::firstBlock; i <= elementIndex::lastBlock; ++i)
        patch_->settle(number_, i, Patch::When::owner);
    // Whether the wave or the formant follows the macro, and whether a level can silence it,
    // depends on the type.
    patch_->settle(number_, elementIndex::wave, Patch::When::owner);
    ElementScope{*this, controls_, patch_->controls_, elementIndex::type}.updateSilence();
    recompileRows();
    ++changes_;
    patch_->layoutChanged_.set(1);
}

// Effect units. The UI thread builds and replaces them; the audio thread plays what is published.

int Element::wantedUnit() const {
    const bool effect = choice(stored(elementIndex::type), 15.9f) == 0;
    return effect ? choice(stored(elementIndex::item), 128.9f) : noEffect;
}

void Element::refreshUnit() {
    if (wantedUnit() != unitType_) renewUnit();
}

void Element::renewUnit() {
    unitType_ = wantedUnit();
    std::unique_ptr<EffectUnit> fresh = makeEffectUnit(unitType_);
    std::array<float, effectParameters> given{};
    const auto parameterIndex = [](std::size_t i) {
        return elementIndex::firstEffectParameter + static_cast<int>(i);
    };
    if (fresh) {
        // No draw may depend on what else was made: the seed tells part, element and how many
        // before.
        fresh->setSeed((static_cast<std::uint32_t>(patch_->part_) * 128 +
                        static_cast<std::uint32_t>(number_)) *
                           65536 +
                       unitsMade_++);
        fresh->setTempo(patch_->shared_.tempo, patch_->beatsPerFrame());
        fresh->setKeySource(patch_->keys_);
        fresh->setSampleRate(static_cast<float>(patch_->rate_));
        for (std::size_t i = 0; i < given.size(); ++i) {
            given[i] = stored(parameterIndex(i));
            fresh->setParameter(static_cast<int>(i), given[i]);
        }
    }
    unit_.exchange(fresh.get());
    patch_->shared_.retired.add(std::move(ownedUnit_), patch_->shared_.epoch);
    ownedUnit_ = std::move(fresh);
    // What was set meanwhile went to the unit before.
    if (ownedUnit_)
        for (std::size_t i = 0; i < given.size(); ++i)
            if (stored(parameterIndex(i)) != given[i])
                patch_->settle(number_, parameterIndex(i), Patch::When::marked);
}

float ElementScope::value(int other) const { return element.routed(other); }
ElementType ElementScope::type() const { return element.type_; }
double ElementScope::rate() const { return element.patch_->rate_; }
float ElementScope::tickSeconds() const { return static_cast<float>(tickFrames / rate()); }
void ElementScope::reapply(int other) {
    element.patch_->settle(element.number_, other, Patch::When::owner);
}
void ElementScope::setEffectParameter(int number, float v) {
    if (EffectUnit* unit = element.unit()) unit->setParameter(number, v);
}
void ElementScope::reapplyMacroReaders() { element.reapplyMacroReaders(); }
void ElementScope::changeType(ElementType to) { element.changeType(to); }
void ElementScope::updateSilence() {
    controls.silent =
        controls.muted || (controls.level < 0.0001f && element.type_ != ElementType::effect);
}
float ElementScope::macro(int destination, float v) const {
    return controls.receive ? element.patch_->macro(destination, v) : v;
}

}  // namespace stratovane
