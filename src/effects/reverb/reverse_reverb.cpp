// Reverse Reverb: a diffuser as long as a segment smears the sound ahead of its delayed original.
#include <algorithm>

#include "effects/all_types.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/tempo_time.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/all_pass_chain.h"

namespace stratovane {

namespace {

enum { Mix = 0, Sync = 1, Time = 2, Diffusion = 3, WetMix = 4, DryMix = 5 };

constexpr std::size_t longStages = 8, stages = 12;

class ReverseReverb final : public EffectUnit {
  public:
    ReverseReverb() : EffectUnit{effect::reverseReverb} { chain_.gains.fill(0.5f); }

  private:
    float dry_ = 1, wet_ = 0, delayedDry_ = 0;  // coefficients
    float wantedLength_ = 1;                    // samples, at least 1
    AllPassChain<stages> chain_;
    int middle_ = 0, end_ = 0;  // taps of the stereo line
    float length_ = 1;          // state: samples, the length in use
    int guard_ = 1;             // above 0 a new length is taken
    float ramp_ = 0;            // wet gain, on its way to wet_
    StereoLine stereo_;         // lines
    Line mono_;

    int lineSamples() const { return static_cast<int>(rate()); }

    bool prepare() override { return stereo_.resize(lineSamples()) && mono_.resize(lineSamples()); }

    void reset() override {
        stereo_.clear();
        mono_.clear();
        update(WetMix);
        update(Time);
        takeLength();
        ramp_ = wet_;
        guard_ = 1;
    }

    void update(int changed) override {
        switch (changed) {
            case Mix:
            case WetMix:
            case DryMix:
                dry_ = dryGain(parameter(Mix));
                wet_ = parameter(WetMix) * parameter(Mix) + 1e-8f;
                delayedDry_ = parameter(DryMix) * parameter(Mix);
                break;
            case Sync:
            case Time: {
                const float v = parameter(Time);
                const float samples =
                    isOn(parameter(Sync))
                        ? syncedSamples(v, samplesPerBeat(), static_cast<float>(lineSamples() - 1))
                        : (0.98f * v + 0.02f) * rate();
                wantedLength_ = std::max(samples, 1.0f);
                setTail(static_cast<std::int32_t>(wantedLength_));
                break;
            }
            case Diffusion:
                std::fill_n(chain_.gains.begin(), longStages, 0.45f * parameter(Diffusion) + 0.05f);
                break;
        }
    }

    void takeLength() {
        length_ = wantedLength_;
        float share = 0;
        std::size_t tap = 0;
        for (const float group : {0.15f, 0.1f, 0.035f}) {
            for (float part = group; const float ratio : {1.0f, 0.78f, 0.78f, 0.78f}) {
                part *= ratio;
                share += part;
                chain_.taps[++tap] = static_cast<int>(share * length_);
            }
        }
        middle_ = static_cast<int>(0.85f * length_);
        end_ = static_cast<int>(length_ - 1.0f);
    }

    /// Lengths are taken a quarter of a second apart at least, and the wet side fades in anew.
    void followLength(int frames) {
        if (guard_ > 0 && length_ != wantedLength_) {
            takeLength();
            ramp_ = 0;
            guard_ = -(lineSamples() / 4);
        }
        if (guard_ <= 0) guard_ += frames;
    }

    void render(std::span<StereoFrame> io, double) override {
        followLength(static_cast<int>(io.size()));
        const float dry = dry_, wet = wet_, delayedDry = delayedDry_;
        const int middle = middle_, end = end_;
        const auto chain = chain_;
        float ramp = ramp_;
        for (StereoFrame& f : io) {
            stereo_.write(f);
            const StereoFrame half = stereo_.tap(middle), last = stereo_.tap(end);
            const float y = chain.run(mono_, f.left + f.right, 0, longStages);
            const float q = (2.0f * y + half.left + half.right) * ramp;
            ramp += (wet - ramp) * 0.0001f;
            const float e = chain.run(mono_, q, longStages);
            f = {f.left * dry + last.left * delayedDry + e,
                 f.right * dry + last.right * delayedDry + e};
            stereo_.step();
            mono_.step();
        }
        ramp_ = ramp;
    }
};

void showReverseTime(TextOut& out, float v, const EffectView& view) {
    if (isSynced(view)) return showEffectDivision(out, v, view);
    out.print("%.0f ms", v * 1000.0f);
}

}  // namespace

constinit const EffectType effect::reverseReverb{.number = 4,
                                                 .name = "Reverse Reverb",
                                                 .wakes = Waking::never,
                                                 .make = makeEffect<ReverseReverb>,
                                                 .rows = {{{"Mix", 0.5f},
                                                           {"Sync", 0.0f, showEffectSwitch},
                                                           {"Time", 0.5f, showReverseTime},
                                                           {"Diffusion", 0.5f},
                                                           {"Wet Mix", 0.0f},
                                                           {"Dry Mix", 0.0f}}}};

}  // namespace stratovane
