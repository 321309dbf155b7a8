// The elements' parameters as data: 256 common rows and one block of rows for each type.
#pragma once

#include <span>

#include "patch/element_controls.h"
#include "patch/parameter_ids.h"
#include "patch/parameter_row.h"

namespace stratovane {

class Element;
struct PatchControls;

/// What the conversion of an element row may read, write and set off. Owner of the controls.
struct ElementScope {
    Element& element;
    ElementControls& controls;
    const PatchControls& patch;
    int index;

    float value(int other) const;  // of another parameter, as its knobs leave it
    ElementType type() const;
    double rate() const;         // Hz
    float tickSeconds() const;   // length of a control tick
    void reapply(int other);     // another row of this element
    void reapplyMacroReaders();  // every row that macro destinations bend
    void changeType(ElementType to);
    void updateSilence();
    void setEffectParameter(int number, float v);  // 0..11, of the unit if there is one
    void followSlot(int slot);                     // knob slot 0 or 1
    void connectSlot(int slot, int knob);
    void editRow(int row);  // modulation row 0..15
    void recompileRows();   // for times that depend on other rows
    /// A value bent by macro destination 0..14, if the element receives.
    float macro(int destination, float v) const;
};

/// Sample set, wavetable or effect number that stands for nothing.
inline constexpr int noContent = 128;

struct ElementRow {
    int id = 0;
    std::string_view name{};
    float initial = 0;
    void (*apply)(ElementScope&, float v) = nullptr;
    Show show = nullptr;  // null: percent
    ShowName showName = nullptr;
    int macro = -1;       // destination that bends the value first
    bool voices = false;  // sounding voices must notice
    bool layout = false;  // notes in progress are not resumed afterwards
    bool loads = false;   // applied by the UI thread's next look when the patch plays
};

/// The row of an index under a type; null for the unnamed ones and for the block of a type that has
/// none. Any thread.
const ElementRow* elementRow(ElementType type, int index);

/// The block of one type in the order of indices. Any thread.
std::span<const ElementRow> typeBlock(ElementType type);

/// What a newly made element holds, and what a type's block holds after initElement. Any thread.
float constructionValue(int index);
float initialValue(ElementType type, int index);

/// "Effect" .. "Analog", "Model"; " " for types beyond. Any thread.
std::string_view elementTypeName(ElementType type);

/// Whether an element plays the small content: the patch's switch ("ECO" 0, "XXL" above 2/3) rules
/// over its own where it receives. Values as stored. Any thread.
bool effectiveEco(float patchEco, bool receives, float own);

// Conversions that several blocks share: a field, or a field of a nested record, by its path.

template <auto first, auto... rest>
auto& field(auto& record) {
    if constexpr (sizeof...(rest) == 0)
        return record.*first;
    else
        return field<rest...>(record.*first);
}
template <auto... path>
void raw(ElementScope& s, float v) {
    field<path...>(s.controls) = v;
}
template <auto... path>
void flag(ElementScope& s, float v) {
    field<path...>(s.controls) = isOn(v);
}
template <auto... path>
void bipolar(ElementScope& s, float v) {
    field<path...>(s.controls) = 2.0f * v - 1.0f;
}
template <auto... path>
void seconds(ElementScope& s, float v) {
    field<path...>(s.controls) = timeSeconds(v);
}

// The blocks, one file each.
std::span<const ElementRow> commonRows();
std::span<const ElementRow> effectBlock();
std::span<const ElementRow> drawbarBlock();
std::span<const ElementRow> sampleBlock();
std::span<const ElementRow> wavetableBlock();
std::span<const ElementRow> fmBlock();
std::span<const ElementRow> analogBlock();

}  // namespace stratovane
