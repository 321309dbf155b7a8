// Host parameters by index and name.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "options.h"
#include "plugin_host.h"

namespace stratovane::render {

/// Sets them in order; none when one of them does not exist or its name fits several.
std::optional<Failure> setParameters(PluginHost& plugIn,
                                     const std::vector<ParameterChoice>& choices);

/// A line each: index, name, display.
std::string parameterList(PluginHost& plugIn);

}  // namespace stratovane::render
