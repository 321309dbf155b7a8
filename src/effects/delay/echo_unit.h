// Time, balance, mix and damping as the plain echoes share them.
#pragma once

#include <algorithm>

#include "base/units.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/one_pole.h"
#include "effects/blocks/tempo_time.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

/// Free delay time as a fraction of the line, 0.001..1.
inline float echoFraction(float v) { return 0.999f * (v * v) + 0.001f; }

/// Distances of the two taps behind the write position, in samples.
struct EchoTaps {
    int left = 0, right = 0;
    int longer() const { return std::max(left, right); }
};

/// One side has the full length; balance shortens the other to as little as half of it.
inline EchoTaps balancedTaps(float samples, float balance) {
    const int full = static_cast<int>(samples);
    if (balance <= 0.5f) return {static_cast<int>((balance + 0.5f) * samples), full};
    return {full, static_cast<int>((1.5f - balance) * samples)};
}

inline void showBalance(TextOut& out, float v, const EffectView&) {
    if (v < 0.5f) return out.print("L x %.2f", v + 0.5f);
    out.print("R x %.2f", 1.5f - v);
}

/// A time of at most `lineSeconds`, or its division.
template <const float& lineSeconds>
void showEchoTime(TextOut& out, float v, const EffectView& view) {
    if (isSynced(view)) return showEffectDivision(out, v, view);
    out.print("%.3f s", echoFraction(v) * lineSeconds);
}

/// A unit whose first five parameters are mix, sync, time, feedback and balance.
class EchoUnit : public EffectUnit {
  public:
    using EffectUnit::EffectUnit;

  protected:
    enum { Mix, Sync, Time, Feedback, Balance };

    // Coefficients.
    float dry_ = 1, wet_ = 0;
    float damping_ = 1;  // lowpass in the loop
    EchoTaps taps_;

    /// Recomputes what follows from these parameters and from the one that damps.
    void updateEcho(int changed, int lineSize, int dampSlot) {
        if (changed == Mix) {
            dry_ = dryGain(parameter(Mix));
            wet_ = wetGain(parameter(Mix));
        } else if (changed == dampSlot) {
            const float v = parameter(dampSlot);
            damping_ = v >= 0.98f ? 1.0f
                                  : onePoleCoefficient(
                                        static_cast<double>(5000 + 95000 * (v * v * v)), rate());
        } else if (changed == Sync || changed == Time || changed == Balance) {
            const float most = static_cast<float>(lineSize - 1);
            const float samples = isOn(parameter(Sync))
                                      ? syncedSamples(parameter(Time), samplesPerBeat(), most)
                                      : echoFraction(parameter(Time)) * most;
            taps_ = balancedTaps(samples, parameter(Balance));
        }
    }
    /// Echoes still in the line sound on after the ordinary tail.
    void setEchoTail(int lineSize) { setTail(type().tail.samples + lineSize); }
};

}  // namespace stratovane
