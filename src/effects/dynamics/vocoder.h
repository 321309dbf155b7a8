// Vocoder of eight octave bands, each run at half the rate of the one above.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "effects/dynamics/state_variable.h"

namespace stratovane::dynamics {

/// Every stage splits off its top octave and leaves the rest to the next, which runs on every
/// second of its turns: the same coefficients then lie an octave lower, and eight bands cost less
/// than two at full rate. On the way back a filter per stage interpolates.
class Vocoder {
  public:
    void setRate(float rate) {
        outer_ = std::min(32000.0f / rate, 1.0f);
        inner_ = 0.805f * outer_;
        turn_ = 0;
        clear();
    }
    void clear() { bands_ = {}; }

    /// `smoothing` is the coefficient of the band envelopes.
    void feed(float modulator, float carrier, float smoothing) {
        if (--turn_ < 0) turn_ = (1 << (stages - 1)) - 1;
        bands_[0].modulator[1].low = modulator;
        bands_[0].carrier[1].low = carrier;
        run(0, smoothing);
        for (int k = 0; k + 1 < stages && (turn_ >> k & 1) != 0; ++k)
            run(static_cast<std::size_t>(k) + 1, smoothing);
    }
    /// The carrier's bands at the modulator's levels.
    float sum() const { return bands_[1].resynthesis.low; }
    /// Level of the modulator in the top band.
    float topEnvelope() const { return bands_[1].envelope; }

  private:
    static constexpr int stages = 8;

    struct Band {
        std::array<StateVariable, 2> modulator, carrier;
        StateVariable resynthesis;
        float lastProduct = 0;
        float envelope = 0;
    };

    void run(std::size_t k, float smoothing) {
        constexpr float damping = 0.2f;
        const Band& above = bands_[k];
        const Band& below = bands_[k + 2];
        Band& band = bands_[k + 1];
        const auto split = [this](std::array<StateVariable, 2>& filters, float x) {
            filters[0].feed(x, inner_, damping);
            filters[1].feed(filters[0].low, outer_, damping);
            return filters[1].band;
        };
        const float level = std::fabs(split(band.modulator, above.modulator[1].low));
        const float carried = split(band.carrier, above.carrier[1].low);
        band.envelope += (level - band.envelope) * smoothing;
        const float product = band.envelope * carried - 0.5f * below.resynthesis.low;
        band.resynthesis.feed(band.lastProduct + product, inner_, 1.0f);
        band.lastProduct = product;
    }

    float outer_ = 0, inner_ = 0;  // coefficients: of the second and the first step
    int turn_ = 0;                 // 127..0; stage k + 1 runs while bits 0..k are set
    // The input, the stages and an end that stays silent.
    std::array<Band, stages + 2> bands_{};
};

}  // namespace stratovane::dynamics
