// Names and displays of modulation rows and of what the macro knobs drive.
#pragma once

#include <string_view>

#include "patch/parameter_row.h"

namespace stratovane {

/// The patch's macro destination -1..14 as shown; -1 is "(none)".
std::string_view macroDestinationName(int destination);

// Fields of a modulation row, in the order of their indices.
void showRowName(TextOut& out, const ParameterView& view);
void showRowSource(TextOut& out, float v, const ParameterView& view);
void showRowModifier(TextOut& out, float v, const ParameterView& view);
void showRowParameter(TextOut& out, float v, const ParameterView& view);
void showRowDestination(TextOut& out, float v, const ParameterView& view);
void showRowDepth(TextOut& out, float v, const ParameterView& view);

}  // namespace stratovane
