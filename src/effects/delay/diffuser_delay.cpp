// Diffuser Delay: the Delay with four all-passes laid into its line just behind the write position,
// so that every round through the line smears the echo further.
#include <array>

#include "effects/all_types.h"
#include "effects/delay/mono_delay.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 1.51f;
constexpr std::size_t stages = 4;

class DiffuserDelay final : public MonoDelay {
  public:
    DiffuserDelay() : MonoDelay{effect::diffuserDelay, lineSeconds} {}

  private:
    enum { Diffusion = Damp + 1 };

    // Coefficients.
    std::array<int, stages> stageTaps_{};  // samples behind the write position, ascending

    void update(int changed) override {
        MonoDelay::update(changed);
        if (changed == Damp || changed == Feedback || changed > Diffusion) return;
        constexpr int shortestTap = stages + 1;
        taps_.left = std::max(taps_.left, shortestTap);
        taps_.right = std::max(taps_.right, shortestTap);
        const float v = parameter(Diffusion);
        float span = static_cast<float>(std::min(taps_.left, taps_.right)) * (v * v) * 0.4f;
        // The loop must read behind the last stage, or it would close within the diffuser.
        for (layStages(span); span > 0 && stageTaps_.back() >= taps_.longer(); layStages(span))
            span -= 1;
    }
    void layStages(float span) {
        constexpr std::array<float, stages> shares{0.3747f, 0.2823f, 0.7309f, 1.0f};
        int tap = 0;
        for (std::size_t i = 0; i < stages; ++i)
            stageTaps_[i] = tap += 1 + static_cast<int>(shares[i] * span);
    }
    void render(std::span<StereoFrame> io, double) override {
        run(io, [taps = stageTaps_](Line& line, float fed) {
            constexpr float gain = 0.5f;
            const float y1 = allPass(line, 0, taps[0], gain, fed);
            const float y2 = allPass(line, taps[0], taps[1], gain, y1);
            const float y3 = allPass(line, taps[1], taps[2], gain, y2);
            line.at(taps[3]) = allPass(line, taps[2], taps[3], gain, y3);
        });
    }
};

}  // namespace

constinit const EffectType effect::diffuserDelay{
    .number = 16,
    .name = "Diffuser Delay",
    .wakes = Waking::never,
    .make = makeEffect<DiffuserDelay>,
    .rows = {{{"Mix", 0.5f, showEffectPercent},
              {"Sync", 0, showEffectSwitch},
              {"Delay", 0.5f, showEchoTime<lineSeconds>},
              {"Feedback", 0.5f, showEffectPercent},
              {"Balance", 0.5f, showBalance},
              {"HF Damp", 1, showInvertedPercent},
              {"Diffusion", 0.5f, showEffectPercent}}}};

}  // namespace stratovane
