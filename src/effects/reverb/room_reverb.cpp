// Room Reverb: four chains of all-passes that feed each other; their first halves are the early
// reflections.
#include "effects/all_types.h"
#include "effects/blocks/curves.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"
#include "effects/reverb/all_pass_chain.h"
#include "effects/reverb/input_eq.h"
#include "effects/reverb/mix.h"

namespace stratovane {

namespace {

enum { Mix = 0, Time = 2, PreDelay = 3, Damping = 4, LowEq = 5, HighEq = 6, Size = 7, Shape = 8 };
enum { A, B, C, D, branches };

constexpr std::size_t stages = 6, earlyStages = 3;

// Primes, in samples at 48 kHz and full size.
constexpr std::array<std::array<float, stages>, branches> primes{{
    {487, 719, 1069, 1567, 2309, 3407},
    {509, 761, 1123, 1657, 2447, 3607},
    {659, 971, 1433, 2113, 3119, 4603},
    {739, 1093, 1613, 2381, 3511, 5179},
}};

class RoomReverb final : public EffectUnit {
  public:
    RoomReverb() : EffectUnit{effect::roomReverb} {
        for (auto& branch : branch_) branch.gains = {0.7f, 0.6f, 0.5f, 0.4f, 0.3f, 0.2f};
    }

  private:
    float mix_ = 0;       // coefficients
    float feedback_ = 0;  // 0..0.7: below 1 / sqrt(2) the exchange between the branches is stable
    float damp_ = 1;
    float early_ = 1, late_ = 0;  // gains
    int preDelay_ = 0;
    float wantedSize_ = 0;
    std::array<AllPassChain<stages>, branches> branch_;
    float size_ = 0;  // state: the size in use
    int hold_ = 0;    // samples until a new size is taken
    bool ran_ = false;
    InputEq leftEq_, rightEq_;
    std::array<float, branches> out_{};  // of the sample before; A and B are damped
    StereoLine input_;                   // lines
    std::array<Line, branches> lines_;

    bool prepare() override {
        const int samples = static_cast<int>(rate() * 0.33f);
        for (Line& line : lines_)
            if (!line.resize(samples)) return false;
        return input_.resize(samples);
    }

    void reset() override {
        leftEq_.clear();
        rightEq_.clear();
        out_ = {};
        input_.clear();
        for (Line& line : lines_) line.clear();
        hold_ = 0;
        ran_ = false;
        wantedSize_ = parameter(Size);
        takeSize();
    }

    void update(int changed) override {
        const float v = parameter(changed);
        switch (changed) {
            case Mix:
                mix_ = v;
                break;
            case Time:
                feedback_ = 0.7f * v;
                break;
            case PreDelay:
                preDelay_ = static_cast<int>(v * v * rate() * 0.25f);
                break;
            case Damping:
                damp_ = highEqCoefficient(v, rate());
                break;
            case LowEq:
                leftEq_.lowCut = rightEq_.lowCut = lowEqCoefficient(v, rate());
                break;
            case HighEq:
                leftEq_.highCut = rightEq_.highCut = highEqCoefficient(v, rate());
                break;
            case Size:
                if (v == wantedSize_) break;
                wantedSize_ = v;
                hold_ = static_cast<int>(rate() * 0.2f);
                break;
            case Shape:
                early_ = dryGain(v);
                late_ = wetGain(v);
                break;
        }
    }

    void takeSize() {
        size_ = wantedSize_;
        const float scale = (0.9f * size_ + 0.1f) * rate() / 48000.0f;
        for (std::size_t b = 0; b < branches; ++b) {
            auto delays = primes[b];
            for (float& samples : delays) samples *= scale;
            branch_[b].setDelays(delays);
        }
    }

    /// Moving all taps clicks, so a knob in motion is waited for; a unit that has not yet sounded
    /// need not wait.
    void followSize(int frames) {
        if (ran_ && hold_ > 0)
            hold_ -= frames;
        else if (size_ != wantedSize_)
            takeSize();
        ran_ = true;
    }

    void render(std::span<StereoFrame> io, double) override {
        followSize(static_cast<int>(io.size()));
        const float mix = mix_, feedback = feedback_, damp = damp_, early = early_, late = late_;
        const int preDelay = preDelay_;
        const auto branch = branch_;
        InputEq leftEq = leftEq_, rightEq = rightEq_;
        auto q = out_;
        for (StereoFrame& f : io) {
            input_.write(f);
            const StereoFrame in = input_.tap(preDelay);
            input_.step();
            const float left = leftEq(in.left + 1e-8f), right = rightEq(in.right + 1e-8f);
            const std::array<float, branches> x{
                left + feedback * (q[A] - q[B]), right + feedback * (q[C] - q[D]),
                left - feedback * (q[D] + q[C]), right + feedback * (q[B] + q[A])};
            std::array<float, branches> e{}, y{};
            for (std::size_t b = 0; b < branches; ++b) {
                e[b] = branch[b].run(lines_[b], x[b], 0, earlyStages);
                y[b] = branch[b].run(lines_[b], e[b], earlyStages);
                lines_[b].step();
            }
            lowpass(q[A], y[A], damp);
            lowpass(q[B], y[B], damp);
            q[C] = y[C];
            q[D] = y[D];
            f = crossfade(f,
                          {(e[A] + e[C]) * early + (q[C] + q[A]) * late,
                           (e[B] + e[D]) * early + (q[B] + q[D]) * late},
                          mix);
        }
        leftEq_ = leftEq;
        rightEq_ = rightEq;
        out_ = q;
    }
};

void showRoomTime(TextOut& out, float v, const EffectView&) {
    out.print("%.1f sec", v * v * v * 30.0f);
}
void showRoomPreDelay(TextOut& out, float v, const EffectView&) {
    out.print("%.1f ms", v * v * 250.0f);
}

}  // namespace

constinit const EffectType effect::roomReverb{.number = 3,
                                              .name = "Room Reverb",
                                              .shown = "Tavaverb",
                                              .wakes = Waking::audible,
                                              .make = makeEffect<RoomReverb>,
                                              .rows = {{{"Mix", 0.5f},
                                                        {},
                                                        {"Time", 0.5f, showRoomTime},
                                                        {"Pre Del", 0.5f, showRoomPreDelay},
                                                        {"Damping", 0.0f, showInvertedPercent},
                                                        {"Low EQ", 0.5f},
                                                        {"High EQ", 0.75f, showInvertedPercent},
                                                        {"Size", 0.0f},
                                                        {"Shape", 0.0f}}}};

}  // namespace stratovane
