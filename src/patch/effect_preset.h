// Ready-made effects, put into an "Effect" element or a send slot.
#pragma once

namespace stratovane {

class Patch;

/// Whether a number names an element of the patch that there is, or one of its send slots. Any
/// thread.
bool isEditable(const Patch& patch, int element);

/// The element becomes the effect of a preset number (see effectPreset), with its name, and sounds.
/// Output, level and pan stay as they are. An empty preset leaves the element without an effect and
/// as muted as it was. Other elements than 1..count and 65..68 change nothing. UI thread.
void loadEffectPreset(Patch& patch, int element, int presetNumber);

/// The element loses effect and name and is muted. UI thread.
void emptyEffect(Patch& patch, int element);

}  // namespace stratovane
