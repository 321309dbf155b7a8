#include "patch/patch_texts.h"

#include <algorithm>

namespace stratovane {

std::span<const char> PatchTexts::field(int selector) const {
    if (selector >= 1 && selector <= 68) return elements_[static_cast<std::size_t>(selector - 1)];
    if (selector >= -6 && selector <= -1) return knobs_[static_cast<std::size_t>(selector + 6)];
    switch (selector) {
        case 0:
            return name_;
        case -7:
            return field2_;
        case -8:
            return field3_;
        case -9:
            return codes_;
        case -10:
            return field1_;
        default:
            return {};
    }
}

std::string_view PatchTexts::get(int selector) const {
    const std::span<const char> text = field(selector);
    return {text.data(),
            static_cast<std::size_t>(std::find(text.begin(), text.end(), '\0') - text.begin())};
}

void PatchTexts::set(int selector, std::string_view text) {
    const std::span<const char> found = field(selector);
    if (found.empty()) return;
    const std::span<char> into{const_cast<char*>(found.data()), found.size()};
    text = text.substr(0, std::min(text.find('\0'), into.size() - 1));
    // The text may be one of our own fields.
    std::copy(text.begin(), text.end(), into.begin());
    std::fill(into.begin() + static_cast<std::ptrdiff_t>(text.size()), into.end(), '\0');
}

}  // namespace stratovane
