// The options page: preferences that outlive the song.
#pragma once

#include "editor/editor_access.h"
#include "settings/settings.h"

namespace stratovane {

class Instrument;

/// Each change acts at once and is stored for all instances to come; values outside their range go
/// to the nearer end. Threads: UI thread.
class SettingsCommands {
  public:
    SettingsCommands(const EditorAccess& access, Instrument& instrument)
        : access_{access}, instrument_{instrument} {}

    void setVelocitySensitivity(float amount);  // 0..1, 0.5 changes nothing
    void setTouchSensitivity(float amount);
    void setMidiPatches(bool on);
    void setMidiCombis(CombiUse use);
    void setInspector(int bits);  // 1 shows banks 77..79, 2 banks 80..89
    void setOneBasedNumbers(bool on);
    void setCombiNextController(int controller);  // -1 for none
    void setCombiPreviousController(int controller);
    void setMeterMode(int mode);        // 0..9
    void setMemoryUse(float use);       // 0 ECO, 0.5 Default, 1 XXL
    void setMasterVolume(float value);  // as the host parameter
    void setLift(float amount);
    void setCombiPreload(int mode);  // 0 off, 1 next, 2 full
    /// As OutputLayout::edit; acts when the plug-in is created the next time.
    void setOutput(int pair, char letter);

  private:
    void changed();

    EditorAccess access_;
    Instrument& instrument_;
};

}  // namespace stratovane
