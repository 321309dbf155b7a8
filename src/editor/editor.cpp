#include "editor/editor.h"

#include "editor/combi_commands.h"
#include "editor/content_chooser.h"
#include "editor/effect_commands.h"
#include "editor/element_commands.h"
#include "editor/file_commands.h"
#include "editor/keyboard_commands.h"
#include "editor/learn_commands.h"
#include "editor/parameter_commands.h"
#include "editor/part_commands.h"
#include "editor/scene_commands.h"
#include "editor/settings_commands.h"

namespace stratovane {

struct Editor::Commands {
    Commands(const EditorAccess& access, Instrument& instrument)
        : elements{access},
          effects{access},
          scenes{access},
          parameters{access, instrument},
          files{instrument},
          parts{instrument},
          combis{instrument},
          learning{access, instrument},
          keyboard{access.commands},
          settings{access, instrument},
          content{instrument} {}

    ElementCommands elements;
    EffectCommands effects;
    SceneCommands scenes;
    ParameterCommands parameters;
    FileCommands files;
    PartCommands parts;
    CombiCommands combis;
    LearnCommands learning;
    KeyboardCommands keyboard;
    SettingsCommands settings;
    ContentChooser content;
};

Editor::Editor() = default;

Editor::Editor(const EditorAccess& access, Instrument& instrument)
    : commands_{std::make_unique<Commands>(access, instrument)} {}

Editor::~Editor() = default;

ElementCommands* Editor::elements() { return commands_ ? &commands_->elements : nullptr; }
EffectCommands* Editor::effects() { return commands_ ? &commands_->effects : nullptr; }
SceneCommands* Editor::scenes() { return commands_ ? &commands_->scenes : nullptr; }
ParameterCommands* Editor::parameters() { return commands_ ? &commands_->parameters : nullptr; }
FileCommands* Editor::files() { return commands_ ? &commands_->files : nullptr; }
PartCommands* Editor::parts() { return commands_ ? &commands_->parts : nullptr; }
CombiCommands* Editor::combis() { return commands_ ? &commands_->combis : nullptr; }
LearnCommands* Editor::learning() { return commands_ ? &commands_->learning : nullptr; }
KeyboardCommands* Editor::keyboard() { return commands_ ? &commands_->keyboard : nullptr; }
SettingsCommands* Editor::settings() { return commands_ ? &commands_->settings : nullptr; }
ContentChooser* Editor::content() { return commands_ ? &commands_->content : nullptr; }

// Without views there is nothing to open, and no key or wheel that a control would take.

bool Editor::open(void*) { return false; }

bool Editor::keyDown(std::int32_t, std::int32_t, float) { return false; }

bool Editor::keyUp(std::int32_t, std::int32_t, float) { return false; }

bool Editor::wheel(float) { return false; }

}  // namespace stratovane
