#include "patch/editing/element_file.h"

#include "base/units.h"
#include "content/file_bytes.h"
#include "content/program_files.h"
#include "effects/catalogue.h"
#include "patch/effect_preset.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

namespace {

constexpr float effectElement = 0.0f, noItem = 1.0f;
constexpr int auxOut = 20;  // output pair of a send slot
constexpr float off = 0.0f, pair1 = 0.05f;

bool isEmptySlot(const Patch& patch, int element) {
    return element >= firstSendSlot &&
           effectType(choice(patch.get(element, elementIndex::item), 128.9f)) == nullptr;
}

void apply(Patch& patch, int element, const ElementValues& values) {
    const auto take = [&](int index) {
        patch.recall(element, index, values[static_cast<std::size_t>(index)]);
    };
    for (int slot = 0; slot < 2; ++slot)
        patch.recall(element, elementIndex::firstSlotKnob + slot, 0.0f);
    take(elementIndex::item);
    for (int i = 0; i < effectParameters; ++i) take(elementIndex::firstEffectParameter + i);
    patch.recall(element, elementIndex::mute, 0.0f);
}

}  // namespace

bool saveElement(const Patch& patch, int element, const std::string& path) {
    if (!isEditable(patch, element)) return false;
    ElementValues values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = patch.get(element, static_cast<int>(i));
    return replaceFile(path, makeElementFile(path, values));
}

bool loadEffectFile(Patch& patch, int element, const std::string& path) {
    if (!isEditable(patch, element)) return false;
    const bool isSilent = isEmptySlot(patch, element) && patch.get(element, auxOut) == off;
    // Only a file of the one right size is read at all.
    const auto size = fileSize(path);
    const auto bytes = size == elementFileBytes ? readFile(path) : std::nullopt;
    const auto values = bytes ? readElementFile(*bytes) : std::nullopt;
    patch.recall(element, elementIndex::type, effectElement);
    if (values) {
        patch.setText(element, fileBaseName(path));
        apply(patch, element, *values);
        if (isSilent) patch.recall(element, auxOut, pair1);
    } else {
        patch.setText(element, {});
        patch.recall(element, elementIndex::item, noItem);
    }
    patch.applyLoading();
    return values.has_value();
}

}  // namespace stratovane
