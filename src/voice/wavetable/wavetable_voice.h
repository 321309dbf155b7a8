// The sound of a "Wavetable" element's voice: a table, a second oscillator that shapes, restarts or
// accompanies it, and the filter.
#pragma once

#include "base/random.h"
#include "patch/element_controls.h"
#include "voice/analog/noise.h"
#include "voice/filter/voice_filter.h"
#include "voice/wavetable/wavetable_reader.h"

namespace stratovane {

/// Waves of the second oscillator. Stored in patches; do not renumber.
enum class TableShape { saw, square, triangle, sawTriangle, noise, tableNoise, tableTriangle };

/// Audio thread. At a note-on `start`, then for every 32 samples `tick` and `render`, with
/// `refresh` before the tick whenever the element's change counter differs.
class WavetableVoice {
  public:
    /// A new note on any record; the second oscillator's wave holds for the note's life. `table`
    /// must do so, too; null reads silence. `velocity` is normalised. Draws from `random` in a
    /// fixed order.
    void start(const ElementControls& controls, const Wavetable* table, float velocity,
               Random& random);
    /// Mix, sync, ratio, aliasing and filter mode of the element.
    void refresh(const ElementControls& controls);
    /// Whether the second oscillator turns twice per period of the note: then the voice's pitch
    /// has ln 2 in its base.
    bool runsTwice() const {
        return shape_ == TableShape::square || shape_ == TableShape::triangle;
    }
    /// How much louder the two make the voice, 1..1.5; most when they are mixed evenly.
    float levelFactor() const { return 1 + 2 * (mix_ - mix_ * mix_); }
    /// `phasePerSample` is exp(base + pitch), limited here to 1; `wave` chooses the table's wave
    /// and `tablePitch` is the table's own pitch, relative to the note.
    void tick(float phasePerSample, float wave, float tablePitch, const FilterInputs& filter);
    /// The next 32 samples, before gain and pan.
    void render(float* y);
    /// The last sample that entered the filter.
    float filterInput() const { return filterInput_; }

  private:
    template <TableShape shape>
    void mixSources(float* x);

    TableShape shape_ = TableShape::saw;
    bool sync_ = false;
    float mix_ = 0;  // 0 table alone, 1 second oscillator alone
    double ratio_ = 1;
    double phase_ = 0;      // -0.5..0.5
    double increment_ = 0;  // per sample, above 0
    float sign_ = 0.5f;     // of the half period, times the wave's level
    float filterInput_ = 0;
    WavetableReader table_;
    NoiseGenerator noise_;
    VoiceFilter filter_;
};

}  // namespace stratovane
