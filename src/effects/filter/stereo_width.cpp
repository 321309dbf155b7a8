// Stereo Width: a second stereo difference, delayed and weighted by bands, beside the mid signal.
#include <array>
#include <cmath>

#include "base/units.h"
#include "effects/all_types.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 0.02f;
constexpr float longestSeconds = 0.016f;

enum class WidthMode { adjust, swap, comb, haas };

WidthMode widthMode(float v) { return static_cast<WidthMode>(choice(v, 3.9f)); }

class StereoWidth final : public EffectUnit {
  public:
    StereoWidth() : EffectUnit{effect::stereoWidth} {}

  private:
    enum { Output, Time = 2, Width, Low, Mid, High, Mode };

    // Coefficients.
    float output_ = 0.5f;
    int delaySamples_ = 0;
    float width_ = 0;
    float low_ = 0, mid_ = 0, high_ = 0;
    float highCorner_ = 0, midCorner_ = 0;
    // State.
    float belowHigh_ = 0, belowMid_ = 0;
    // Lines.
    Line line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        belowHigh_ = belowMid_ = 0;
        highCorner_ = onePoleCoefficient(15000, rate());
        midCorner_ = onePoleCoefficient(2000, rate());
    }
    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Output:
                output_ = std::exp(2.77588f * v - 2.07944f);
                break;
            case Time:
                delaySamples_ = static_cast<int>(v * v * rate() * longestSeconds);
                break;
            case Low:
                low_ = v;
                break;
            case Mid:
                mid_ = v;
                break;
            case High:
                high_ = v;
                break;
            case Width:
            case Mode: {
                const float width = 4 * parameter(Width);
                width_ = widthMode(parameter(Mode)) == WidthMode::swap ? -width : width;
                break;
            }
            default:
                break;
        }
    }
    void render(std::span<StereoFrame> io, double) override {
        switch (widthMode(parameter(Mode))) {
            case WidthMode::adjust:
            case WidthMode::swap:
                return run<WidthMode::adjust>(io);
            case WidthMode::comb:
                return run<WidthMode::comb>(io);
            case WidthMode::haas:
                return run<WidthMode::haas>(io);
        }
    }
    template <WidthMode mode>
    void run(std::span<StereoFrame> io) {
        const float output = output_, width = width_, lowGain = low_, midGain = mid_;
        const float highGain = high_, highCorner = highCorner_, midCorner = midCorner_;
        const int delaySamples = delaySamples_;
        float belowHigh = belowHigh_, belowMid = belowMid_;
        for (StereoFrame& f : io) {
            const float middle = f.left + f.right, side = f.left - f.right;
            line_.write((mode == WidthMode::adjust ? side : middle) + 1e-8f);
            const float delayed = line_.tap(delaySamples);
            line_.step();
            const float high = delayed - lowpass(belowHigh, delayed, highCorner);
            const float low = lowpass(belowMid, belowHigh, midCorner), mid = belowHigh - low;
            const float part = width * (low * lowGain + mid * midGain + high * highGain);
            if constexpr (mode == WidthMode::haas)
                f = {middle * output, part * output};
            else
                f = {(middle + part) * output, (middle - part) * output};
        }
        belowHigh_ = belowHigh;
        belowMid_ = belowMid;
    }
};

void showDelay(TextOut& out, float v, const EffectView&) {
    out.print("%.3f ms", v * v * longestSeconds * 1000);
}

void showDouble(TextOut& out, float v, const EffectView&) { out.print("%.0f %%", v * 200); }

void showMode(TextOut& out, float v, const EffectView&) {
    constexpr std::array<const char*, 4> names{"Adjust", "Swap", "Comb", "Haas"};
    out.text(names[static_cast<std::size_t>(widthMode(v))]);
}

}  // namespace

constinit const EffectType effect::stereoWidth{.number = 51,
                                               .name = "Stereo Width",
                                               .tail = {.seconds = 0.05f},
                                               .make = makeEffect<StereoWidth>,
                                               .rows = {{{"Output", 0.5f, showDecibels24},
                                                         {},
                                                         {"Delay", 0.5f, showDelay},
                                                         {"Width", 0.5f, showDouble},
                                                         {"Low", 0, showDouble},
                                                         {"Mid", 0, showDouble},
                                                         {"High", 0, showDouble},
                                                         {"Mode", 0, showMode}}}};

}  // namespace stratovane
