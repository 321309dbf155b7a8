#include "editor/effect_commands.h"

#include "patch/editing/element_file.h"
#include "patch/effect_preset.h"
#include "settings/settings.h"

namespace stratovane {

bool EffectCommands::save(int part, int element, const std::string& path) {
    const Patch* patch = access_.patch(part);
    return patch != nullptr && saveElement(*patch, element, path);
}

bool EffectCommands::load(int part, int element, std::string_view name, Name meant) {
    Patch* patch = access_.patch(part);
    if (patch == nullptr || !isEditable(*patch, element)) return false;
    std::string path;
    if (meant == Name::inContent)
        path = Settings::asContentLocation(access_.settings.contentLocation) + "Effects/";
    path += name;
    const bool loaded = loadEffectFile(*patch, element, path);
    access_.tellChange(part, element);
    return loaded;
}

bool EffectCommands::loadPreset(int part, int element, int presetNumber) {
    Patch* patch = access_.patch(part);
    if (patch == nullptr || !isEditable(*patch, element)) return false;
    loadEffectPreset(*patch, element, presetNumber);
    access_.tellChange(part, element);
    return true;
}

}  // namespace stratovane
