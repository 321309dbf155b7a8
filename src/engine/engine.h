// The sound engine: sixteen parts and their patches, rendered block by block.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "base/engine_shared.h"
#include "base/random.h"
#include "base/trace.h"
#include "base/units.h"
#include "engine/controller_memory.h"
#include "engine/lift.h"
#include "engine/part_events.h"
#include "engine/playing_chain.h"
#include "voice/arpeggiator_log.h"
#include "voice/send_bus.h"

namespace stratovane {

class ContentLibrary;
class Transport;

/// What one block needs. `outputs` holds two buffers a pair; null ones are skipped.
struct RenderBlock {
    const PartEventLists* events = nullptr;
    float* const* outputs = nullptr;
    std::int32_t frames = 0;
    bool replace = true;  // else the sound is added to what the buffers hold
};

/// Threads: `render`, `handleAtOnce` and `allSoundOff` are the audio thread's, everything else the
/// UI thread's unless it says "any". Nothing on the audio thread allocates or locks.
class Engine {
  public:
    /// Without a library no content is ever found.
    Engine(EngineShared& shared, Trace& trace, int outputPairs, ContentLibrary* library = nullptr);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Who wants a patch in a part: one that a MIDI message asked for takes over what the channel's
    /// controllers were set to behind that message.
    enum class AskedBy { editor, message };

    int outputPairs() const { return pairs_; }
    /// The patch that settings of a part go to: the one handed over last. Any thread.
    Patch& patch(int part) const { return chain(part).current().patch(); }
    PartEngine& current(int part) const { return chain(part).current(); }
    /// Holds the four master effects as its elements 65..68. Any thread, as Patch says.
    Patch& master() { return master_; }
    const Patch& master() const { return master_; }
    const EngineShared& shared() const { return shared_; }

    /// A fresh instance for a part, at the current rate, to be filled and adopted.
    std::unique_ptr<PartEngine> makeInstance(int part);
    /// Makes a filled instance the part's current one; the one before it retires at the next block.
    void adopt(int part, std::unique_ptr<PartEngine> instance, AskedBy by = AskedBy::editor);

    /// Rate and largest block of everything; filter states and overload report are cleared. Nothing
    /// may render meanwhile.
    void setSampleRate(double rate, std::int32_t blockFrames);
    /// Output enhancer, 0..1; the master gain's compensation follows. Clears the overload report.
    void setLift(float amount);
    /// Retiring patches end within four blocks. Any thread.
    void retireAll() { retireAll_ = retireAllBlocks; }

    /// One block; the transport has been followed up to its first frame and is moved to its end.
    void render(const RenderBlock& block, Transport& transport);
    /// Gives an event to a part between two blocks.
    void handleAtOnce(int part, const EventRecord& event) { handleEvent(part, event); }
    /// Releases every voice of a part, retiring instances included.
    void allSoundOff(int part);

    /// One part's idle step, and the deletion of the instances that went silent three blocks ago.
    void idle();
    /// Whether something waits for idle or for the next block.
    bool busy() const;
    /// What the arpeggiators play, once it is turned on.
    ArpeggiatorLog& arpeggiatorLog() { return log_; }
    /// Highest number of sounding voices since last asked.
    int takeHighestVoices();

  private:
    static constexpr std::int32_t retireAllBlocks = 4;
    static constexpr std::uint32_t keepDeadBlocks = 3;

    ControllerMemory& memory(int part) { return memories_[static_cast<std::size_t>(part)]; }
    PlayingChain& chain(int part) const { return *chains_[static_cast<std::size_t>(part)]; }
    void handleEvent(int part, const EventRecord& event);
    /// Both answer false when the piece was silenced for an overload.
    bool renderPiece(const RenderBlock& block, std::int32_t from, std::int32_t frames,
                     const MusicalTime& time, bool last);
    void renderPart(int part, const PartEvents& events, std::int32_t from, std::int32_t frames,
                    const MusicalTime& time, bool last);
    bool finishPiece(const RenderBlock& block, std::int32_t from, std::int32_t frames);
    bool overloaded(std::int32_t frames) const;
    RenderTarget target();

    EngineShared& shared_;
    Trace& trace_;
    const int pairs_;
    ContentLibrary* const library_;
    Random seeds_;  // UI thread
    Patch master_;
    std::array<std::unique_ptr<PlayingChain>, parts> chains_;
    DeadList dead_;
    Lift lift_;
    float liftAmount_ = 0;

    // Audio thread
    std::vector<float> samples_;  // 2 * pairs_ buffers of blockFrames_
    std::vector<float*> buffers_;
    std::vector<std::uint8_t> touched_;
    SendBuses sends_;  // shared by all parts
    std::array<std::size_t, parts> nextEvent_{};
    std::array<ControllerMemory, parts> memories_;
    std::int32_t blockFrames_ = 256;
    std::int32_t retiringRenders_ = 0;
    std::int64_t rendered_ = 0;  // frames before the piece
    bool freeVoices_ = false;    // after an overload, at the next block

    // Either thread
    Shared<std::int32_t> retireAll_{0};  // blocks the countdown still runs
    Shared<bool> overloadReported_{false};
    Shared<std::uint32_t> blocks_{0};        // blocks rendered, wraps
    Shared<std::int32_t> retiringCount_{0};  // retiring instances rendered in the last block
    Shared<std::int32_t> highestVoices_{0};
    ArpeggiatorLog log_;
    SharedBits renewEffects_;  // after an overload, at the next idle call

    // UI thread
    int idlePart_ = -1;
    std::int32_t tracedRetiring_ = 0;
};

}  // namespace stratovane
