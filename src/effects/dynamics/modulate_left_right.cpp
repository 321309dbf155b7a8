// Modulate L/R: the left channel modulates the right one.
#include <array>
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/curves.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/levels.h"
#include "effects/dynamics/vocoder.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Mix, Kind = 2, Smooth, Drive, Through };
enum class Way { ring, envelope, duck, vocoder };
enum class Dry { left, stereo, right };
constexpr std::array<std::string_view, 4> wayNames{"Ring Mod", "Env Mod", "Env Duck", "Vocoder"};
constexpr std::array<std::string_view, 3> dryNames{"Left", "Stereo", "Right"};

int wayOf(float v) { return choice(v, 3.9f); }
int dryOf(float v) { return choice(v, 2.9f); }

class ModulateLeftRight final : public EffectUnit {
  public:
    ModulateLeftRight() : EffectUnit{effect::modulateLeftRight} {}

  private:
    float mix_ = 0, dry_ = 1, drive_ = 1;  // gains
    Way way_ = Way::ring;
    Dry through_ = Dry::stereo;
    float ringSmoothing_ = 1, attack_ = 1, bandSmoothing_ = 1;  // coefficients

    Way lastWay_ = Way::ring;
    float follower_ = 0;
    float lastRight_ = 0;
    dynamics::Vocoder vocoder_;

    void reset() override {
        follower_ = lastRight_ = 0;
        vocoder_.setRate(rate());
    }

    void update(int changed) override {
        const float v = parameter(changed), rough = 1.0f - v;
        switch (changed) {
            case Mix:
                mix_ = v;
                dry_ = dryGain(v);
                break;
            case Kind:
                way_ = static_cast<Way>(wayOf(v));
                break;
            case Smooth:
                ringSmoothing_ =
                    onePoleCoefficient(200000.0f * rough * rough * rough + 200.0f, rate());
                attack_ = onePoleCoefficient(600.0f * rough * rough + 2.0f, rate());
                bandSmoothing_ = onePoleCoefficient(std::exp(8.0f * rough + 0.6f), rate());
                break;
            case Drive:
                drive_ = std::exp(4.6052f * v);
                break;
            case Through:
                through_ = static_cast<Dry>(dryOf(v));
                break;
        }
    }

    /// `wet(left, right)` of each frame goes to both channels.
    template <class Wet>
    void mixIn(std::span<StereoFrame> io, Wet wet) {
        const float dry = dry_;
        const bool leftThrough = through_ != Dry::right, rightThrough = through_ != Dry::left;
        for (StereoFrame& f : io) {
            const float both = wet(f.left, f.right);
            f = {dry * (leftThrough ? f.left : f.right) + both,
                 dry * (rightThrough ? f.right : f.left) + both};
        }
    }

    /// Rises with the coefficient, falls ten times slower.
    void followLevel(std::span<StereoFrame> io, float gain, bool duck) {
        const float attack = attack_, release = 0.1f * attack_, drive = drive_;
        float follower = follower_;
        mixIn(io, [=, &follower](float left, float right) {
            float level = std::fabs(left);
            if (duck) {
                const float above = 2.0f - std::fabs(left * drive);
                level = above >= 0 ? above * above : 0.0f;
            }
            dynamics::follow(follower, level, attack, release);
            return follower * right * gain;
        });
        follower_ = follower;
    }

    void ring(std::span<StereoFrame> io) {
        const float smoothing = ringSmoothing_, gain = mix_ * drive_;
        float follower = follower_;
        mixIn(io, [=, &follower](float left, float right) {
            constexpr float offset = 1e-8f;
            lowpass(follower, left + offset, smoothing);
            return follower * right * gain;
        });
        follower_ = follower;
    }

    void vocode(std::span<StereoFrame> io) {
        const float smoothing = bandSmoothing_;
        const float bandGain = mix_ * drive_ * 0.03f, sibilance = drive_ * 0.5f;
        float last = lastRight_;
        mixIn(io, [=, this, &last](float left, float right) {
            vocoder_.feed(left, right, smoothing);
            const float change = right - last;
            last = right;
            return bandGain * vocoder_.sum() + change * sibilance * vocoder_.topEnvelope();
        });
    }

    void render(std::span<StereoFrame> io, double) override {
        if (io.empty()) return;
        if (way_ != lastWay_) {
            lastWay_ = way_;
            follower_ = 0;
            if (way_ == Way::vocoder) vocoder_.clear();
        }
        const float right = io.back().right;
        switch (way_) {
            case Way::ring:
                ring(io);
                break;
            case Way::envelope:
                followLevel(io, mix_ * drive_, false);
                break;
            case Way::duck:
                followLevel(io, mix_, true);
                break;
            case Way::vocoder:
                vocode(io);
                break;
        }
        lastRight_ = right;
    }
};

}  // namespace

constinit const EffectType effect::modulateLeftRight{
    .number = 110,
    .name = "Modulate L/R",
    .shown = "Modulate L->R",
    .tail = {.seconds = 0.5f},
    .make = makeEffect<ModulateLeftRight>,
    .rows = {{
        {"Mix", 0.5f},
        {},
        {"Mode", 0.5f,
         [](TextOut& out, float v, const EffectView&) {
             out.text(wayNames[static_cast<std::size_t>(wayOf(v))]);
         }},
        {"Smooth", 0.5f},
        {"Drive", 0.5f, showDecibels40},
        {"Thru", 0.5f,
         [](TextOut& out, float v, const EffectView&) {
             out.text(dryNames[static_cast<std::size_t>(dryOf(v))]);
         }},
    }},
};

}  // namespace stratovane
