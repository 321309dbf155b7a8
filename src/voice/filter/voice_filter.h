// The filter of a voice: one or two channels, coefficients renewed once per control tick.
#pragma once

#include "patch/element_controls.h"
#include "voice/filter/filter_kernel.h"

namespace stratovane {

/// What the control tick hands to the filter.
struct FilterInputs {
    float pitch = 0;      // the voice's modulated pitch
    float cutoff = 0;     // pitch of the cutoff coefficient, envelope and modulation included
    float keytrack = 0;   // of pitch to cutoff
    float resonance = 0;  // 0..1 and what modulation adds
};

/// Audio thread. The pass band has a gain of 2 in every mode, "Off" included.
class VoiceFilter {
  public:
    /// A new note: states as new, or ringing when the resonance makes the filter oscillate. The
    /// ladder cores are for modes low24, low12 and damper; others are treated as damper there.
    void start(FilterCore core, FilterMode mode, bool selfOscillating);
    /// Mode and amounts may change under a sounding note; states go on. `filterMod` scales the
    /// alternative band's second stage, `distortion` (0..0.5) acts in ladderModulated.
    void setMode(FilterMode mode);
    void setCore(FilterCore core, float filterMod, float distortion);
    FilterCore core() const { return core_; }

    /// Coefficients of the next 32 samples; once per control tick, before render.
    void update(const FilterInputs& inputs);
    /// The note-on click: low-pass states become k, k is added to the band-pass ones.
    void click(float k);

    /// 32 samples. x and y may be the same. For the modulated cores `factors` multiply the cutoff
    /// coefficient sample by sample; the others ignore them.
    void render(const float* x, const float* factors, float* y, int channel = 0);
    void render(const float* x, float* y, int channel = 0) { render(x, nullptr, y, channel); }

    /// What a core needs of a channel. Channel 1 belongs to the right side of stereo samples; from
    /// `useBothChannels` on it takes part in resonance limiting (the louder side counts).
    FilterKernel& kernel(int channel = 0) { return kernels_[channel]; }
    void useBothChannels(bool both) { channels_ = both ? 2 : 1; }

  private:
    void updateDigital(float f, float q);
    void updateLadder(float f, float q);
    float energy() const;

    FilterKernel kernels_[2];
    FilterCore core_ = FilterCore::digital;
    FilterMode mode_ = FilterMode::off;
    int channels_ = 1;
    float filterMod_ = 0;
    float energy_ = 0;  // smoothed; lowers a high resonance as the filter grows loud
};

}  // namespace stratovane
