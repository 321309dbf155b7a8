// The sound of a "Drawbar" element's voice: tone wheels, percussion, key click and filter.
#pragma once

#include "patch/element_controls.h"
#include "voice/drawbar/tone_wheel_mix.h"
#include "voice/filter/voice_filter.h"

namespace stratovane {

/// A note as a drawbar voice receives it.
struct DrawbarNote {
    int key = 60;                // as drawbarKey gives it
    int velocity = 64;           // 1..127
    float receivedVelocity = 0;  // normalised, 0 when the element ignores it
    float percussionHeld = -1;   // the loudest percussion of the keys held, -1 when none is
};

/// The key whose wheels a note plays, 36..120; `note` as transposed by the part.
int drawbarKey(const ElementControls& controls, int note);
/// ln of the frames per sample at which a key's loops run while the note pitch is 0.
float drawbarPitch(const ToneWheels& wheels, int key, double outputRate);

/// Audio thread. At a note-on `start`, then for every 32 samples `tick` and `render`, with
/// `refresh` before the tick whenever the element's change counter differs. The wheels must stay
/// for the note's life.
class DrawbarVoice {
  public:
    /// A new note on any record. Draws four numbers.
    void start(const ElementControls& controls, const ToneWheels& wheels, const DrawbarNote& note,
               double sampleRate, Random& random);
    /// Drawbars and filter mode of the element.
    void refresh(const ElementControls& controls);
    /// The key is let go: the contacts click again, from the next tick on.
    void release(const ElementControls& controls);
    /// `framesPerSample` is limited here to 4.
    void tick(float framesPerSample, const FilterInputs& filter);
    /// The next 32 samples, before gain and pan.
    void render(float* y);
    /// Where the percussion stands, in weights.
    float percussion() const { return percussion_; }
    /// The last sample that entered the filter.
    float filterInput() const { return filterInput_; }

  private:
    void startPercussion(const DrawbarControls& controls, const DrawbarNote& note,
                         double sampleRate);
    void tickClick();
    void tickPercussion();
    void click(float* y);

    ToneWheelMix mix_;
    int key_ = 60;
    WheelWeights weights_{}, played_{};  // the latter with the percussion of this tick
    float scale_ = 0;                    // of a full-scale wheel times its weight
    float percussion_ = 0, percussionDecay_ = 1;
    float thirdHarmonic_ = 0;  // the share of the percussion that goes there, 0 or 1
    int clickTicks_ = 0;       // left
    float clickLevel_ = 0, clickCoefficient_ = 0, clickState_ = 0;
    std::uint16_t noise_ = 0;
    bool released_ = false;  // a release click waits for its tick
    int releaseTicks_ = 0;
    float releaseLevel_ = 0;
    float filterInput_ = 0;
    VoiceFilter filter_;
};

}  // namespace stratovane
