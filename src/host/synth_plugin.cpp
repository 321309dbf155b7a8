#include "host/synth_plugin.h"

namespace stratovane {

SynthPlugin::SynthPlugin(HostCallback host)
    : Synth{host}, editor_{std::make_unique<Editor>(editorAccess(), instrument())} {
    record_.flags |= hasEditor;
    observeParameters(*this);
    finishConstruction();
}

void SynthPlugin::hostParameterSet(int index) { editor_->parameterChanged(index); }

void SynthPlugin::setProgram(std::int32_t program) { program_ = program; }

std::intptr_t SynthPlugin::editorRequest(Opcode opcode, std::int32_t index, std::intptr_t value,
                                         void* pointer, float number) {
    const auto key = static_cast<std::int32_t>(value);
    switch (opcode) {
        case Opcode::editorRectangle:
            if (pointer == nullptr) return 0;
            *static_cast<const Editor::Rectangle**>(pointer) = editor_->rectangle();
            return 1;
        case Opcode::editorOpen:
            return editor_->open(pointer) ? 1 : 0;
        case Opcode::editorClose:
            editor_->close();
            return 0;
        case Opcode::editorIdle:
            editor_->idle();
            return 0;
        case Opcode::editorKeyDown:
            return editor_->keyDown(index, key, number) ? 1 : 0;
        case Opcode::editorKeyUp:
            return editor_->keyUp(index, key, number) ? 1 : 0;
        case Opcode::editorKnobMode:
            editor_->setKnobMode(key);
            return 1;
        default:
            return 0;
    }
}

std::intptr_t SynthPlugin::vendorSpecific(std::int32_t index, std::intptr_t value, void* pointer,
                                          float number) {
    if (index == fourCharacters("tdCA") && value == fourCharacters("Whee"))
        return editor_->wheel(number) ? 1 : 0;
    return Synth::vendorSpecific(index, value, pointer, number);
}

}  // namespace stratovane
