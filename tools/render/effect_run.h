// A sound file through effects alone, without the plug-in.
#pragma once

#include <variant>

#include "failure.h"
#include "options.h"
#include "summary.h"

namespace stratovane::render {

/// The effects of the options in series, stereo in and out. No file is left behind by a failure.
std::variant<Summary, Failure> runEffects(const Options& options);

}  // namespace stratovane::render
