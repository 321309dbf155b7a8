// The sound of an "Analog" element's voice: oscillators, noise and filter, one tick at a time.
#pragma once

#include "base/random.h"
#include "patch/element_controls.h"
#include "voice/analog/noise.h"
#include "voice/analog/osc3.h"
#include "voice/analog/shape_oscillator.h"
#include "voice/filter/voice_filter.h"
#include "voice/wavetable/wavetable_reader.h"

namespace stratovane {

/// Audio thread. At a note-on `start`, then for every 32 samples `tick` and `render`, with
/// `refresh` before the tick whenever the element's change counter differs.
class AnalogVoice {
  public:
    /// A new note on any record: everything as new, kernel and waves chosen for the note's life.
    /// `velocity` is normalised (-1..1; 0 when the element does not receive it). Draws from
    /// `random` in a fixed order. The waves that read `table` are silent without one; it must
    /// outlive the note.
    void start(const ElementControls& controls, float velocity, float sampleRate, Random& random,
               const Wavetable* table = nullptr);
    /// Levels, ratios, leak, filter mode and amounts of the element; what sounds goes on.
    void refresh(const ElementControls& controls, float sampleRate);
    /// `phasePerSample` is exp(base + pitch) with ln 2 in the base: half periods of the note per
    /// sample, limited here to 1. The shape inputs are the modulated ones of oscillators 1 and 2.
    void tick(float phasePerSample, float shape1, float shape2, const FilterInputs& filter);
    /// The next 32 samples, before gain and pan.
    void render(float* y);
    /// The last sample that entered the filter.
    float filterInput() const { return filterInput_; }
    /// The note-on click in the filter.
    void click(float k) { filter_.click(k); }

  private:
    void chooseCore(const ElementControls& controls);

    bool dual_ = false;    // oscillator 2, wavetable waves, modulated cutoff
    bool ladder_ = false;  // for the note's life, as dual_
    bool mute3_ = false;
    float leak_ = 0;       // of the integrators, per sample
    float threshold_ = 0;  // increment below which a new pitch holds at once
    float shape_ = 0;      // the integrator that oscillators 1 and 2 share
    float gains_[2] = {0, 0}, ratios_[2] = {1, 1};  // of oscillators 1 and 2
    float noiseLevel_ = 0;
    float filterMod_ = 0;
    float filterInput_ = 0;
    ShapeOscillator oscillators_[2];
    WavetableReader readers_[2];  // of those that have the wave for it
    Osc3 osc3_;
    NoiseGenerator noise_;
    VoiceFilter filter_;
};

}  // namespace stratovane
