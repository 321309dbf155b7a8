// Tape Delay: four playback heads along a saturating tape that wows.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/tempo_divisions.h"
#include "base/units.h"
#include "effects/all_types.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 3.01f;

/// Share of the base time at which a head stands.
float headShare(float v) { return 0.875f * v + 0.125f; }

float freeSeconds(float v) { return 2.95f * (v * v) + 0.05f; }

/// A short buffer read at a wandering distance. Each time the write index has gone round, a new
/// distance is drawn, which the read position reaches when it has gone round again.
class Wow {
  public:
    void reset() { *this = Wow{}; }
    /// Distances stay within 1..`farthest` samples, a draw away at most `depth`.
    float step(float x, double depth, double farthest, Random& random) {
        entries_[static_cast<std::size_t>(write_)] = x;
        const float here = entries_[static_cast<std::size_t>(read_)];
        const float next = entries_[static_cast<std::size_t>((read_ + 1) & mask)];
        const float y = here + (next - here) * static_cast<float>(fraction_);
        for (fraction_ += speed_; fraction_ < 0; fraction_ += 1) read_ = (read_ - 1) & mask;
        write_ = (write_ - 1) & mask;
        if (write_ == mask) {
            const double distance = ((read_ - write_) & mask) + fraction_;
            const double target = random.bipolar() * depth + distance;
            const double bounded = std::min(std::max(target, 1.0), farthest);
            speed_ = (bounded - distance) * (1.0 / size) - 1;
        }
        return y;
    }

  private:
    static constexpr int size = 256, mask = size - 1;
    std::array<float, size> entries_{};
    int write_ = 0, read_ = 0;
    double fraction_ = 0;  // in double: distances add up draw by draw, errors with them
    double speed_ = -1;    // per sample, -1 keeps the distance
};

class TapeDelay final : public EffectUnit {
  public:
    TapeDelay() : EffectUnit{effect::tapeDelay} {}

  private:
    enum { Mix, Sync, Time, Feedback, Vintage, Head1, Head2, Head3, Head4, Pan34, Level34 };
    static constexpr std::size_t heads = 4;

    // Coefficients.
    float dry_ = 1, wet_ = 0, feedback_ = 0;
    float treble_ = 1, lowCut_ = 0;  // of what is recorded
    float saturation_ = 0;           // how fast the tape's level is followed
    double wowDepth_ = 0, wowFarthest_ = 1;
    float pan_ = 0.5f, level_ = 0;  // of heads 3 and 4
    float baseSamples_ = 4410;
    std::array<int, heads> headTaps_{};
    // State.
    double level34_ = 1;  // followed level of heads 3 and 4, at least 1
    float recorded_ = 0, low_ = 0;
    Wow wow_;
    // Lines.
    Line tape_;

    bool prepare() override { return tape_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        tape_.clear();
        wow_.reset();
        level34_ = 1;
        recorded_ = low_ = 0;
        setTail(type().tail.samples + tape_.size());
    }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
            case Feedback:
                updateGains();
                break;
            case Sync:
            case Time:
                updateTimes();
                break;
            case Vintage:
                updateGains();
                treble_ = onePoleCoefficient(static_cast<double>(57000 - 50000 * v), rate());
                lowCut_ = onePoleCoefficient(static_cast<double>(5000 * v), rate());
                saturation_ = onePoleCoefficient(static_cast<double>(std::exp(6.9f * v)), rate());
                wowFarthest_ = rate() * 0.000125;
                wowDepth_ = wowFarthest_ * v * v;
                break;
            case Pan34:
                pan_ = 0.5f - 0.5f * v;
                break;
            case Level34:
                level_ = 2 * (v * v);
                break;
            default:
                if (changed >= Head1 && changed <= Head4) updateHead(changed - Head1);
        }
    }
    void updateGains() {
        const float mix = parameter(Mix), vintage = parameter(Vintage), back = parameter(Feedback);
        const float louder = 1 + vintage * vintage;
        dry_ = dryGain(mix);
        wet_ = louder * mix * 0.25f;
        feedback_ = louder * (0.25f * (back * back));
    }
    void updateTimes() {
        const float v = parameter(Time), size = static_cast<float>(tape_.size());
        float samples = isOn(parameter(Sync)) ? samplesPerBeat() / tempoDivision(1.0f - v).perBeat
                                              : freeSeconds(v) * rate();
        while (samples >= size) samples *= 0.5f;
        baseSamples_ = samples;
        for (int head = 0; head < static_cast<int>(heads); ++head) updateHead(head);
    }
    void updateHead(int head) {
        headTaps_[static_cast<std::size_t>(head)] =
            static_cast<int>(headShare(parameter(Head1 + head)) * baseSamples_);
    }
    void render(std::span<StereoFrame> io, double) override {
        const float dry = dry_, wet = wet_, feedback = feedback_, pan = pan_, level = level_;
        const float treble = treble_, lowCut = lowCut_, saturation = saturation_;
        const double wowDepth = wowDepth_, wowFarthest = wowFarthest_;
        const auto taps = headTaps_;
        double followed = level34_;  // a slow one gathers steps too small for a float
        float recorded = recorded_, low = low_;
        for (StereoFrame& f : io) {
            const float h1 = tape_.tap(taps[0]), h2 = tape_.tap(taps[1]);
            const float h3 = tape_.tap(taps[2]), h4 = tape_.tap(taps[3]);
            const float sum = h3 + h4, panned = h4 + (h3 - h4) * pan;
            const float in = f.left + f.right;
            f.left = f.left * dry + (panned * level + h2) * wet;
            f.right = f.right * dry + ((sum - panned) * level + h1) * wet;

            const float loud = 3 * std::fabs(sum);
            followed -= (followed - (loud > followed ? loud : 1.0f)) * saturation;
            const float back = static_cast<float>(sum / followed) * feedback;
            const float cut = highpass(low, in + back, lowCut);
            lowpass(recorded, cut + back, treble);
            tape_.write(wow_.step(recorded, wowDepth, wowFarthest, random()));
            tape_.step();
        }
        level34_ = followed;
        recorded_ = recorded;
        low_ = low;
    }
};

void showDelay(TextOut& out, float v, const EffectView& view) {
    if (isSynced(view)) return showEffectDivision(out, v, view);
    out.print("%.3f s", freeSeconds(v));
}

void showHead(TextOut& out, float v, const EffectView&) { out.print("%.1f %%", v * 87.5f + 12.5f); }

}  // namespace

constinit const EffectType effect::tapeDelay{.number = 13,
                                             .name = "Tape Delay",
                                             .wakes = Waking::audible,
                                             .make = makeEffect<TapeDelay>,
                                             .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                       {"Sync", 0, showEffectSwitch},
                                                       {"Delay", 0.5f, showDelay},
                                                       {"Feedback", 0.5f, showEffectPercent},
                                                       {"Vintage", 0, showEffectPercent},
                                                       {"Head 1", 0, showHead},
                                                       {"Head 2", 0, showHead},
                                                       {"Head 3", 0, showHead},
                                                       {"Head 4", 0, showHead},
                                                       {"Pan 3+4", 0, showEffectPercent},
                                                       {"Vol 3+4", 0, showEffectPercent}}}};

}  // namespace stratovane
