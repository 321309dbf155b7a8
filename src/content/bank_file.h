// The file of a bank: a header, a data block of tables and names, and the items' data behind it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "content/bytes.h"
#include "content/content_data.h"

namespace stratovane {

/// A range of the whole file. Size 0: nothing there.
struct FileRange {
    std::uint32_t offset = 0, size = 0;
};

struct BankFile {
    struct Item {
        std::string name, secondName;
        FileRange normal, eco;
    };
    std::int8_t code = 0;  // what the loader answers while it works on the bank
    std::string secondName;
    std::vector<Item> items;
    std::vector<FileRange> samples;  // entry 0 is never used
    int sharedSlot = -1;             // 0..15 when the file carries a shared table
    Bytes sharedTable;               // from its first byte to the end of the data block
};

/// Reads header and tables; the ranges are not compared with the file's size, which is done when
/// they are loaded. A file that is no bank or whose tables leave the data block gives an empty one
/// and a fault. UI thread.
BankFile readBankFile(const std::string& path, std::optional<ContentFault>& fault);

}  // namespace stratovane
