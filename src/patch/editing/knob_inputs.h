// Where an element's knob inputs stand after its values were replaced.
#pragma once

namespace stratovane {

class Patch;

/// Each of the two inputs takes the position of the knob that its slot names, if it names one. UI
/// thread.
void followKnobs(Patch& patch, int element);

}  // namespace stratovane
