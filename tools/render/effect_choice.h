// An effect and its settings, as the command line names them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "effects/effect_type.h"

namespace stratovane::render {

/// Laid out as the plug-in's request for an effect takes it.
struct EffectChoice {
    std::int32_t type = 0;                         // a number the catalogue knows
    std::array<float, effectParameters> values{};  // 0..1
};
static_assert(sizeof(EffectChoice) == sizeof(std::int32_t) + effectParameters * sizeof(float));

/// The settings of the type's first preset, else those it is made with.
EffectChoice defaultChoice(const EffectType& type);
/// The type's name in quotes.
std::string quotedName(const EffectChoice& effect);
/// Reads "Name" or "Name:p0,p1,…", where values replace the defaults from parameter 0 on; the name
/// is any case of the type's name or display name. Otherwise a sentence of what is wrong.
std::variant<EffectChoice, std::string> readEffect(std::string_view text);

}  // namespace stratovane::render
