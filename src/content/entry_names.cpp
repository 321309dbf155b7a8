#include "content/entry_names.h"

#include <algorithm>

namespace stratovane {

namespace {

constexpr std::size_t longestBankEntry = 31, longestItemEntry = 39;
constexpr std::size_t numberLength = 4;  // three digits and a blank
constexpr std::size_t extensionLength = 4;

std::optional<int> numberOf(std::string_view entry) {
    if (entry.size() < numberLength || entry[3] != ' ') return std::nullopt;
    int number = 0;
    for (const char c : entry.substr(0, 3)) {
        if (c < '0' || c > '9') return std::nullopt;
        number = 10 * number + (c - '0');
    }
    if (!isLocationNumber(number)) return std::nullopt;
    return number;
}

bool matches(std::string_view text, std::string_view lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
}

struct Extension {
    ContentKind kind;
    std::string_view text;
    ItemFile type;
};
constexpr Extension extensions[] = {
    {ContentKind::patches, ".fxp", ItemFile::patch},
    {ContentKind::patches, ".fxb", ItemFile::patchBank},
    {ContentKind::tunings, ".tun", ItemFile::tuning},
    {ContentKind::phrases, ".phr", ItemFile::phrase},
};

}  // namespace

std::optional<BankEntry> parseBankEntry(std::string_view entry, bool isFolder) {
    const auto number = numberOf(entry);
    if (!number || entry.size() > longestBankEntry) return std::nullopt;
    std::string_view name = entry.substr(numberLength);
    if (!isFolder) name = name.substr(0, name.rfind('.'));
    return BankEntry{*number, name};
}

std::optional<ItemEntry> parseItemEntry(std::string_view file, ContentKind kind) {
    const auto number = numberOf(file);
    if (!number || file.size() > longestItemEntry || file.size() <= numberLength + extensionLength)
        return std::nullopt;
    const std::string_view name =
        file.substr(numberLength, file.size() - numberLength - extensionLength);
    for (const Extension& extension : extensions)
        if (extension.kind == kind &&
            matches(file.substr(file.size() - extensionLength), extension.text))
            return ItemEntry{*number, name, extension.type};
    return std::nullopt;
}

}  // namespace stratovane
