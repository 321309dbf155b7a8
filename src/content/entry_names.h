// How the names of folders and files say which bank or item they are.
#pragma once

#include <optional>
#include <string_view>

#include "content/content_kind.h"

namespace stratovane {

struct BankEntry {
    int number = 0;         // 0..127
    std::string_view name;  // part of the entry's name, at most 32 characters
};
/// "005 My Sounds": three digits below 128, a blank, the name; shorter than 32 characters in all.
/// Only files lose an extension. Any thread.
std::optional<BankEntry> parseBankEntry(std::string_view entry, bool isFolder);

enum class ItemFile { patch, patchBank, tuning, phrase };

struct ItemEntry {
    int number = 0;  // 0..127
    std::string_view name;
    ItemFile type = ItemFile::patch;
};
/// "012 Soft Lead.fxp": three digits below 128, a blank, a name, and an extension that the kind
/// has, in either case; shorter than 40 characters in all. Any thread.
std::optional<ItemEntry> parseItemEntry(std::string_view file, ContentKind kind);

}  // namespace stratovane
