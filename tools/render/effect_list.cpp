#include "effect_list.h"

#include <cstdio>

#include "effect_choice.h"
#include "effects/catalogue.h"
#include "shared/windows_1252.h"

namespace stratovane::render {

namespace {

void appendParameter(std::string& list, const EffectType& type, int index, const EffectView& view) {
    char label[64], display[64], line[256];
    TextOut labelOut{label}, displayOut{display};
    showEffectLabel(labelOut, type, index);
    if (labelOut.view().empty()) return;  // hidden
    showEffectValue(displayOut, type, index, view);
    std::snprintf(line, sizeof line, "     %2d  %-13s %-7.4g ", index, label,
                  static_cast<double>(view.values[static_cast<std::size_t>(index)]));
    list.append(utf8FromWindows1252(line))
        .append(utf8FromWindows1252(displayOut.view()))
        .push_back('\n');
}

}  // namespace

std::string effectList() {
    std::string list;
    for (const EffectType* type : effectTypes()) {
        char number[16];
        std::snprintf(number, sizeof number, "%3d  ", type->number);
        list.append(number).append(utf8FromWindows1252(type->name));
        if (!type->shown.empty() && type->shown != type->name)
            list.append(", shown as \"").append(utf8FromWindows1252(type->shown)).append("\"");
        list.push_back('\n');
        EffectView view;
        view.values = defaultChoice(*type).values;
        for (int index = 0; index < effectParameters; ++index)
            appendParameter(list, *type, index, view);
    }
    return list;
}

}  // namespace stratovane::render
