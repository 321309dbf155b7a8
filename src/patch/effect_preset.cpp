#include "patch/effect_preset.h"

#include "effects/catalogue.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

namespace {
constexpr float effectElement = 0.0f, noItem = 1.0f;
}

bool isEditable(const Patch& patch, int element) {
    return (element >= 1 && element <= patch.elementCount()) ||
           (element >= firstSendSlot && element <= elementTotal);
}

void loadEffectPreset(Patch& patch, int element, int presetNumber) {
    if (!isEditable(patch, element)) return;
    const EffectPreset preset = effectPreset(presetNumber);
    const bool isEmpty = preset.name.empty();
    patch.setText(element, preset.name);
    patch.recall(element, elementIndex::type, effectElement);
    for (int i = 0; i < effectParameters; ++i)
        patch.recall(element, elementIndex::firstEffectParameter + i,
                     preset.values[static_cast<std::size_t>(i)]);
    patch.recall(element, elementIndex::item, isEmpty ? noItem : storedEffectType(preset.type));
    if (!isEmpty) patch.recall(element, elementIndex::mute, 0.0f);
    patch.applyLoading();
}

void emptyEffect(Patch& patch, int element) {
    if (!isEditable(patch, element)) return;
    patch.setText(element, {});
    patch.recall(element, elementIndex::mute, 1.0f);
    patch.recall(element, elementIndex::item, noItem);
    patch.applyLoading();
}

}  // namespace stratovane
