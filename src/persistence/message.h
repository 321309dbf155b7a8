// What the user is told and asked.
#pragma once

#include <string>
#include <string_view>

#include "base/text_out.h"
#include "platform/platform.h"

namespace stratovane {

/// A box with a text that was printed; texts of any length (paths) are added by themselves. UI
/// thread.
inline void tell(const std::string& text) { messageBox(text.c_str(), /*question=*/false); }
inline bool ask(const std::string& text) {
    return messageBox(text.c_str(), /*question=*/true) != 0;
}

template <class... A>
std::string printed(std::string_view format, A... arguments) {
    char buffer[256];
    TextOut out{buffer};
    out.print(format, arguments...);
    return std::string{out.view()};
}

}  // namespace stratovane
