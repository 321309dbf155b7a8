#include "effect_choice.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "effects/catalogue.h"
#include "numbers.h"

namespace stratovane::render {

namespace {

std::string quoted(std::string_view text) { return std::string{"\""}.append(text).append("\""); }

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string lowered(std::string_view text) {
    std::string low{text};
    for (char& c : low)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return low;
}

const EffectType* typeNamed(std::string_view name) {
    const std::string wanted = lowered(name);
    const auto types = effectTypes();
    const auto find = [&](std::string_view EffectType::*which) {
        const auto found = std::find_if(types.begin(), types.end(), [&](const EffectType* type) {
            return !wanted.empty() && lowered(type->*which) == wanted;
        });
        return found == types.end() ? nullptr : *found;
    };
    const EffectType* type = find(&EffectType::name);
    return type == nullptr ? find(&EffectType::shown) : type;
}

/// Characters to change, add or leave out (the distance of Levenshtein).
std::size_t slips(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// The name that was probably meant; empty when none comes close. A part of a name counts as one
/// slip.
std::string_view nearestName(std::string_view name) {
    constexpr std::size_t shortestPart = 3;
    const std::string wanted = lowered(name);
    std::size_t fewest = (wanted.size() + 2) / 3 + 1;
    std::string_view nearest;
    for (const EffectType* type : effectTypes()) {
        for (std::string_view each : {type->name, type->shown}) {
            if (each.empty()) continue;
            const std::string known = lowered(each);
            const bool isPart =
                wanted.size() >= shortestPart && known.find(wanted) != std::string::npos;
            const std::size_t distance = isPart ? 1 : slips(wanted, known);
            if (distance >= fewest) continue;
            fewest = distance;
            nearest = each;
        }
    }
    return nearest;
}

}  // namespace

EffectChoice defaultChoice(const EffectType& type) {
    EffectChoice choice{type.number, {}};
    if (const EffectPreset* preset = firstPresetOf(type.number)) {
        choice.values = preset->values;
        return choice;
    }
    std::transform(type.rows.begin(), type.rows.end(), choice.values.begin(),
                   [](const EffectRow& row) { return row.initial; });
    return choice;
}

std::string quotedName(const EffectChoice& effect) {
    const EffectType* type = effectType(effect.type);
    return quoted(type == nullptr ? "?" : type->name);
}

std::variant<EffectChoice, std::string> readEffect(std::string_view text) {
    const std::size_t colon = text.find(':');
    const std::string_view name = trimmed(text.substr(0, colon));
    const EffectType* type = typeNamed(name);
    if (type == nullptr) {
        const std::string_view nearest = nearestName(name);
        return "there is no effect " + quoted(name) +
               (nearest.empty() ? "; --list-effects lists those there are"
                                : "; did you mean " + quoted(nearest) + "?");
    }
    EffectChoice choice = defaultChoice(*type);
    if (colon == std::string_view::npos) return choice;
    std::string_view rest = text.substr(colon + 1);
    for (std::size_t index = 0;; ++index) {
        if (index == choice.values.size())
            return quoted(type->name) + " takes 12 values at most: " + quoted(text);
        const std::size_t comma = rest.find(',');
        const std::string_view given = trimmed(rest.substr(0, comma));
        const auto value = wholeNumber(given);
        if (!value || *value < 0 || *value > 1) {
            const std::string_view label = type->rows[index].label;
            return quoted(type->name) + ": parameter " + std::to_string(index) +
                   (label.empty() ? "" : " (" + std::string{label} + ")") +
                   " takes a number from 0 to 1, not " + quoted(given);
        }
        choice.values[index] = static_cast<float>(*value);
        if (comma == std::string_view::npos) return choice;
        rest.remove_prefix(comma + 1);
    }
}

}  // namespace stratovane::render
