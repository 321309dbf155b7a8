// Reads a wavetable at a pitch: phase in integers, one linear interpolation a sample.
#pragma once

#include <algorithm>
#include <cstdint>

#include "content/wavetable.h"

namespace stratovane {

/// The phase counts values of level 0 with 15 fractional bits, 2^23 a cycle. Level and wave change
/// where a cycle begins, never inside. One owner, audio thread.
class WavetableReader {
  public:
    static constexpr std::int32_t cycle = 0x800000;
    static constexpr std::int32_t highestIncrement = 0x400000;  // 128 values of level 0 per sample

    /// A new note at phase 0. The table must outlive the note; without one silence is read.
    void start(const Wavetable* table) {
        *this = WavetableReader{};
        table_ = table;
        if (table != nullptr) values_ = table->wave(0, Wavetable::waves / 2);
    }
    /// Bits that are flipped in every value, 0..16383.
    void setAliasing(std::int32_t bits) { aliasing_ = table_ == nullptr ? 0 : bits; }
    /// Once per control tick: cycles per sample (at most 0.5 are read) and which of the 64 waves
    /// the next cycle takes, 0..1.
    void tick(double cyclesPerSample, float wave) {
        if (table_ == nullptr) return;
        const double increment = std::min(double{highestIncrement}, cyclesPerSample * cycle);
        increment_ = static_cast<std::int32_t>(increment + 0.5);
        // Written so that no input leads out of the table.
        const float last = Wavetable::waves - 1, place = wave * Wavetable::waves;
        waveIndex_ = place > 0 ? static_cast<int>(std::min(last, place)) : 0;
        if (fresh_) chooseValues();
        fresh_ = false;
    }
    /// The value here, -1..1; then one sample on.
    float next() {
        const std::int32_t place = phase_ >> level_;
        const std::int16_t* at = values_ + (place >> 15);
        const std::int32_t a = at[0] ^ aliasing_, b = at[1] ^ aliasing_;
        const std::int32_t value = a * 32768 + (b - a) * (place & 0x7FFF);
        phase_ += increment_;
        if (phase_ >= cycle) {
            phase_ -= cycle;
            chooseValues();
        }
        return static_cast<float>(value) * (1.0f / (1 << 30));
    }
    /// Begins a cycle that is `samples` (0..1) old.
    void restart(double samples) {
        phase_ = static_cast<std::int32_t>(samples * increment_);
        chooseValues();
    }

  private:
    static constexpr std::int16_t silence[2] = {0, 0};

    /// The lowest level at which a sample moves on by less than two values.
    void chooseValues() {
        if (table_ == nullptr) return;
        level_ = 0;
        while (increment_ >> level_ >= 65536) ++level_;
        values_ = table_->wave(level_, waveIndex_);
    }

    const Wavetable* table_ = nullptr;
    const std::int16_t* values_ = silence;  // of the wave being read
    std::int32_t phase_ = 0, increment_ = 0;
    int level_ = 0;
    int waveIndex_ = 0;  // of the next cycle
    std::int32_t aliasing_ = 0;
    bool fresh_ = true;  // no tick yet
};

}  // namespace stratovane
