// Detune: one side a little down, the other up.
#include <cmath>

#include "effects/all_types.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/pitch_shifter.h"

namespace stratovane {

namespace {

enum { Mix, Sync, Amount, Latency };

class Detune final : public EffectUnit {
  public:
    Detune() : EffectUnit{effect::detune} {}

  private:
    PitchShifter shifter_;

    bool prepare() override { return shifter_.prepare(rate()); }
    void reset() override { shifter_.reset(); }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) shifter_.setMix(v);
        if (changed == Amount) {
            const double ratio = std::exp2(static_cast<double>(v) * v / 24);  // up to 50 cents
            shifter_.setChange(ratio - 1, 1 / ratio - 1);
        }
        if (changed == Latency) shifter_.setSpan(v, rate());
    }
    void render(std::span<StereoFrame> io, double) override { shifter_.render(io); }
};

void showCents(TextOut& out, float v, const EffectView&) { out.print("%4.1f", v * v * 50.0f); }
void showLatency(TextOut& out, float v, const EffectView&) {
    out.print("%4.0f ms", v * 35.0f + 5.0f);
}

}  // namespace

constinit const EffectType effect::detune{.number = 61,
                                          .name = "Detune",
                                          .make = makeEffect<Detune>,
                                          .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                    {},
                                                    {"Detune", 0.5f, showCents},
                                                    {"Latency", 0.5f, showLatency}}}};

}  // namespace stratovane
