// The least an editor needs to be driven by a host; its views are not here.
#pragma once

#include <cstdint>
#include <memory>

#include "base/shared.h"

namespace stratovane {

class EffectCommands;
class ElementCommands;
class SceneCommands;
struct EditorAccess;

/// What views would call are its commands, kept by concept; without access to an instrument there
/// are none.
/// Threads: the UI thread's; parameterChanged comes from any.
class Editor {
  public:
    /// Corners as the host's rectangle request wants them.
    struct Rectangle {
        std::int16_t top = 0, left = 0, bottom = 0, right = 0;
    };

    Editor();
    explicit Editor(const EditorAccess& access);
    ~Editor();
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    /// Null for an editor without access.
    ElementCommands* elements() { return elements_.get(); }
    EffectCommands* effects() { return effects_.get(); }
    SceneCommands* scenes() { return scenes_.get(); }

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
    std::unique_ptr<ElementCommands> elements_;
    std::unique_ptr<EffectCommands> effects_;
    std::unique_ptr<SceneCommands> scenes_;
    Rectangle rectangle_;
    bool isOpen_ = false;
    std::int32_t knobMode_ = 0;
    Shared<std::int32_t> lastParameter_{-1};
};

}  // namespace stratovane
