#include "editor/settings_commands.h"

#include <algorithm>

#include "automation/host_parameters.h"
#include "editor/instrument.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/parameter_ids.h"
#include "persistence/setup_commands.h"

namespace stratovane {

void SettingsCommands::changed() {
    if (!access_.settings.write(access_.store))
        access_.trace.write(TraceLevel::warning, "settings could not be stored");
    access_.multi.refresh.bump();
}

void SettingsCommands::setVelocitySensitivity(float amount) {
    Settings& settings = access_.settings;
    settings.velocitySensitivity = toUnitRange(amount);
    makeVelocityCurve(settings.velocitySensitivity, settings.velocityCurve);
    changed();
}

void SettingsCommands::setTouchSensitivity(float amount) {
    Settings& settings = access_.settings;
    settings.touchSensitivity = toUnitRange(amount);
    makeTouchCurve(settings.touchSensitivity, settings.touchCurve);
    changed();
}

void SettingsCommands::setMidiPatches(bool on) {
    access_.settings.midiPatches = on ? 4 : 0;
    changed();
}

void SettingsCommands::setMidiCombis(CombiUse use) {
    access_.settings.midiCombis = use;
    instrument_.refreshProgramList();
    changed();
}

void SettingsCommands::setInspector(int bits) {
    access_.settings.inspector = bits & 3;
    instrument_.refreshProgramList();
    changed();
}

void SettingsCommands::setOneBasedNumbers(bool on) {
    access_.settings.oneBasedNumbers = on;
    changed();
}

void SettingsCommands::setCombiNextController(int controller) {
    access_.settings.combiNextController = std::clamp(controller, -1, 127);
    changed();
}

void SettingsCommands::setCombiPreviousController(int controller) {
    access_.settings.combiPreviousController = std::clamp(controller, -1, 127);
    changed();
}

void SettingsCommands::setMeterMode(int mode) {
    access_.settings.meterMode = std::clamp(mode, 0, 9);
    changed();
}

void SettingsCommands::setMemoryUse(float use) {
    access_.settings.memoryUse = toUnitRange(use);
    Engine& engine = instrument_.startedEngine();
    for (int part = 0; part < parts; ++part)
        engine.patch(part).recall(0, global::eco, access_.settings.memoryUse);
    changed();
}

void SettingsCommands::setMasterVolume(float value) {
    access_.settings.masterVolume = toUnitRange(value);
    instrument_.setByUser(0, access_.settings.masterVolume);
    changed();
}

void SettingsCommands::setLift(float amount) {
    access_.settings.lift = toUnitRange(amount);
    instrument_.startedEngine().setLift(access_.settings.lift);
    access_.parameters.refreshMasterGain();
    changed();
}

void SettingsCommands::setCombiPreload(int mode) {
    instrument_.setupCommands().combis.setPreloadMode(std::clamp(mode, 0, 2));
    changed();
}

void SettingsCommands::setOutput(int pair, char letter) {
    access_.settings.outputs.edit(pair, letter);
    if (!access_.settings.writeOutputs(access_.store))
        access_.trace.write(TraceLevel::warning, "settings could not be stored");
}

}  // namespace stratovane
