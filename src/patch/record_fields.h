// What reader and writer of patch records walk alike: the texts, and which slots hold an effect.
#pragma once

#include <array>
#include <cstddef>

#include "base/units.h"
#include "content/patch_record_layout.h"
#include "effects/catalogue.h"
#include "patch/element_controls.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

struct RecordText {
    int offset, bytes;
    int selector;  // as Patch::text takes it
};

inline constexpr int codesSelector = -9;

/// In the order in which they lie in a record, without gaps.
inline constexpr auto recordTexts = [] {
    using namespace recordLayout;
    std::array<RecordText, 11> texts{{{name, nameBytes, 0},
                                      {codes, codesBytes, codesSelector},
                                      {text1, text1Bytes, -10},
                                      {text2, text2Bytes, -7},
                                      {text3, text3Bytes, -8}}};
    for (int knob = 1; knob <= 6; ++knob)
        texts[static_cast<std::size_t>(4 + knob)] = {knobNames + knobNameBytes * (knob - 1),
                                                     knobNameBytes, knob - 7};
    return texts;
}();
static_assert([] {
    int next = recordLayout::name;
    for (const RecordText& text : recordTexts) {
        if (text.offset != next) return false;
        next += text.bytes;
    }
    return next == recordLayout::globals;
}());

/// Where the effect of a send slot in a record comes from.
enum class SendSource : std::uint8_t { none, patch, master };

/// Whether a send slot 65..68 sounds: an "Effect" element with an effect, not muted. Told from
/// stored values, since the units belong to whoever plays. Any thread.
inline bool slotSounds(const Patch& patch, int number) {
    const int type = choice(patch.get(number, elementIndex::type), 15.9f);
    return !isOn(patch.get(number, elementIndex::mute)) &&
           type == static_cast<int>(ElementType::effect) &&
           effectType(choice(patch.get(number, elementIndex::item), 128.9f));
}

}  // namespace stratovane
