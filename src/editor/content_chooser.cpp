#include "editor/content_chooser.h"

#include "editor/instrument.h"

namespace stratovane {

bool ContentChooser::asks() const {
    constexpr int most = 2;
    return !instrument_.contentFound() && asked_ < most;
}

bool ContentChooser::choose(std::string_view path) {
    ++asked_;
    if (instrument_.setContentLocation(path)) return true;
    constexpr std::string_view separators = "/\\";
    path = path.substr(0, path.find_last_not_of(" \t\r\n/\\") + 1);
    const auto cut = path.find_last_of(separators);
    return cut != path.npos && instrument_.setContentLocation(path.substr(0, cut + 1));
}

}  // namespace stratovane
