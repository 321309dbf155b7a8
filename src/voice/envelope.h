// The exponential envelopes of a voice: amplitude and filter.
#pragma once

#include "patch/element_controls.h"

namespace stratovane {

/// Whether a voice goes on: a voice that is not sounding is freed once its amplitude has died away.
enum class VoiceState { sounding, ending, fading };

/// What an envelope asks of its voice when it enters a stage. Filled by the voice for every call;
/// exponentials are computed at stage changes only.
struct EnvelopeContext {
    const EnvelopeControls* controls = nullptr;
    float velocity = 0;         // normalised, -1..1
    float keyPitch = 0;         // of the note, relative to middle C
    float timeFactor = 1;       // of tempo; multiplies every time
    float tickSeconds = 0;      // duration of a control tick
    float muteFadeSeconds = 0;  // of the mute fade, unscaled
    bool startedByRelease = false;
};

/// Peak of the amplitude envelope from the note's own velocity 1..127 and the zone's gain.
float amplitudePeak(float velocityToLevel, float midiVelocity, float startGain);
/// Peak of the filter envelope from the normalised velocity; 1 at the centre.
float filterPeak(float velocityToLevel, float velocity);

/// One-pole segments: each aims at a target beyond its bound and ends when the level crosses it.
/// Audio thread.
class SegmentEnvelope {
  public:
    float level = 0;                          // the output; a fresh note sets it to 0
    float peak = 0;                           // set at note-on
    VoiceState state = VoiceState::sounding;  // of the amplitude envelope; others: no meaning

    /// -1 attack from the current level with the legato offset, 0 attack, 1 decay at once (note-on
    /// click), 2 decay, 3 release, 4 mute fade, 5 release in the decay time. The level is kept but
    /// for 1 and 2, which begin at the peak; a fresh note zeroes it first.
    void setStage(int stage, const EnvelopeContext& context);
    /// One control tick.
    void tick(const EnvelopeContext& context);
    /// Slows or hastens the segment under way (a damper lifted again): factor of the coefficient.
    void scaleSpeed(float factor) { coefficient_ *= factor; }
    /// Back to a new record.
    void reset() { *this = SegmentEnvelope{}; }

  private:
    void decay(const EnvelopeContext& context);
    void sustain(const EnvelopeContext& context);
    void release(float stageSeconds, const EnvelopeContext& context);

    float coefficient_ = 0;  // step per tick
    float target_ = 0;
    float upperBound_ = 256, lowerBound_ = -256;
    int nextStage_ = 0;
};

}  // namespace stratovane
