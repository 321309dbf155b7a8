// Scanner Vibrato: a rotating scanner steps along the taps of a delay line, up and down again.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "effects/all_types.h"
#include "effects/blocks/line.h"
#include "effects/blocks/one_pole.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mode, Sync, Rate, Depth, Grit, AmpMod };
constexpr int positions = 16;  // a turn: tap 0 up to 8 and back
constexpr float lineSeconds = 0.002f, spacingSeconds = 0.000124f;
constexpr float tailSeconds = 0.01f;
constexpr float lowpassPerSecond = 8800.0f;
constexpr float loudest = 10.0f;  // above it a scanned value is taken for a fault
constexpr float whisper = 1e-8f;  // keeps the lowpass from denormal numbers

// Taps of each depth, in units of the spacing.
constexpr float taps[3][9] = {{0, 1, 2, 3, 4, 5, 6, 7, 8},
                              {0, 1, 2, 4, 6, 8, 9, 10, 12},
                              {0, 3.4f, 3, 7.8f, 9.6f, 12, 13, 14, 15}};

/// -3..-1: vibrato V3..V1; 0: off; 1..3: chorus C1..C3.
int mode(float v) { return choice(v, 6.9f) - 3; }
float scannerHz(float v) { return 6.86667f * std::exp(1.386f * v - 0.693f); }

struct Tap {
    int delay = 0;  // samples
    float gain = 1;
};

class ScannerVibrato final : public EffectUnit {
  public:
    ScannerVibrato() : EffectUnit{effect::scannerVibrato} {}

  private:
    int mode_ = 0;
    float scannedGain_ = 0, directGain_ = 0;
    float stepsPerSample_ = 0;
    float spacing_ = 0;  // samples
    float sharpness_ = 1, ripple_ = 0;
    float lowpass_ = 0;  // coefficient

    int position_ = 0;
    float phase_ = 0;  // of the present step
    Tap tap_, lastTap_;
    StereoFrame low_;

    StereoLine line_;

    bool prepare() override { return line_.resize(static_cast<int>(rate() * lineSeconds)); }
    void reset() override {
        line_.clear();
        position_ = 0;
        phase_ = 0;
        tap_ = lastTap_ = {};
        low_ = {};
        lowpass_ = atMostOne(lowpassPerSecond / rate());
    }
    void update(int changed) override {
        const float v = parameter(changed);
        if (changed == Mode) {
            mode_ = mode(v);
            scannedGain_ = mode_ > 0 ? 0.45f + 0.08f * static_cast<float>(mode_) : 1.3f;
            directGain_ = mode_ > 0 ? 1.875f : 0.0f;
            // Switched off it leaves even the flag of silence as it is: it rests at once.
            setTail(mode_ == 0 ? -1 : static_cast<std::int32_t>(rate() * tailSeconds));
        }
        if (changed == Rate)
            stepsPerSample_ = scannerHz(v) * static_cast<float>(positions) / rate();
        if (changed == Depth) spacing_ = v * rate() * spacingSeconds;
        if (changed == Grit) sharpness_ = 7.0f * v * v + 1.0f;
        if (changed == AmpMod) ripple_ = 0.054f * v;
    }
    Tap nextTap() {
        position_ = (position_ + 1) % positions;
        const int folded = position_ > positions / 2 ? positions - position_ : position_;
        const float value = taps[std::abs(mode_) - 1][folded];
        return {std::min(static_cast<int>(value * spacing_), line_.size() - 1),
                1.0f - value * ripple_};
    }
    void render(std::span<StereoFrame> io, double) override {
        if (mode_ == 0) return;
        const float scannedGain = scannedGain_, directGain = directGain_, lowpass = lowpass_;
        const float stepsPerSample = stepsPerSample_, sharpness = sharpness_;
        float phase = phase_;
        Tap tap = tap_, lastTap = lastTap_;
        StereoFrame low = low_;
        const auto scan = [](float last, float now, float share) {
            const float y = last + (now - last) * share;
            return std::fabs(y) > loudest ? 0.0f : y;
        };
        for (StereoFrame& f : io) {
            phase += stepsPerSample;
            if (phase >= 1.0f) {
                phase -= 1.0f;
                lastTap = tap;
                tap = nextTap();
            }
            const float x = std::min(sharpness * phase, 1.0f);
            const float share = (3.0f - 2.0f * x) * x * x;
            const float gain = (lastTap.gain + (tap.gain - lastTap.gain) * share) * scannedGain;
            line_.write(f);
            const StereoFrame last = line_.tap(lastTap.delay), now = line_.tap(tap.delay);
            low.left += (f.left + whisper - low.left) * lowpass;
            low.right += (f.right + whisper - low.right) * lowpass;
            f.left =
                scan(last.left, now.left, share) * gain + (f.left - 0.68f * low.left) * directGain;
            f.right = scan(last.right, now.right, share) * gain +
                      (f.right - 0.68f * low.right) * directGain;
            line_.step();
        }
        phase_ = phase;
        tap_ = tap;
        lastTap_ = lastTap;
        low_ = low;
    }
};

void showMode(TextOut& out, float v, const EffectView&) {
    static constexpr std::string_view names[] = {"V3", "V2", "V1", "OFF", "C1", "C2", "C3"};
    out.text(names[mode(v) + 3]);
}
void showScannerRate(TextOut& out, float v, const EffectView&) {
    out.print("%.2f Hz", scannerHz(v));
}

}  // namespace

constinit const EffectType effect::scannerVibrato{.number = 54,
                                                  .name = "Scanner Vibrato",
                                                  .tail = {.seconds = tailSeconds},
                                                  .make = makeEffect<ScannerVibrato>,
                                                  .rows = {{{"Mode", 0.5f, showMode},
                                                            {},
                                                            {"Rate", 0.5f, showScannerRate},
                                                            {"Depth", 0.5f, showEffectPercent},
                                                            {"Grit", 0.5f, showEffectPercent},
                                                            {"Amp Mod", 0, showEffectPercent}}}};

}  // namespace stratovane
