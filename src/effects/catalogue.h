// Every effect type and every preset there is.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "effects/effect_type.h"

namespace stratovane {

/// All types by ascending number.
std::span<const EffectType* const> effectTypes();
/// The type of a number; null when there is none. Any thread.
const EffectType* effectType(int number);
/// A new unit with its constructor's parameters; null when there is no such type.
std::unique_ptr<EffectUnit> makeEffectUnit(int number);

/// The element parameter that chooses a type holds (number + 0.5) / 128.9.
constexpr float storedEffectType(int number) {
    return (static_cast<float>(number) + 0.5f) * 0.0077579524f;
}

/// Label of a parameter; empty for a hidden one. Index -1: the type's display name. Any thread.
void showEffectLabel(TextOut& out, const EffectType& type, int index);
/// Text of a value under the type's other values. Any thread.
void showEffectValue(TextOut& out, const EffectType& type, int index, const EffectView& view);

struct EffectPreset {
    int item = 0;
    std::string_view name{};
    int type = 128;
    std::array<float, effectParameters> values{};
};

/// All presets that are not empty, by ascending item.
std::span<const EffectPreset> effectPresets();
/// The preset of an item; items between those listed are empty: no name, type 128, values 0.5 but
/// value 1, which is 0. Any thread.
EffectPreset effectPreset(int item);
/// The first preset of a type; null when it has none.
const EffectPreset* firstPresetOf(int type);

}  // namespace stratovane
