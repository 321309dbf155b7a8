#include "effect_list.h"

#include <cstdio>

#include "effect_choice.h"
#include "effects/catalogue.h"

namespace stratovane::render {

namespace {

/// The instrument's texts are of code page 1252; of what is not ASCII they use only characters that
/// Latin-1 has, too.
std::string utf8(std::string_view text) {
    std::string out;
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            out.push_back(c);
        } else {
            out.push_back(static_cast<char>(0xC0 | byte >> 6));
            out.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
        }
    }
    return out;
}

void appendParameter(std::string& list, const EffectType& type, int index, const EffectView& view) {
    char label[64], display[64], line[256];
    TextOut labelOut{label}, displayOut{display};
    showEffectLabel(labelOut, type, index);
    if (labelOut.view().empty()) return;  // hidden
    showEffectValue(displayOut, type, index, view);
    std::snprintf(line, sizeof line, "     %2d  %-13s %-7.4g ", index, label,
                  static_cast<double>(view.values[static_cast<std::size_t>(index)]));
    list.append(utf8(line)).append(utf8(displayOut.view())).push_back('\n');
}

}  // namespace

std::string effectList() {
    std::string list;
    for (const EffectType* type : effectTypes()) {
        char number[16];
        std::snprintf(number, sizeof number, "%3d  ", type->number);
        list.append(number).append(utf8(type->name));
        if (!type->shown.empty() && type->shown != type->name)
            list.append(", shown as \"").append(utf8(type->shown)).append("\"");
        list.push_back('\n');
        EffectView view;
        view.values = defaultChoice(*type).values;
        for (int index = 0; index < effectParameters; ++index)
            appendParameter(list, *type, index, view);
    }
    return list;
}

}  // namespace stratovane::render
