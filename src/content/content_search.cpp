#include "content/content_search.h"

#include <algorithm>
#include <string>

#include "content/content_bank.h"

namespace stratovane {

namespace {

constexpr std::size_t enough = 128;  // hits after which no further bank is searched

/// Letters in lower case; other characters change as well, on both sides of a comparison alike.
std::string folded(std::string_view text) {
    std::string result{text};
    for (char& c : result) c = static_cast<char>(c | 0x20);
    return result;
}

std::vector<std::string_view> wordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    auto isWord = [](char c) { return c >= 33 && static_cast<unsigned char>(c) <= 127; };
    for (auto at = text.begin(); at != text.end();) {
        at = std::find_if(at, text.end(), isWord);
        const auto end = std::find_if_not(at, text.end(), isWord);
        if (at != end) words.emplace_back(&*at, static_cast<std::size_t>(end - at));
        at = end;
    }
    return words;
}

bool holdsAll(std::string_view name, const std::vector<std::string_view>& words) {
    const std::string text = folded(name);
    return std::all_of(words.begin(), words.end(),
                       [&](std::string_view word) { return text.find(word) != std::string::npos; });
}

bool isRegistered(std::uint32_t sharedTables, int slot) { return (sharedTables >> slot & 1) != 0; }

bool isSearched(int bank, std::uint32_t sharedTables) {
    switch (bank) {
        case 80:
        case 81:
            return isRegistered(sharedTables, 1);
        case 82:
            return isRegistered(sharedTables, 2);
        case 83:
            return isRegistered(sharedTables, 3);
        case 84:
            return false;
        default:
            return true;
    }
}

bool isHidden(std::string_view name, std::uint32_t sharedTables) {
    if (name.empty()) return false;
    const char mark = name.front();
    return mark == '_' || mark == '}' || (mark == ']' && !isRegistered(sharedTables, 1));
}

}  // namespace

std::vector<std::uint16_t> searchPatches(const BankList& banks, std::uint32_t sharedTables,
                                         std::string_view text) {
    const std::string wanted = folded(text);
    const auto words = wordsOf(wanted);
    std::vector<std::uint16_t> hits;
    if (!words.empty()) {
        for (int b = 1; b < banksPerKind && hits.size() < enough; ++b) {
            const ContentBank* bank = banks[static_cast<std::size_t>(b)];
            if (bank == nullptr || !isSearched(b, sharedTables)) continue;
            for (int i = 0; i < itemsPerBank; ++i) {
                const ContentItem* item = bank->item(i);
                if (item == nullptr || isHidden(item->name, sharedTables)) continue;
                if (holdsAll(item->name, words) || holdsAll(item->secondName, words))
                    hits.push_back(static_cast<std::uint16_t>(b << 8 | i));
            }
        }
    }
    if (hits.empty()) hits.push_back(0);
    return hits;
}

}  // namespace stratovane
