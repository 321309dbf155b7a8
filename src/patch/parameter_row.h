// What the parameter tables of patch and element are made of: lookup, names and display shapes.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/displays.h"
#include "base/text_out.h"
#include "base/units.h"

namespace stratovane {

class Patch;
enum class ElementType : std::int32_t;

/// The parameter whose texts are asked for. Texts are made of stored values alone, which any thread
/// may read; converted values belong to whoever plays the patch.
struct ParameterView {
    const Patch& patch;
    int element;
    int index;

    float stored(int other) const;  // of the same element (or the patch itself)
    float storedInPatch(int other) const;
    ElementType type() const;  // as stored; the engine's may be a render behind
};

using Show = void (*)(TextOut&, float v, const ParameterView&);
using ShowName = void (*)(TextOut&, const ParameterView&);

/// Whether every id is above the one before.
template <class Rows>
consteval bool inOrder(const Rows& rows) {
    int last = -1;
    for (const auto& row : rows) {
        if (row.id <= last) return false;
        last = row.id;
    }
    return true;
}

/// Rows written one by one with a family of equal ones behind.
template <class Row, std::size_t n, std::size_t m>
consteval std::array<Row, n + m> joined(const std::array<Row, n>& rows,
                                        const std::array<Row, m>& family) {
    std::array<Row, n + m> all{};
    std::copy(rows.begin(), rows.end(), all.begin());
    std::copy(family.begin(), family.end(), all.begin() + n);
    return all;
}

/// The row of an id in an ordered table; null when there is none: such a parameter has no name, is
/// stored, shows as percent and does nothing.
template <class Row>
const Row* findRow(std::span<const Row> rows, int id) {
    const auto found = std::lower_bound(rows.begin(), rows.end(), id,
                                        [](const Row& row, int wanted) { return row.id < wanted; });
    return found != rows.end() && found->id == id ? &*found : nullptr;
}

/// Names of a choice, decoded by its factor (3.9 for four); `beyond` names what the list does not.
template <std::size_t count>
struct Choices {
    float factor;
    std::array<std::string_view, count> names;
    std::string_view beyond{};

    constexpr std::string_view of(float v) const {
        const auto at = static_cast<std::size_t>(choice(v, factor));
        return at < count ? names[at] : beyond;
    }
};
template <class... Names>
constexpr Choices<sizeof...(Names)> choices(float factor, Names... names) {
    return {factor, {names...}};
}

struct SwitchTexts {
    std::string_view on, off;
};
inline constexpr SwitchTexts onOff{"ON", "OFF"};

template <const auto& names>
void showChoice(TextOut& out, float v, const ParameterView&) {
    out.text(names.of(v));
}
template <const auto& texts>
void showSwitch(TextOut& out, float v, const ParameterView&) {
    out.text(isOn(v) ? texts.on : texts.off);
}
template <void (*plain)(TextOut&, float)>
void shown(TextOut& out, float v, const ParameterView&) {
    plain(out, v);
}
/// A number trunc(factor * v) + offset; the factor in tenths, the way choices are written.
template <int tenths, int offset = 0>
void showNumber(TextOut& out, float v, const ParameterView&) {
    out.print("%ld", offset + choice(v, static_cast<float>(tenths) / 10.0f));
}
/// The squared fade widths of key and velocity zones.
inline void showFade(TextOut& out, float v, const ParameterView&) {
    out.print("%ld", choice(v * v, 127.9f));
}
template <int tenths>
void showKey(TextOut& out, float v, const ParameterView&) {
    showNote(out, choice(v, static_cast<float>(tenths) / 10.0f));
}
inline void showNothing(TextOut&, float, const ParameterView&) {}
inline void showBlank(TextOut& out, float, const ParameterView&) { out.text(" "); }

/// trunc(2 * span * v + 0.5) - span: whole steps from -span to span.
constexpr int centred(float v, int span) {
    return static_cast<int>(static_cast<float>(2 * span) * v + 0.5f) - span;
}
template <int span>
void showCentred(TextOut& out, float v, const ParameterView&) {
    out.print("%+ld", centred(v, span));
}

// Texts of LFOs, those of the patch and those of elements. showLfoRateText reads the sync mode one
// index before its own.
void showLfoWave(TextOut& out, float v, const ParameterView& view);
void showLfoSync(TextOut& out, float v, const ParameterView& view);
void showLfoRateText(TextOut& out, float v, const ParameterView& view);
void showLfoPhase(TextOut& out, float v, const ParameterView& view);

}  // namespace stratovane
