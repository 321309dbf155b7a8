// The list of everything in the library, as text.
#pragma once

#include <span>
#include <string>

#include "content/bank_list.h"

namespace stratovane {

/// UI thread.
std::string contentListing(std::span<const BankList, contentKinds> kinds);

}  // namespace stratovane
