#include "patch/element_rows.h"

namespace stratovane {

namespace {
constexpr Choices<7> typeNames{
    15.9f, {"Effect", "Drawbar", "Sample", "Wavetable", "FM", "Analog", "Model"}, " "};

bool isBlock(int index) {
    return index >= elementIndex::firstBlock && index <= elementIndex::lastBlock;
}
}  // namespace

std::string_view elementTypeName(ElementType type) {
    const auto at = static_cast<std::size_t>(type);
    return at < typeNames.names.size() ? typeNames.names[at] : typeNames.beyond;
}

std::span<const ElementRow> typeBlock(ElementType type) {
    switch (type) {
        case ElementType::effect:
            return effectBlock();
        case ElementType::drawbar:
            return drawbarBlock();
        case ElementType::sample:
            return sampleBlock();
        case ElementType::wavetable:
            return wavetableBlock();
        case ElementType::fm:
            return fmBlock();
        case ElementType::analog:
            return analogBlock();
    }
    return {};
}

const ElementRow* elementRow(ElementType type, int index) {
    return findRow(isBlock(index) ? typeBlock(type) : commonRows(), index);
}

float constructionValue(int index) {
    if (!isBlock(index)) return initialValue(ElementType::effect, index);
    switch (index) {
        case 19:  // no effect, no content
        case 27:
        case 29:
        case 34:
            return 1.0f;
        case 25:
        case 26:
        case 33:
            return 0.5f;
        default:
            return 0.0f;
    }
}

float initialValue(ElementType type, int index) {
    const ElementRow* row = elementRow(type, index);
    return row ? row->initial : 0.0f;
}

bool effectiveEco(float patchEco, bool receives, float own) {
    constexpr int eco = 0, xxl = 2;
    const int patch = receives ? choice(patchEco, 2.9f) : 1;
    return patch == eco || (patch != xxl && own <= 0.5f);
}

}  // namespace stratovane
