// The sound-producing plug-in object: answers the host and delegates.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "automation/host_parameters.h"
#include "base/engine_shared.h"
#include "base/render_gate.h"
#include "base/trace.h"
#include "content/content_library.h"
#include "editor/editor_access.h"
#include "editor/instrument.h"
#include "engine/command_ring.h"
#include "engine/content_presence.h"
#include "engine/multi_setup.h"
#include "engine/transport.h"
#include "host/midi_echo.h"
#include "host/program_list.h"
#include "midi/general_midi.h"
#include "midi/message_settings.h"
#include "midi/midi_input.h"
#include "midi/status_line.h"
#include "mrx/host_plugin_base.h"
#include "persistence/chunk_reader.h"
#include "persistence/chunk_writer.h"
#include "persistence/library_loader.h"
#include "persistence/patch_loader.h"
#include "persistence/setup_access.h"
#include "persistence/setup_commands.h"
#include "platform/settings_store.h"
#include "settings/settings.h"

namespace stratovane {

class Engine;

/// Threads: processEvents, process and processReplacing are the audio thread's; setParameter and
/// getParameter come from either; every other request is the UI thread's.
class Synth : public HostPluginBase, protected Instrument, private SetupListener {
  public:
    explicit Synth(HostCallback host);
    ~Synth() override;

    void setParameter(std::int32_t index, float value) override;
    float getParameter(std::int32_t index) override;
    void process(float** inputs, float** outputs, std::int32_t frames) override;
    void processReplacing(float** inputs, float** outputs, std::int32_t frames) override;

    /// Where the content library lives from now on; stored when a library is there. Answers
    /// whether.
    bool setContentLocation(std::string_view path) override;

  protected:
    void setProgramName(const char* name) override;
    void getProgramName(char* name) override;
    void getParameterDisplay(std::int32_t index, char* text) override;
    void getParameterName(std::int32_t index, char* text) override;
    std::int32_t getChunk(void** data, bool preset) override;
    std::int32_t setChunk(const void* data, std::int32_t size, bool preset) override;
    void resume() override;
    std::int32_t processEvents(const EventList* events) override;
    std::int32_t getProgramNameIndexed(std::int32_t category, std::int32_t index,
                                       char* name) override;
    bool copyProgram(std::int32_t destination) override;
    bool getOutputProperties(std::int32_t index, OutputProperties* properties) override;
    std::int32_t getPlugCategory() override;
    bool getEffectName(char* text) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    std::intptr_t vendorSpecific(std::int32_t index, std::intptr_t value, void* pointer,
                                 float number) override;
    std::int32_t canDo(const char* text) override;
    std::int32_t fxIdle() override;
    std::int32_t keysRequired() override;
    std::int32_t getMidiProgramName(std::int32_t channel, MidiProgramName* program) override;
    std::int32_t getCurrentMidiProgram(std::int32_t channel, MidiProgramName* program) override;
    std::int32_t getMidiProgramCategory(std::int32_t channel,
                                        MidiProgramCategory* category) override;
    bool hasMidiProgramsChanged(std::int32_t channel) override;
    void onUserInterfaceRequest() override;

    /// For the editor, which lives no longer than this object.
    EditorAccess editorAccess() {
        return {engine_, parameters_, multi_, settings_, store_, commands_, trace_};
    }
    Instrument& instrument() { return *this; }
    Engine& startedEngine() override;
    SetupCommands& setupCommands() override { return setupCommands_; }
    LibraryLoader& programs() override { return loader_; }
    bool contentFound() const override { return contentFound_; }
    void refreshProgramList() override { updateMidiLists(); }
    void setByUser(std::int32_t index, float value) override {
        setParameterAutomated(index, value);
    }
    /// The last step of construction, once the whole object is there.
    void finishConstruction();
    /// Who follows what is set. Construction.
    void observeParameters(HostParameterObserver& observer) { parameters_.observe(&observer); }
    void resetGeneralMidi() override;
    /// What the editor's status line says. Any thread.
    void showStatus(TextOut& out) const { status_.show(out); }

  private:
    enum class Output { replace, add };

    /// What the vendor-specific request "fxad" points at.
    struct EffectToAdd {
        std::int32_t type;
        float values[12];
    };

    void partsChanged() override;
    void libraryChanged() override;
    void identifyHost();
    /// Puts an effect behind the last element of a part; answers its number, 0 when it has no place
    /// or there is no such effect.
    std::int32_t addEffect(int part, const EffectToAdd& effect);
    void loadProgram(int part, std::int32_t location, bool isDefaultPatch);
    void lazyInit(const char* caller);
    std::string contentFolder() const;
    bool openLibrary(const std::string& folder);
    void updateMidiLists();
    void publishPresence();
    void render(float** outputs, std::int32_t frames, Output output);
    void drainCommands();
    void loadWaitingPrograms();
    void handleRequests();
    /// The reset's last steps, which concern what belongs to the whole instrument.
    void finishReset();
    void readSettingsAgain();
    bool busy() const;

    Trace trace_;
    SettingsStore store_;
    Settings settings_;
    OutputLayout outputs_;  // as the host knows it; a changed setting waits for the next instance
    EngineShared shared_;
    MultiSetup multi_;
    CommandRing commands_;
    ContentPresence presence_;
    Transport transport_;             // audio thread
    ContentLibrary library_{trace_};  // UI thread
    ProgramList programs_{library_};
    HostParameters parameters_{shared_, multi_, commands_};
    PatchLoader patchLoader_{multi_, settings_, parameters_, commands_, trace_};
    SetupAccess setup_{multi_,       settings_, shared_, parameters_, library_,
                       programName_, inside_,   *this,   trace_};
    ChunkWriter chunkWriter_{setup_};
    ChunkReader chunkReader_{setup_, patchLoader_};
    LibraryLoader loader_{setup_, patchLoader_, chunkReader_};
    SetupCommands setupCommands_{setup_, chunkWriter_, chunkReader_, patchLoader_, loader_};
    MessageSettings messages_{multi_, parameters_, shared_, trace_};
    GeneralMidi generalMidi_{multi_, parameters_, loader_, patchLoader_, messages_};
    StatusLine status_;
    MidiInput midi_{multi_, settings_, presence_, messages_, status_, trace_};
    MidiEcho echo_;
    std::unique_ptr<Engine> engine_;
    RenderGate gate_;
    Shared<bool> resumed_{false};  // written while the gate is held
    Shared<bool> hidesParameters_{false};

    // UI thread
    ProgramName programName_{"Stratovane 2"};
    Bytes chunk_;  // the host's until it asks for the next one
    bool lazyInitPending_ = true;
    bool resumesItself_ = false;   // under a host that never asks for it
    bool followsPlayback_ = true;  // the host's inspector can update while it plays
    bool contentFound_ = false;
    bool inside_ = false;            // a message box may let the host call in again
    std::int32_t selectedPart_ = 0;  // whose preset chunks are meant
    std::uint32_t handledRequests_ = 0;
    std::optional<Request> heldRequest_;  // popped, but not carried out yet
};

}  // namespace stratovane
