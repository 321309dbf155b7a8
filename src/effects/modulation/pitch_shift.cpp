// Pitch Shift: each side shifted by up to an octave, behind a delay that feeds back shifted again.
#include <algorithm>
#include <cmath>

#include "base/tempo_divisions.h"
#include "effects/all_types.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/modulation/pitch_shifter.h"

namespace stratovane {

namespace {

enum { Mix, Sync, Left, Right, Latency, Delay, Feedback, Routing };
using Side = PitchShifter::Side;

struct Route {
    std::string_view name;
    Side intoLeft, intoRight;
    bool delays = true;
};
constexpr Route routes[] = {{"L>L, L>R", Side::left, Side::left},
                            {"L>L, R>R", Side::left, Side::right},
                            {"No Delay", Side::left, Side::right, false},
                            {"R>L, L>R", Side::right, Side::left},
                            {"R>L, R>R", Side::right, Side::right}};
const Route& route(float v) { return routes[choice(v, 4.9f)]; }

double delaySeconds(float v) { return 0.999 * v * v + 0.001; }
/// -1 octave .. +1 octave, as the growth of a delay per sample.
double change(float v) { return 1 - std::exp2(2.0 * v - 1); }

class PitchShift final : public EffectUnit {
  public:
    PitchShift() : EffectUnit{effect::pitchShift} {}

  private:
    PitchShifter shifter_;

    bool prepare() override { return shifter_.prepare(rate()); }
    void reset() override { shifter_.reset(); }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mix) shifter_.setMix(v);
        if (changed == Left || changed == Right)
            shifter_.setChange(change(parameter(Left)), change(parameter(Right)));
        if (changed == Latency) shifter_.setSpan(v, rate());
        if (changed == Feedback || changed == Routing) {
            const Route& way = route(parameter(Routing));
            shifter_.setFeedback(way.delays ? -0.999f * parameter(Feedback) : 0.0f, way.intoLeft,
                                 way.intoRight);
        }
        if (changed == Sync || changed == Latency || changed == Delay || changed == Routing)
            shifter_.setDelay(route(parameter(Routing)).delays ? delaySamples() : 0.0);
    }
    void tempoChanged() override { update(Delay); }
    /// Half a grain is what the taps delay on average already.
    double delaySamples() const {
        const float v = parameter(Delay);
        double samples = delaySeconds(v) * rate();
        if (isOn(parameter(Sync))) {
            samples = 1 / (beatsPerSample() * tempoDivision(1.0f - v).perBeat);
            while (samples >= rate()) samples *= 0.5;
        }
        return std::max(samples - 0.5 * shifter_.span(), 0.0);
    }
    void render(std::span<StereoFrame> io, double) override { shifter_.render(io); }
};

void showSemitones(TextOut& out, float v, const EffectView&) {
    out.print("%4.2f", v * 24.0f - 12.0f);
}
void showLatency(TextOut& out, float v, const EffectView&) {
    out.print("%4.0f ms", v * 35.0f + 5.0f);
}
void showDelay(TextOut& out, float v, const EffectView& view) {
    if (isSynced(view)) return showEffectDivision(out, v, view);
    out.print("%.3f s", delaySeconds(v));
}
void showRouting(TextOut& out, float v, const EffectView&) { out.text(route(v).name); }

}  // namespace

constinit const EffectType effect::pitchShift{.number = 60,
                                              .name = "Pitch Shift",
                                              .wakes = Waking::audible,
                                              .make = makeEffect<PitchShift>,
                                              .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                        {"Sync", 0, showEffectSwitch},
                                                        {"Left", 0.5f, showSemitones},
                                                        {"Right", 0.5f, showSemitones},
                                                        {"Latency", 0, showLatency},
                                                        {"Delay", 0, showDelay},
                                                        {"Feedback", 0, showEffectPercent},
                                                        {"Routing", 0, showRouting}}}};

}  // namespace stratovane
