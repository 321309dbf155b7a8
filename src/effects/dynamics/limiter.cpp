// Limiter: a peak follower divides what exceeds full scale.
#include <cmath>

#include "effects/all_types.h"
#include "effects/blocks/one_pole.h"
#include "effects/dynamics/displays.h"
#include "effects/dynamics/levels.h"
#include "effects/effect_displays.h"
#include "effects/effect_unit.h"

namespace stratovane {

namespace {

enum { Output, Drive = 2, Attack, Release };

class Limiter final : public EffectUnit {
  public:
    Limiter() : EffectUnit{effect::limiter} {}

  private:
    float output_ = 1, drive_ = 1;    // gains
    float attack_ = 1, release_ = 1;  // follower coefficients
    float envelope_ = 0;              // of the driven input

    void reset() override { envelope_ = 0; }
    void idle(int) override { envelope_ = 0; }

    void update(int changed) override {
        const float v = parameter(changed), fast = 1.0f - v;
        switch (changed) {
            case Output:
                output_ = std::exp(4.6052f * v - 3.0f);
                break;
            case Drive:
                drive_ = 2.0f * std::exp(3.4539f * v);
                break;
            case Attack:
                attack_ = onePoleCoefficient(50000.0f * fast * fast * fast + 100.0f, rate());
                break;
            case Release:
                release_ = onePoleCoefficient(50.0f * fast * fast * fast + 1.0f, rate());
                break;
        }
    }

    void render(std::span<StereoFrame> io, double) override {
        const float output = output_, drive = drive_, attack = attack_, release = release_;
        float envelope = envelope_;
        for (StereoFrame& f : io) {
            const StereoFrame x{drive * f.left, drive * f.right};
            dynamics::follow(envelope, dynamics::peakOf(x), attack, release);
            const float gain = envelope <= 1.0f ? output : output / envelope;
            f = {gain * x.left, gain * x.right};
        }
        envelope_ = envelope;
    }
};

}  // namespace

constinit const EffectType effect::limiter{
    .number = 90,
    .name = "Limiter",
    .tail = {.seconds = 0.1f},
    .make = makeEffect<Limiter>,
    .rows = {{
        {"Output", 0.5f, showDecibels40},
        {},
        {"Drive", 0.5f, dynamics::showDecibels<30, 0>},
        {"Attack", 0.5f},
        {"Release", 0},
    }},
};

}  // namespace stratovane
