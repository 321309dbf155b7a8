#include "patch/element.h"

#include "patch/element_rows.h"
#include "patch/macro_readers.h"
#include "patch/patch.h"

namespace stratovane {

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

float ElementScope::value(int other) const { return element.routed(other); }
ElementType ElementScope::type() const { return element.type_; }
double ElementScope::rate() const { return element.patch_->rate_; }
float ElementScope::tickSeconds() const { return static_cast<float>(tickFrames / rate()); }
void ElementScope::reapply(int other) {
    element.patch_->settle(element.number_, other, Patch::When::owner);
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
