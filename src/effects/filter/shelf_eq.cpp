// Shelf EQ: bass and treble made of one-pole splits, added to or taken from the signal.
#include <algorithm>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

class ShelfEq final : public EffectUnit {
  public:
    ShelfEq() : EffectUnit{effect::shelfEq} {}

  private:
    enum { Output, Bass = 2, Treble };

    // Coefficients.
    float output_ = 1;
    float bassCorner_ = 0, bass_ = 0;  // gains are relative to the signal, 0 is flat
    float trebleCorner_ = 0, treble_ = 0;
    // State.
    StereoFrame low_, high_;

    void reset() override { low_ = high_ = {}; }
    void update(int changed) override {
        const float v = parameter(changed), x = v - 0.5f;
        const bool boosts = x > 0;
        switch (changed) {
            case Output:
                output_ = std::exp(2.7631f * v - 1.38155f);
                break;
            case Bass:
                bassCorner_ = atMostOne((boosts ? 700.2f : 3500.0f) / rate());
                bass_ = boosts ? 12 * (x * x) : 1.9f * x;
                break;
            case Treble: {
                // Above 1 the pole turns negative, which brightens; the highest value is that of
                // the boost at 44.1 kHz, and lower rates keep to it.
                constexpr float highest = 1.52f;
                trebleCorner_ = std::min((boosts ? 67000.0f : 17000.0f) / rate(), highest);
                treble_ = boosts ? 12 * (x * x) : 1.8f * x;
                break;
            }
            default:
                break;
        }
    }
    void render(std::span<StereoFrame> io, double) override {
        const float output = output_, bass = bass_, treble = treble_;
        const float bassCorner = bassCorner_, trebleCorner = trebleCorner_;
        StereoFrame lows = low_, highs = high_;
        const auto shelve = [=](float in, float& low, float& high) {
            const float x = in + 1e-8f;
            const float below = lowpass(low, x, bassCorner);
            const float above = highpass(high, x, trebleCorner);
            return (x + bass * below + treble * above) * output;
        };
        for (StereoFrame& f : io)
            f = {shelve(f.left, lows.left, highs.left), shelve(f.right, lows.right, highs.right)};
        low_ = lows;
        high_ = highs;
    }
};

}  // namespace

constinit const EffectType effect::shelfEq{.number = 80,
                                           .name = "Shelf EQ",
                                           .tail = {.seconds = 0.5f},
                                           .make = makeEffect<ShelfEq>,
                                           .rows = {{{"Output", 0.5f, showDecibels24},
                                                     {},
                                                     {"Bass", 0.5f, showDecibels24},
                                                     {"Treble", 0.5f, showDecibels24}}}};

}  // namespace stratovane
