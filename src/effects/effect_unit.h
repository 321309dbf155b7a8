// One effect algorithm with twelve normalised parameters.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/random.h"
#include "base/stereo_frame.h"
#include "effects/effect_type.h"

namespace stratovane {

/// What a part tells its effects about the keys held, and what a rotary speaker tells the display.
struct KeySource {
    static constexpr float noKey = -9.0f;
    float pitch = -10.0f;     // of the highest key held, relative to note 0; noKey or below: none
    float hornCycles = 0.0f;  // horn angle, written at every block of a rotary speaker
};

/// An effect derives from it and overrides `prepare`, `reset`, `update` and `render`; contract of
/// silence and tails, parameter storage, labels and displays are here, once.
///
/// Members of a unit stand in three groups: coefficients (written by update), state (the loop's
/// own), lines. No result may depend on how blocks are cut: control ticks count down across blocks.
///
/// Threads: made, seeded and given its rate by whoever builds it, before the audio thread sees it;
/// then the audio thread's. `setSampleRate` later only while nothing renders.
class EffectUnit {
  public:
    explicit EffectUnit(const EffectType& type);
    virtual ~EffectUnit() = default;
    EffectUnit(const EffectUnit&) = delete;
    EffectUnit& operator=(const EffectUnit&) = delete;

    const EffectType& type() const { return type_; }
    /// Random draws begin anew from here at every setSampleRate.
    void setSeed(std::uint32_t seed) { seed_ = seed; }
    /// Takes the rate in hertz, clears everything that rings and recomputes all coefficients.
    void setSampleRate(float rate);
    /// A tempo that is not finite and above 0 keeps the last good one.
    void setTempo(float beatsPerMinute, double beatsPerSample);
    /// The part's keys; null: none to follow. It must outlive the unit.
    void setKeySource(KeySource* source) { keys_ = source; }
    /// Index 0..11, value 0..1.
    void setParameter(int index, float value);
    float parameter(int index) const { return values_[static_cast<std::size_t>(index)]; }

    /// Processes a block in place. `beat` is the song position of its first frame. `silent` tells
    /// whether the buffer holds nothing but silence, and is updated. Answers whether the unit ran:
    /// a resting one leaves the buffer alone. Audio thread.
    bool process(std::span<StereoFrame> io, double beat, bool& silent);

  protected:
    // For the effect ------------------------------------------------------------------------------
    /// Sizes the lines for rate(); false when there is no memory: the unit then passes audio on.
    virtual bool prepare() { return true; }
    /// Clears lines and running state; parameters stay.
    virtual void reset() {}
    /// Recomputes what follows from parameter `changed`. Called for all twelve, ascending, after
    /// reset.
    virtual void update(int /*changed*/) {}
    /// Before anything else of a block. False passes it on untouched, tail and flag too. Clearing
    /// `silent` starts the unit as sound would.
    virtual bool begin(bool& /*silent*/) { return true; }
    virtual void render(std::span<StereoFrame> io, double beat) = 0;
    /// The block is silent and the tail is over: what must go on turning, or be let go.
    virtual void idle(int /*frames*/) {}
    /// Tempo changed (and lines exist). Most synced types recompute their time.
    virtual void tempoChanged() { update(2); }

    float rate() const { return rate_; }
    float samplesPerBeat() const { return samplesPerBeat_; }   // 22050 before the first tempo
    double secondsPerBeat() const { return secondsPerBeat_; }  // 0.5 before the first tempo
    double beatsPerSample() const { return beatsPerSample_; }
    /// Tail from now on, for types whose tail follows a line or a parameter.
    void setTail(std::int32_t samples) { tailSamples_ = samples; }
    Random& random() { return random_; }
    const KeySource* keys() const { return keys_; }
    KeySource* keyRecord() { return keys_; }
    /// Whether the flag was set when this block came in (for a unit that holds another).
    bool inputSilent() const { return inputSilent_; }

  private:
    const EffectType& type_;
    std::array<float, effectParameters> values_{};
    float rate_ = 44100.0f;
    float samplesPerBeat_ = 22050.0f;
    double secondsPerBeat_ = 0.5;
    double beatsPerSample_ = 1.0 / 22050.0;
    std::uint32_t seed_ = 1;
    Random random_;
    KeySource* keys_ = nullptr;
    std::int32_t tailSamples_ = 200000;
    std::int32_t tail_ = 0;  // samples still expected; below 0 the unit rests
    bool ready_ = false;     // lines exist
    bool inputSilent_ = false;
};

/// The maker of a type's record.
template <class Unit>
std::unique_ptr<EffectUnit> makeEffect() {
    return std::make_unique<Unit>();
}

}  // namespace stratovane
