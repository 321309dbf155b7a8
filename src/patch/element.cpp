#include "patch/element.h"

#include "content/content_library.h"
#include "effects/catalogue.h"
#include "effects/effect_unit.h"
#include "patch/element_rows.h"
#include "patch/macro_readers.h"
#include "patch/patch.h"
#include "patch/piano_layers.h"

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

// Content. The UI thread selects; the audio thread plays what is published.

Element::Selection Element::wantedContent() const {
    const auto number = [this](int index) { return choice(stored(index), 128.9f); };
    const bool eco = effectiveEco(patch_->get(0, global::eco), isOn(stored(elementIndex::receive)),
                                  stored(elementIndex::eco));
    switch (static_cast<ElementType>(choice(stored(elementIndex::type), 15.9f))) {
        case ElementType::sample: {
            const int variant =
                pianoVariant(patch_->get(0, global::pianoMode), patch_->get(0, global::pianoModel),
                             patch_->get(0, global::pianoResonance));
            const int mode = choice(stored(elementIndex::velocityMapMode), 15.9f);
            return {ContentKind::samples,
                    PackedItem::of(number(elementIndex::bank),
                                   pianoLayer(mode, number(elementIndex::item), variant), eco)};
        }
        case ElementType::wavetable:
            return {ContentKind::wavetables,
                    PackedItem::of(number(elementIndex::bank), number(elementIndex::item), eco)};
        case ElementType::drawbar:
            return {ContentKind::drawbars,
                    PackedItem::of(number(elementIndex::bank), number(elementIndex::item), eco)};
        case ElementType::analog:
            return {ContentKind::wavetables,
                    PackedItem::of(0, number(elementIndex::analogTable), eco)};
        default:
            return {};
    }
}

void Element::refreshContent() {
    ContentLibrary* library = patch_->place_.library;
    if (library == nullptr) return;
    const Selection wanted = wantedContent();
    if (wanted == selected_) return;
    const ItemSlot* slot =
        library->request(wanted.kind, wanted.item, PackedItem{}, patch_->waitingReleases_);
    std::unique_ptr<const ElementContent> fresh;
    if (slot != nullptr)
        fresh = std::make_unique<const ElementContent>(
            ElementContent{ContentId::of(wanted.kind, wanted.item), slot});
    content_.exchange(fresh.get());
    releaseContent();
    ownedContent_ = std::move(fresh);
    selected_ = wanted;
    patch_->layoutChanged_.set(1);
}

/// What was selected waits until no voice plays it any more.
void Element::releaseContent() {
    if (!ownedContent_) return;
    const RenderEpoch& epoch = patch_->shared_.epoch;
    patch_->waitingReleases_.add({ownedContent_->id, epoch.stamp()});
    patch_->shared_.retired.add(std::move(ownedContent_), epoch);
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
        fresh->setSeed((static_cast<std::uint32_t>(patch_->place_.part) * 128 +
                        static_cast<std::uint32_t>(number_)) *
                           65536 +
                       unitsMade_++);
        fresh->setTempo(patch_->shared_.tempo, patch_->beatsPerFrame());
        fresh->setKeySource(patch_->place_.keys);
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
