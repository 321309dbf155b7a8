// The sound of an "FM" element's voice: two operators that move a carrier's frequency, and the
// filter.
#pragma once

#include <array>
#include <cstdint>

#include "base/random.h"
#include "patch/element_controls.h"
#include "voice/filter/voice_filter.h"

namespace stratovane {

/// Audio thread. At a note-on `start`, then for every 32 samples `tick` and `render`, with
/// `refresh` before the tick whenever the element's change counter differs.
class FmVoice {
  public:
    /// What the note gives, once for its life.
    struct Note {
        int key = 60;         // 0..127
        float velocity = 0;   // normalised, -1..1
        float decayBend = 0;  // exponent of the envelope's rate, from velocity and element
    };
    /// A new note on any record. Draws from `random` in a fixed order.
    void start(const ElementControls& controls, const Note& note, float sampleRate, Random& random);
    /// Ratios, levels, fixed carrier and filter mode of the element; phases and operator 2's level
    /// go on.
    void refresh(const ElementControls& controls, float sampleRate);
    /// `phasePerSample` is exp(base + pitch) with ln 2 in the base: half periods of the note per
    /// sample, limited here to 1. `modulation` (1 and above full, 0 about a twentieth) sets how
    /// much the operators modulate.
    void tick(float phasePerSample, float modulation, const FilterInputs& filter);
    /// The next 32 samples, before gain and pan.
    void render(float* y);
    /// The last sample that entered the filter.
    float filterInput() const { return filterInput_; }

  private:
    /// A modulator's sine: its phase has 23 bits.
    struct Operator {
        std::uint32_t phase = 0, increment = 0;
        double scale = 0;  // increment per half period of the note
    };

    Note note_;
    std::array<Operator, 2> operators_;
    double carrier_ = 0;              // phase, -1..1
    float carrierIncrement_ = 0;      // per sample
    float fixedIncrement_ = -1;       // above 0: replaces the carrier's increment
    float fixedSpread_ = 1;           // of the fixed increment, drawn at the note
    float through_ = 0;               // operator 1 past the carrier
    float level1_ = 0;                // operator 1 as a modulator
    float level2_ = 0, target2_ = 0;  // operator 2, and where its envelope leads
    float rate2_ = 1;                 // of the envelope, per tick
    float index_ = 1;                 // of the modulation, per sample
    float rateFactor_ = 1;            // 44100 / sample rate
    float filterInput_ = 0;
    VoiceFilter filter_;
};

}  // namespace stratovane
