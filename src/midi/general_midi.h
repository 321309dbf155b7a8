// General MIDI: where its sounds are, and how the whole setup starts afresh.
#pragma once

#include <cstdint>

#include "base/units.h"
#include "engine/request_queue.h"

namespace stratovane {

class Engine;
class HostParameters;
class LibraryLoader;
class MessageSettings;
class PatchLoader;
struct MultiSetup;

namespace generalMidi {
inline constexpr int sounds = 78, kits = 79;  // banks of the library
inline constexpr int drumPart = 9;
inline constexpr std::int32_t combi = 127 << 8 | 127;  // what bank-select MSB 64 and 126 stand for
/// What a part plays after a reset.
constexpr std::int32_t startLocation(int part) { return (part == drumPart ? kits : sounds) << 8; }
}  // namespace generalMidi

/// Carries out what the messages ask for. UI thread, but where it says otherwise.
class GeneralMidi {
  public:
    GeneralMidi(MultiSetup& multi, HostParameters& parameters, LibraryLoader& library,
                PatchLoader& patches, MessageSettings& settings)
        : multi_{multi},
          parameters_{parameters},
          library_{library},
          patches_{patches},
          settings_{settings} {}

    enum class AskedBy { message, user };

    /// Says which programs a reset to General MIDI is about to load: program changes and bank
    /// selects that follow build on them. Any thread.
    static void announceReset(MultiSetup& multi);

    /// All parts and the four master effects as the current mode starts: with General MIDI on each
    /// part plays the mode's first sound, part 10 a drum kit, and there is a reverb and a chorus;
    /// with it off everything is empty. The master tune goes back to none.
    void reset(Engine& engine, AskedBy by);
    /// Does what a request says.
    void carryOut(Engine& engine, const Request& request);

  private:
    void loadSounds(Engine& engine, AskedBy by);
    void clearAll(Engine& engine);
    void loadCombi(Engine& engine, std::int32_t location);
    void loadMasterEffect(Engine& engine, int slot, int preset, float level);
    void emptyMasterEffect(Engine& engine, int slot);
    void setPlainMix(int part);

    MultiSetup& multi_;
    HostParameters& parameters_;
    LibraryLoader& library_;
    PatchLoader& patches_;
    MessageSettings& settings_;
};

}  // namespace stratovane
