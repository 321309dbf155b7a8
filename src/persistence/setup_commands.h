// Everything the user can do with the setup as a whole, in one place for the editor.
#pragma once

#include "persistence/combi_chain.h"
#include "persistence/library_saver.h"
#include "persistence/part_copier.h"
#include "persistence/program_file_commands.h"

namespace stratovane {

/// UI thread.
struct SetupCommands {
    SetupCommands(const SetupAccess& setup, ChunkWriter& writer, ChunkReader& reader,
                  PatchLoader& patches, LibraryLoader& programs)
        : files{setup, writer, reader},
          combis{setup, programs},
          parts{setup, patches},
          saver{setup, files} {}
    SetupCommands(const SetupCommands&) = delete;
    SetupCommands& operator=(const SetupCommands&) = delete;

    ProgramFileCommands files;
    CombiChain combis;
    PartCopier parts;
    LibrarySaver saver;  // uses files
};

}  // namespace stratovane
