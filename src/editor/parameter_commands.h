// Turning the controls of the editor.
#pragma once

#include "editor/editor_access.h"

namespace stratovane {

class Instrument;

/// Parts 0..15 mean their current patches, any other number the master channel; parameters are
/// named as Patch::store does. Threads: UI thread.
class ParameterCommands {
  public:
    ParameterCommands(const EditorAccess& access, Instrument& instrument)
        : access_{access}, instrument_{instrument} {}

    /// The host is told of what it shows.
    void set(int part, int element, int index, float value);

  private:
    EditorAccess access_;
    Instrument& instrument_;
};

}  // namespace stratovane
