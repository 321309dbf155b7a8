// The banks of one kind, looked at together.
#pragma once

#include <array>

#include "content/content_kind.h"

namespace stratovane {

class ContentBank;

/// By bank number; null where there is none.
using BankList = std::array<const ContentBank*, banksPerKind>;

}  // namespace stratovane
