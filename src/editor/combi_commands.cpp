#include "editor/combi_commands.h"

#include "editor/instrument.h"
#include "persistence/setup_commands.h"

namespace stratovane {

CombiChain& CombiCommands::chain() const { return instrument_.setupCommands().combis; }

void CombiCommands::set(int slot, std::int32_t location) { chain().set(slot, location); }
void CombiCommands::clear(int slot) { chain().clear(slot); }
void CombiCommands::copy(int from, int to) { chain().copy(from, to); }
void CombiCommands::move(int from, int to) { chain().move(from, to); }
std::string CombiCommands::label(int slot) const { return chain().label(slot); }
void CombiCommands::select(int slot) { chain().select(instrument_.startedEngine(), slot); }
std::string CombiCommands::defaultPath() const { return chain().defaultPath(); }
bool CombiCommands::write(const std::string& path) const { return chain().write(path); }
bool CombiCommands::read(const std::string& path) { return chain().read(path); }

}  // namespace stratovane
