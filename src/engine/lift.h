// Lift: the master output enhancer.
#pragma once

#include <array>
#include <span>

#include "base/shared.h"

namespace stratovane {

/// Adds a share of the signal's lows (two one-pole low-passes at 700 / 2 pi Hz) and of its highs
/// (the difference of neighbouring samples), which brings it near already-mastered material.
/// Threads: `set` on the UI thread; `process`
/// and `clear` on the audio thread.
class Lift {
  public:
    /// Amounts up to 0.01 (and what is not a number) switch it off. Answers the compensation that
    /// the master volume's square is multiplied with.
    float set(float amount, float sampleRate);
    bool on() const { return gain_ > 0.0f; }
    void process(int output, std::span<float> samples);
    void clear() { states_ = {}; }

  private:
    struct State {
        float low1 = 0, low2 = 0;
        float difference = 0, olderDifference = 0;  // low2 - x of the last two samples
    };
    Shared<float> gain_{0.0f};         // 0 off, else 2.2 times the amount
    Shared<float> coefficient_{0.0f};  // one-pole step, 700 / rate
    Shared<bool> wide_{false};         // at high rates the difference of two samples ago is used
    std::array<State, 32> states_{};
};

}  // namespace stratovane
