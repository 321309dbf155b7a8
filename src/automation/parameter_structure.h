// The host parameters as a tree, for hosts that show them in groups.
#pragma once

#include <string>

namespace stratovane {

/// XML text: `Param` elements with id (the host parameter's index), name and label, in named
/// `Group` elements. The build writes it beside the plug-in and into it. Any thread.
std::string parameterStructure();

}  // namespace stratovane
