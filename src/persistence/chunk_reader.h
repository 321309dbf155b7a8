// Brings back what a chunk holds: one patch, or the whole setup.
#pragma once

#include <cstdint>

#include "content/bytes.h"
#include "persistence/setup_access.h"

namespace stratovane {

class Engine;
class PatchLoader;
struct GlobalBlock;

/// UI thread; the audio thread may render meanwhile. The bytes are never written to.
class ChunkReader {
  public:
    ChunkReader(const SetupAccess& setup, PatchLoader& loader) : setup_{setup}, loader_{loader} {}

    enum class Wanted { preset, bank };
    struct Source {
        Wanted wanted = Wanted::bank;
        int part = 0;             // whom a patch is for, whatever was wanted
        bool forMessage = false;  // a MIDI message asked for it
    };

    /// A chunk that is refused as a whole, which the user is told, changes nothing and answers
    /// false. In a bank, parts whose records are damaged become empty and the rest is loaded. Also
    /// drops the wish for the default patch.
    bool read(Engine& engine, ByteView chunk, const Source& source);

  private:
    bool readPreset(Engine& engine, ByteView chunk, int part);
    bool readBank(Engine& engine, ByteView chunk, bool forMessage);
    void readPart(Engine& engine, ByteView chunk, int part, bool forMessage);
    void readMasterEffects(Engine& engine, ByteView chunk);
    void apply(Engine& engine, const GlobalBlock& block);
    void applyCombis(const GlobalBlock& block);

    SetupAccess setup_;
    PatchLoader& loader_;
};

}  // namespace stratovane
