#include <gtest/gtest.h>

#include <cmath>

#include "settings/settings.h"

using namespace stratovane;

namespace {

using Make = void (*)(float, MidiCurve&);

TEST(Curves, MarksOnTheCurves) {
    const struct {
        Make make;
        float sensitivity;
        int in, out;
    } marks[] = {
        {makeVelocityCurve, 1.0f, 100, 127}, {makeVelocityCurve, 1.0f, 64, 96},
        {makeVelocityCurve, 0.0f, 64, 33},   {makeVelocityCurve, 0.0f, 127, 127},
        {makeVelocityCurve, 0.75f, 64, 80},  {makeTouchCurve, 1.0f, 64, 103},
        {makeTouchCurve, 0.25f, 64, 5},      {makeTouchCurve, 0.25f, 127, 127},
        {makeTouchCurve, 0.25f, 20, 0},      {makeTouchCurve, 0.125f, 127, 31},
    };
    for (const auto& m : marks) {
        MidiCurve curve;
        m.make(m.sensitivity, curve);
        EXPECT_EQ(int{curve[static_cast<std::size_t>(m.in)]}, m.out)
            << m.sensitivity << " at " << m.in;
    }
}

TEST(Curves, TheMiddleChangesNothingAndNoPressureIsLeftAtTheEnd) {
    MidiCurve velocity, touch, off;
    makeVelocityCurve(0.5f, velocity);
    makeTouchCurve(0.5f, touch);
    makeTouchCurve(0.0f, off);
    for (std::size_t i = 0; i < 128; ++i) {
        EXPECT_EQ(velocity[i].get(), i);
        EXPECT_EQ(touch[i].get(), i);
        EXPECT_EQ(off[i].get(), 0);
    }
}

TEST(Curves, RiseFromSilenceAndAVelocityNeverVanishes) {
    for (float s : {-1.0f, 0.0f, 0.1f, 0.3f, 0.5f, 0.7f, 1.0f, 2.0f, std::nanf("")})
        for (Make make : {makeVelocityCurve, makeTouchCurve}) {
            MidiCurve curve;
            make(s, curve);
            EXPECT_EQ(curve[0].get(), 0);
            for (std::size_t i = 2; i < 128; ++i) {
                EXPECT_GE(curve[i].get() + (make == makeTouchCurve ? 1 : 0), curve[i - 1].get())
                    << s << " at " << i;
                if (make == makeVelocityCurve) {
                    EXPECT_GE(curve[i].get(), 1) << s << " at " << i;
                }
            }
        }
}

}  // namespace
