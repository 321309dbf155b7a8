// One patch instance of a part: its notes, voices and sound.
#pragma once

#include <cstdint>
#include <memory>

#include "base/engine_shared.h"
#include "base/trace.h"
#include "patch/patch.h"
#include "voice/midi_bytes.h"
#include "voice/render_target.h"

namespace stratovane {

class ContentLibrary;

/// Threads: constructed, filled and destroyed on the UI thread; after hand-over handleEvent, render
/// and setTime belong to the audio thread, idle to the UI thread.
class PartEngine {
  public:
    /// `seed` starts the instance's random generator; the same input then renders the same samples.
    /// `part` (0..15) seeds its effects; without a library no content is ever found.
    PartEngine(const EngineShared& shared, int outputPairs, std::uint32_t seed, int part = 0,
               ContentLibrary* library = nullptr);
    ~PartEngine();
    PartEngine(const PartEngine&) = delete;
    PartEngine& operator=(const PartEngine&) = delete;

    Patch& patch();
    const Patch& patch() const;

    /// Frees all voices when the rate differs. Nothing may render meanwhile. UI thread.
    void setSampleRate(double rate, int maxFrames);
    /// Tempo, beats per frame, bar and the changes since. Audio thread (builder before hand-over).
    void setTime(const MusicalTime& time);

    /// Acts on a message between two frames: the next render begins after it. Audio thread.
    void handleEvent(const MidiBytes& bytes, EventSource source);
    /// Adds `frames` frames into the target from `offset` on; `position` is the song position at
    /// the first of them in beats. Blocks cut differently give the same samples but for the part's
    /// gain ramp. Audio thread.
    void render(const RenderTarget& target, int offset, int frames, double position);
    /// Ends every voice at once, without a fade; what rings in effects is not heard before the next
    /// event. Audio thread.
    void freeAllVoices();

    /// Whether a voice sounds or waits, an effect rings on or an arpeggio runs: a retiring instance
    /// lives until this is false. Audio thread.
    bool sounding() const;
    /// Slots in use, and the loudest of |left| and |right| since last asked. Any thread.
    int voiceCount() const;
    float takePeak();
    /// The highest number of slots in use since last asked. Any thread.
    int takeHighestVoiceCount();
    /// Rows that load, and one piece of content to release. UI thread.
    void idle();
    bool idleWaits() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace stratovane
