// The sound of a "Sample" element's voice: a recorded sample and its filters, one tick at a time.
#pragma once

#include "patch/element_controls.h"
#include "voice/filter/voice_filter.h"
#include "voice/sample/frame_reader.h"
#include "voice/sample/zone_choice.h"

namespace stratovane {

/// Audio thread. At a note-on `start`, then for every 32 samples `tick` and `render`. The zone and
/// its sample must stay for the note's life.
class SampleVoice {
  public:
    /// A new note on any record. `velocity` is normalised, `startPoint` 0..63. With "Force Mono" a
    /// stereo sample plays its left channel.
    void start(const ElementControls& controls, float velocity, const ZoneChoice& choice,
               int startPoint);
    /// The element's filter mode.
    void refresh(const ElementControls& controls) { filter_.setMode(controls.filterMode); }
    /// Frames of the sample per sample of the output, limited here to 16.
    void tick(float framesPerSample, const FilterInputs& filter);
    /// The next 32 samples, before gain and pan; `right` is written by stereo sounds alone.
    void render(float* left, float* right);
    bool isStereo() const { return lanes_ == 2; }
    /// The sample has come to its end; from there on its last value is held.
    bool isOver() const { return position_.over; }
    /// Semitones by which the pitch changes because the loop was entered for the first time.
    float takeLoopTune();
    /// The last sample that entered the (left) filter.
    float filterInput() const { return filterInput_; }

  private:
    void read(float* const* out);
    template <class Value>
    void readValues(const Value* values, float* const* out);

    ZoneChoice choice_;
    FrameRange range_;
    FramePosition position_;
    double framesPerSample_ = 0;
    int lanes_ = 1;
    float loopTune_ = 0;  // semitones, 0 once it has been taken
    float filterInput_ = 0;
    DeltaReader delta_;
    VoiceFilter filter_;
};

}  // namespace stratovane
