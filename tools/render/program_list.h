// The programs that the plug-in offers its host.
#pragma once

#include <string>

#include "plugin_host.h"

namespace stratovane::render {

/// A heading for each bank, a line for each program with the bank select LSB and program number
/// (from 0) that call it. The plug-in is started.
std::string programList(PluginHost& plugIn);

}  // namespace stratovane::render
