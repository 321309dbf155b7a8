// Copying, pasting, inserting, deleting and initialising elements.
#pragma once

#include "content/program_files.h"
#include "editor/editor_access.h"
#include "patch/editing/clipboard.h"

namespace stratovane {

/// Parts 0..15 mean their current patches, any other number the master channel, of which only the
/// send slots can be edited. Every command leaves a trace; numbers out of range do nothing, and the
/// answer is whether something was done.
///
/// What moves elements makes a new instance of the part and hands it over, so that a sounding voice
/// keeps its element until it ends. Threads: UI thread.
class ElementCommands {
  public:
    explicit ElementCommands(const EditorAccess& access) : access_{access} {}

    enum class Paste { over, insert };

    /// Element 0 is the patch's own values.
    bool copy(int part, int element);
    bool paste(int part, int element, Paste how);
    bool remove(int part, int element);
    bool init(int part, int element, int type);

    const Clipboard& clipboard() const { return clipboard_; }
    /// What init takes for all that is not the type's own.
    ElementValues& common() { return common_; }

  private:
    bool insert(int part, int element);

    EditorAccess access_;
    Clipboard clipboard_;
    ElementValues common_ = freshElementValues();
};

}  // namespace stratovane
