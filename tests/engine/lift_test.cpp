#include "engine/lift.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace stratovane {
namespace {

/// Gain at a frequency, from the second half of two seconds of sine.
double gainAt(Lift& lift, double hz, double rate) {
    std::vector<float> x(static_cast<std::size_t>(rate) * 2);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<float>(
            0.1 * std::sin(2 * std::numbers::pi * hz * static_cast<double>(i) / rate));
    // In pieces: the states are carried.
    for (std::size_t i = 0; i < x.size(); i += 100)
        lift.process(3, std::span{x}.subspan(i, std::min<std::size_t>(100, x.size() - i)));
    double sum = 0;
    for (std::size_t i = x.size() / 2; i < x.size(); ++i) sum += static_cast<double>(x[i]) * x[i];
    return std::sqrt(sum / static_cast<double>(x.size() / 2) * 2) / 0.1;
}

TEST(Lift, RaisesLowsAndHighs) {
    for (const float rate : {44100.0f, 96000.0f}) {
        Lift lift;
        EXPECT_FLOAT_EQ(lift.set(0.5f, rate), (8.0f - 1.1f) * 0.25f);
        ASSERT_TRUE(lift.on());
        const double wide = static_cast<double>(rate);
        EXPECT_NEAR(gainAt(lift, 10, wide), 1 + 1.1, 0.05);  // the low-passes let all of it through
        EXPECT_NEAR(gainAt(lift, 1000, wide), 1.0, 0.2);     // little of either
        EXPECT_GT(gainAt(lift, 10000, wide), 1.5);           // the difference of neighbours
    }
}

TEST(Lift, IsOffForSmallAmountsAndWhatIsNoNumber) {
    Lift lift;
    for (const float amount : {0.0f, 0.01f, -1.0f, std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_FLOAT_EQ(lift.set(amount, 44100), 2.0f);
        EXPECT_FALSE(lift.on());
    }
}

TEST(Lift, WaitsTwoSamplesAtHighRates) {
    for (const auto& [rate, delay] : {std::pair{48000.0f, 1}, std::pair{96000.0f, 2}}) {
        Lift lift;
        lift.set(1.0f, rate);
        std::vector<float> impulse(8, 0.0f);
        impulse[0] = 1;
        lift.process(0, impulse);
        EXPECT_FLOAT_EQ(impulse[0], 1 + 2.2f);
        for (int i = 1; i < delay; ++i) EXPECT_EQ(impulse[static_cast<std::size_t>(i)], 0.0f);
        // What comes back first is nearly the whole impulse, negated.
        EXPECT_NEAR(impulse[static_cast<std::size_t>(delay)], -2.2f, 0.01f);
    }
}

}  // namespace
}  // namespace stratovane
