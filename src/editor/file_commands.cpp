#include "editor/file_commands.h"

#include "editor/editor_access.h"
#include "editor/instrument.h"
#include "persistence/setup_commands.h"

namespace stratovane {

bool FileCommands::read(int part, const std::string& path) {
    return EditorAccess::isPart(part) &&
           instrument_.setupCommands().files.read(instrument_.startedEngine(), part, path);
}

bool FileCommands::writePreset(int part, const std::string& path) {
    return EditorAccess::isPart(part) &&
           instrument_.setupCommands().files.writePreset(instrument_.startedEngine(), part, path);
}

bool FileCommands::writeBank(const std::string& path) {
    return instrument_.setupCommands().files.writeBank(instrument_.startedEngine(), path);
}

std::int32_t FileCommands::saveToLibrary(int part, int bank) {
    return instrument_.setupCommands().saver.save(instrument_.startedEngine(), part, bank);
}

}  // namespace stratovane
