#include "editor/part_commands.h"

#include "editor/editor_access.h"
#include "editor/instrument.h"
#include "persistence/library_loader.h"
#include "persistence/setup_commands.h"

namespace stratovane {

std::int32_t PartCommands::load(int part, std::int32_t location) {
    if (!EditorAccess::isPart(part)) return 0;
    return instrument_.programs().load(instrument_.startedEngine(), part, location,
                                       LibraryLoader::AskedBy::editor);
}

bool PartCommands::copy(int from, int to) {
    return instrument_.setupCommands().parts.copy(instrument_.startedEngine(), from, to,
                                                  PartCopier::Source::keep);
}

bool PartCommands::move(int from, int to) {
    return instrument_.setupCommands().parts.copy(instrument_.startedEngine(), from, to,
                                                  PartCopier::Source::clear);
}

void PartCommands::resetGeneralMidi() { instrument_.resetGeneralMidi(); }

}  // namespace stratovane
