// The least an editor needs to be driven by a host; its views are not here.
#pragma once

#include <cstdint>
#include <memory>

#include "base/shared.h"

namespace stratovane {

struct EditorAccess;
class Instrument;
class CombiCommands;
class ContentChooser;
class EffectCommands;
class ElementCommands;
class FileCommands;
class KeyboardCommands;
class LearnCommands;
class ParameterCommands;
class PartCommands;
class SceneCommands;
class SettingsCommands;

/// What views would call is its commands, kept by concept and handed out here.
/// Threads: the UI thread's; parameterChanged comes from any.
class Editor {
  public:
    /// Corners as the host's rectangle request wants them.
    struct Rectangle {
        std::int16_t top = 0, left = 0, bottom = 0, right = 0;
    };

    Editor();
    Editor(const EditorAccess& access, Instrument& instrument);
    ~Editor();
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    struct Commands;
    /// Null, each of them, for an editor without an instrument.
    ElementCommands* elements();
    EffectCommands* effects();
    SceneCommands* scenes();
    ParameterCommands* parameters();
    FileCommands* files();
    PartCommands* parts();
    CombiCommands* combis();
    LearnCommands* learning();
    KeyboardCommands* keyboard();
    SettingsCommands* settings();
    ContentChooser* content();

    const Rectangle* rectangle() const { return &rectangle_; }
    bool open(void* parentWindow);
    void close() { isOpen_ = false; }
    bool isOpen() const { return isOpen_; }
    void idle() {}
    bool keyDown(std::int32_t character, std::int32_t key, float modifiers);
    bool keyUp(std::int32_t character, std::int32_t key, float modifiers);
    void setKnobMode(std::int32_t mode) { knobMode_ = mode; }
    bool wheel(float distance);
    /// A control shows this host parameter: it moves when the editor draws next.
    void parameterChanged(std::int32_t index) { lastParameter_ = index; }
    std::int32_t lastParameter() const { return lastParameter_; }

  private:
    std::unique_ptr<Commands> commands_;
    Rectangle rectangle_;
    bool isOpen_ = false;
    std::int32_t knobMode_ = 0;
    Shared<std::int32_t> lastParameter_{-1};
};

}  // namespace stratovane
