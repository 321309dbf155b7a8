// Taking a snapshot of a patch as one of its scenes.
#pragma once

#include <cstdint>

namespace stratovane {

class Patch;

/// Stores knobs, arpeggiator settings and the patch's own phrase as scene 1..63; `flags` say what
/// it will recall (Scene). A scene that is the current one is selected again. False, and nothing
/// changed, for other slots. UI thread.
bool storeScene(Patch& patch, int slot, std::uint32_t flags);

}  // namespace stratovane
