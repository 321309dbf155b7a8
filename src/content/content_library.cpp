#include "content/content_library.h"

namespace stratovane {

bool ContentLibrary::open(std::string_view) { return false; }

std::string_view ContentLibrary::bankName(int) const { return {}; }

std::string_view ContentLibrary::programName(int, int) const { return {}; }

}  // namespace stratovane
