#include "patch/macro_knobs.h"

#include <gtest/gtest.h>

#include "patch/element.h"
#include "patch/patch.h"

namespace stratovane {
namespace {

float knobEntry(int knob) { return (static_cast<float>(knob) + 0.5f) / 7.9f; }
float routeTo(int index) { return (static_cast<float>(index - 16) + 0.5f) / 235.9f; }
float macroEntry(int destination) { return (static_cast<float>(destination + 1) + 0.5f) / 15.9f; }

struct Knobs : testing::Test {
    EngineShared shared;
    Patch patch{shared};
    const ElementControls& sound = patch.element(1).controls();

    void SetUp() override {
        patch.setElementCount(2);
        patch.initElement(1, ElementType::analog);
        patch.initElement(2, ElementType::effect);
    }
    void drive(int knob, int macro, float offset = 0, float range = 1) {
        const MacroKnob& k = macroKnobs[static_cast<std::size_t>(knob - 1)];
        patch.set(0, k.destination, macroEntry(macro));
        patch.set(0, k.offset, offset);
        patch.set(0, k.range, range);
    }
    void turn(int knob, float position) {
        patch.set(0, macroKnobs[static_cast<std::size_t>(knob - 1)].position, position);
    }
    float offset(int macro) const {
        return patch.controls().macroOffset[static_cast<std::size_t>(macro)];
    }
};

// Modes: what a position means. The pan is stored at the centre and moved by half the slot's value.
TEST_F(Knobs, MoveElementParametersByTheirMode) {
    const struct {
        float mode, position, pan;
    } cases[] = {
        {0, 0, 0.5f},      {0, 0.6f, 0.8f},   {0.3f, 0, 0},    {0.3f, 1, 0.5f},
        {0.67f, 0, 0.25f}, {0.67f, 1, 0.75f}, {1, 0.5f, 0.5f}, {1, 0.51f, 1},
    };
    patch.set(1, 145, knobEntry(3));
    patch.set(1, 6, routeTo(elementIndex::pan));
    patch.set(1, 7, 0.75f);
    for (const auto& c : cases) {
        patch.set(1, 4, c.mode);
        turn(3, c.position);
        EXPECT_EQ(patch.get(1, 14), c.position);
        EXPECT_FLOAT_EQ(sound.pan, c.pan) << c.mode << " " << c.position;
        EXPECT_EQ(patch.get(1, elementIndex::pan), 0.5f);
    }
    turn(2, 0);  // another knob
    EXPECT_FLOAT_EQ(sound.pan, 1);
    EXPECT_EQ(patch.controls().knobs[2], 0.51f);
}

TEST_F(Knobs, AddUpOnOneParameterAndLeaveItWhenTheyPointElsewhere) {
    patch.set(1, 4, 0);  // positive
    patch.set(1, 5, 0);
    for (const int slot : {0, 1}) {
        patch.set(1, 145 + slot, knobEntry(1 + slot));
        for (const int i : {0, 1}) {
            patch.set(1, 6 + 4 * slot + 2 * i, routeTo(elementIndex::resonance));
            patch.set(1, 7 + 4 * slot + 2 * i, 0.5f + 0.05f * static_cast<float>(1 + i));
        }
    }
    patch.set(1, elementIndex::resonance, 0.1f);
    turn(1, 1);
    EXPECT_NEAR(sound.resonance, 0.1 + 0.1 + 0.2 + 0.5 * 0.3, 1e-6);
    turn(2, 0);
    EXPECT_NEAR(sound.resonance, 0.4, 1e-6);
    patch.set(1, 8, routeTo(251));
    EXPECT_NEAR(sound.resonance, 0.2, 1e-6);
    EXPECT_NEAR(sound.rows.rows[15].settings.depth, 4 * 0.04, 1e-6);  // 0.5 moved to 0.7
    patch.set(1, 6, routeTo(16));
    EXPECT_FLOAT_EQ(sound.resonance, 0.1f);
    patch.set(1, 8, 0);
    EXPECT_EQ(sound.rows.rows[15].settings.depth, 0);
    // What is set is moved as well, and stays in its range.
    patch.set(1, 6, routeTo(elementIndex::resonance));
    patch.set(1, elementIndex::resonance, 0.95f);
    EXPECT_EQ(sound.resonance, 1);
    EXPECT_EQ(patch.get(1, elementIndex::resonance), 0.95f);
}

// The slot reaches send effects too, and a new connection takes the knob's position over.
TEST_F(Knobs, ReachSendSlotsAndTakeOver) {
    turn(6, 0.25f);
    for (const int element : {1, 65, 66, 67, 68}) {
        patch.set(element, 146, knobEntry(6));
        EXPECT_EQ(patch.get(element, 15), 0.25f) << element;
    }
    turn(6, 0.75f);
    for (const int element : {1, 65, 66, 67, 68}) EXPECT_EQ(patch.get(element, 15), 0.75f);
    patch.set(1, 146, 1);  // 7: none
    turn(6, 0);
    EXPECT_EQ(patch.get(1, 15), 0.75f);
}

// A slot that moves its own connection must come to an end.
TEST_F(Knobs, MayMoveTheirOwnConnection) {
    patch.set(1, 4, 0);
    patch.set(1, 6, routeTo(145));
    patch.set(1, 7, 1);
    patch.set(1, 8, routeTo(146));
    patch.set(1, 9, 0);
    patch.set(1, 145, knobEntry(1));
    for (int i = 0; i <= 100; ++i) turn(1 + i % 6, static_cast<float>(i % 11) / 10);
    EXPECT_EQ(patch.get(1, 145), knobEntry(1));
}

TEST_F(Knobs, BendWhatEachDestinationReads) {
    using E = ElementControls;
    const struct {
        int macro, index;
        float (*read)(const E&);
    } cases[] = {
        {0, 98, [](const E& c) { return c.wave; }},
        {2, 106, [](const E& c) { return c.cutoff; }},
        {3, 104, [](const E& c) { return c.resonance; }},
        {4, 110, [](const E& c) { return c.envelopeToCutoff; }},
        {5, 111, [](const E& c) { return c.filterEnvelope.attackSeconds; }},
        {6, 112, [](const E& c) { return c.filterEnvelope.decaySeconds; }},
        {6, 115, [](const E& c) { return c.filterEnvelope.releaseSeconds; }},
        {7, 126, [](const E& c) { return c.ampEnvelope.attackSeconds; }},
        {8, 127, [](const E& c) { return c.ampEnvelope.decaySeconds; }},
        {9, 130, [](const E& c) { return c.ampEnvelope.releaseSeconds; }},
        {10, 67, [](const E& c) { return c.start; }},
        {11, 78, [](const E& c) { return c.glideCoefficient; }},
        {13, 128, [](const E& c) { return c.ampEnvelope.sustain; }},
        {14, 113, [](const E& c) { return c.filterEnvelope.sustain; }},
    };
    for (const auto& c : cases) {
        patch.set(1, c.index, 0.7f);
        const float at07 = c.read(sound);
        patch.set(1, c.index, 0.5f);
        const float at05 = c.read(sound);
        ASSERT_NE(at05, at07);
        drive(4, c.macro, 0.2f, 0.5f);
        turn(4, 0.6f);  // (0.6 - 0.2) / 2
        EXPECT_FLOAT_EQ(offset(c.macro), 0.2f);
        EXPECT_NEAR(c.read(sound), at07, 1e-5) << c.index;
        patch.set(1, elementIndex::receive, 0);
        EXPECT_EQ(c.read(sound), at05) << c.index;
        patch.set(1, elementIndex::receive, 1);
        EXPECT_NEAR(c.read(sound), at07, 1e-5) << c.index;
        patch.set(0, 140, 0);  // range
        EXPECT_EQ(c.read(sound), at05) << c.index;
    }
    // LFO rates follow where "LFO Rate Ctl" lets them.
    const float rates[3] = {patch.controls().lfo[0].freePerTick,
                            patch.controls().lfo[1].freePerTick, sound.lfo3.freePerTick};
    patch.set(0, 91, 0.5f);
    patch.set(0, global::lfoRateControl, 6.5f / 7.9f);  // LFO 2 and 3
    drive(1, 1);
    turn(1, 0.1f);
    EXPECT_EQ(patch.controls().lfo[0].freePerTick, rates[0]);
    EXPECT_NEAR(patch.controls().lfo[1].freePerTick / rates[1], std::exp(6.8024 * -0.4), 1e-4);
    EXPECT_NEAR(sound.lfo3.freePerTick / rates[2], std::exp(6.8024 * 0.1), 1e-4);
}

TEST_F(Knobs, CombineWithControllersAndRebuild) {
    patch.set(1, elementIndex::resonance, 0.5f);
    drive(5, 3);
    turn(5, 0.3f);
    patch.set(0, global::firstMacro + 3, 0.25f);  // a base of -0.5
    EXPECT_FLOAT_EQ(sound.resonance, 0.6f);
    patch.set(0, global::firstMacro + 3, 0.75f);  // of 0.5: pulled up
    EXPECT_FLOAT_EQ(sound.resonance, 0.85f);
    // A second knob on the same destination owns it once it is set; a rebuild goes by number.
    drive(2, 3);
    EXPECT_FLOAT_EQ(offset(3), 0.3f);
    turn(2, 0.1f);
    EXPECT_FLOAT_EQ(offset(3), 0.1f);
    patch.set(0, macroKnobs[0].offset, 0.4f);
    EXPECT_FLOAT_EQ(offset(3), 0.3f);
    // Knob 5 goes elsewhere; controllers keep what they had.
    patch.set(0, global::glideTime, 1);
    patch.set(0, macroKnobs[4].destination, macroEntry(13));
    EXPECT_FLOAT_EQ(offset(3), 0.1f);
    EXPECT_FLOAT_EQ(sound.resonance, 0.7f);
    EXPECT_EQ(patch.controls().macroBase[11], 1);
    EXPECT_EQ(sound.ampEnvelope.sustain, 1);
    patch.set(0, macroKnobs[4].destination, 0);
    EXPECT_EQ(offset(13), 0);
}

TEST_F(Knobs, TurnTheFirstRotarySpeaker) {
    patch.setElementCount(4);
    for (const int number : {3, 4}) patch.initElement(number, ElementType::effect);
    patch.set(2, elementIndex::item, 54.5f / 128.9f);  // another effect
    patch.set(3, elementIndex::item, 55.5f / 128.9f);
    patch.set(4, elementIndex::item, 56.5f / 128.9f);
    const int parameters[6] = {-1, 25, 27, 28, 29, 30};
    for (int knob = 1; knob <= 6; ++knob) {
        drive(knob, 12, 0.1f);
        turn(knob, 0.7f);
        EXPECT_FLOAT_EQ(offset(12), 0.6f);
        if (knob > 1) {
            EXPECT_FLOAT_EQ(patch.get(3, parameters[knob - 1]), 0.6f) << knob;
        }
    }
    EXPECT_EQ(patch.get(3, 26), 0);
    EXPECT_EQ(patch.get(2, 25), 0);
    EXPECT_EQ(patch.get(4, 25), 0);
    patch.set(3, elementIndex::mute, 1);
    turn(2, 0.3f);
    EXPECT_FLOAT_EQ(patch.get(4, 25), 0.2f);
}

}  // namespace
}  // namespace stratovane
