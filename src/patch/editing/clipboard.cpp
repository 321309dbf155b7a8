#include "patch/editing/clipboard.h"

#include "base/units.h"
#include "patch/editing/knob_inputs.h"
#include "patch/effect_preset.h"
#include "patch/element_rows.h"
#include "patch/global_rows.h"
#include "patch/parameter_ids.h"

namespace stratovane {

namespace {

ElementType typeOf(float stored) { return static_cast<ElementType>(choice(stored, 15.9f)); }

constexpr int drawbarPatch = 3;

int hintOf(const Patch& patch, ElementType type) {
    if (type == ElementType::drawbar) return drawbarPatch;
    const bool ofPatch = type == ElementType::sample || type == ElementType::analog;
    return ofPatch ? choice(patch.get(0, global::type), 15.9f) : 0;
}

/// The patch becomes of the hinted type; one that is of type 1 stays so.
void adjustType(Patch& patch, int hint) {
    constexpr int strongest = 1;
    constexpr float stored[] = {0.0f, 0.09f, 0.15f, 0.22f};
    if (hint < 1 || hint >= static_cast<int>(std::size(stored))) return;
    if (hint != strongest && choice(patch.get(0, global::type), 15.9f) == strongest) return;
    patch.recall(0, global::type, stored[hint]);
}

void startPatch(Patch& patch) {
    constexpr float inaudible = 0.01f, usual = 0.5f;
    patch.setText(0, "Init Patch");
    if (patch.get(0, global::level) < inaudible) patch.recall(0, global::level, usual);
}

}  // namespace

ElementValues freshElementValues() {
    ElementValues values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = constructionValue(static_cast<int>(i));
    return values;
}

Clipboard::Clipboard() {
    for (std::size_t i = 0; i < patch.size(); ++i) {
        const GlobalRow* row = globalRow(static_cast<int>(i));
        patch[i] = row ? row->initial : 0.0f;
    }
}

ElementType Clipboard::type() const { return typeOf(element[elementIndex::type]); }

bool Clipboard::copy(const Patch& from, int number) {
    if (number == 0) {
        patchName = from.name();
        for (std::size_t i = 0; i < patch.size(); ++i) patch[i] = from.get(0, static_cast<int>(i));
        return true;
    }
    if (!isEditable(from, number)) return false;
    elementName = from.text(number);
    for (std::size_t i = 0; i < element.size(); ++i)
        element[i] = from.get(number, static_cast<int>(i));
    typeHint = hintOf(from, type());
    return true;
}

bool Clipboard::paste(Patch& into, int number) const {
    if (number == 0) {
        for (int i = global::firstStep; i < globalParameters; ++i)
            into.recall(0, i, patch[static_cast<std::size_t>(i)]);
        return true;
    }
    if (!isEditable(into, number)) return false;
    if (number >= firstSendSlot && type() != ElementType::effect) return false;
    if (into.name().empty()) startPatch(into);
    pasteElement(into, number);
    adjustType(into, typeHint);
    into.applyLoading();
    return true;
}

void Clipboard::pasteElement(Patch& into, int number) const {
    into.setText(number, elementName);
    for (std::size_t i = 0; i < element.size(); ++i)
        into.recall(number, static_cast<int>(i), element[i]);
    followKnobs(into, number);
}

}  // namespace stratovane
