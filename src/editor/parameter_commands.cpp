#include "editor/parameter_commands.h"

#include "automation/host_parameters.h"
#include "editor/instrument.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"

namespace stratovane {

void ParameterCommands::set(int part, int element, int index, float value) {
    Engine& engine = instrument_.startedEngine();
    const bool isPart = EditorAccess::isPart(part);
    const int shown = hostIndexOf(isPart ? part : parts, element, index);
    const bool narrower = shown >= 0 && decodeHostIndex(shown).block == HostBlock::strip &&
                          decodeHostIndex(shown).row == strip::arpeggiatorRate;
    if (shown < 0 || narrower)
        (isPart ? engine.patch(part) : engine.master()).store(element, index, value);
    else
        instrument_.setByUser(shown, value);
    if (narrower) access_.parameters.touch(part, element, index);
    access_.multi.dirty = true;
}

}  // namespace stratovane
