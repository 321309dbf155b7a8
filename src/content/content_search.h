// Finding patches by words of their names.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "content/bank_list.h"

namespace stratovane {

/// Which patches (bank × 256 + item) hold every word of the text in one of their names, in either
/// case; the search ends after the bank that brings the 128th. One 0 when there is none.
/// `sharedTables` has a bit for every shared table that is there. UI thread.
std::vector<std::uint16_t> searchPatches(const BankList& banks, std::uint32_t sharedTables,
                                         std::string_view text);

}  // namespace stratovane
