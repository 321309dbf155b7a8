// Effects behind, between and beside the voices of a part, driven through Engine and its buses.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "effects/catalogue.h"
#include "effects/effect_unit.h"
#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "voice/part_engine.h"
#include "voice/send_bus.h"
#include "voice/send_effects.h"

namespace stratovane {
namespace {

constexpr int waveshaper = 105, delayType = 10;
constexpr int auxOut = 20, firstSend = 21, parameters = 25, level = 139, pan = 140;

/// A part with one saw and an effect behind it, its outputs and the shared buses.
struct Rig {
    EngineShared shared;
    PartEngine part{shared, 3, 5};
    SendBuses buses;
    std::vector<std::vector<float>> outputs{6};

    Rig() {
        part.setSampleRate(44100, 256);
        for (SendBus& bus : buses) bus.prepare(256);
        patch().makeSawtooth();
        patch().setElementCount(2);
        patch().initElement(2, ElementType::effect);
    }
    Patch& patch() { return part.patch(); }
    void chooseEffect(int element, int type) {
        patch().store(element, elementIndex::item, storedEffectType(type));
        for (int i = 0; i < effectParameters; ++i) patch().store(element, parameters + i, 0.5f);
    }
    void note(int key, int velocity) {
        part.handleEvent({static_cast<std::uint8_t>(velocity > 0 ? 0x90 : 0x80),
                          static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(velocity), 0},
                         EventSource::host);
    }
    void render(int frames = 256) {
        std::uint8_t touched[6] = {};
        float* pointers[6];
        for (std::size_t i = 0; i < 6; ++i) {
            outputs[i].assign(static_cast<std::size_t>(frames), 0.0f);
            pointers[i] = outputs[i].data();
        }
        part.render({pointers, touched, 3, buses.data()}, 0, frames, 0);
    }
    float peak(std::size_t output) const {
        float peak = 0;
        for (const float x : outputs[output]) peak = std::max(peak, std::fabs(x));
        return peak;
    }
    float busPeak(std::size_t bus) {
        float peak = 0;
        for (const StereoFrame& f : buses[bus].frames(0, 256))
            peak = std::max(peak, std::fabs(f.left));
        return peak;
    }
};

// Its voice used to wait and then play a tick from long ago, from beyond the tick's samples.
TEST(EffectsInParts, AnElementThatBecomesAnEffectEndsItsVoices) {
    Rig rig;
    rig.note(60, 100);
    rig.render();
    ASSERT_EQ(rig.part.voiceCount(), 1);
    rig.patch().store(1, elementIndex::type, 0);
    rig.render();
    EXPECT_EQ(rig.part.voiceCount(), 0);
}

TEST(EffectsInParts, ProcessWhatIsBeforeThem) {
    Rig plain, shaped, muted, before;
    shaped.chooseEffect(2, waveshaper);
    muted.chooseEffect(2, waveshaper);
    muted.patch().store(2, elementIndex::mute, 1.0f);
    // The same two elements the other way round: the effect has nothing in front of it.
    before.patch().initElement(1, ElementType::effect);
    before.patch().initElement(2, ElementType::analog);
    before.chooseEffect(1, waveshaper);
    for (Rig* rig : {&plain, &shaped, &muted, &before}) {
        rig->note(60, 100);
        rig->render();
        rig->render();
    }
    EXPECT_GT(plain.peak(0), 0.01f);
    EXPECT_NE(plain.outputs[0], shaped.outputs[0]);
    EXPECT_EQ(plain.outputs[0], muted.outputs[0]);
    EXPECT_GT(before.peak(0), 0.01f);
}

TEST(EffectsInParts, RingOnAndFallSilent) {
    Rig rig;
    rig.chooseEffect(2, delayType);
    rig.patch().store(1, 130, 0.0f);  // no release
    rig.note(60, 100);
    rig.render();
    rig.note(60, 0);
    rig.render();
    // The echo comes a quarter of the line later, long after the voice has gone.
    float loudest = 0;
    int blocks = 0;
    while (rig.part.sounding() && blocks < 10000) {
        rig.render();
        loudest = std::max(loudest, rig.peak(0));
        ++blocks;
    }
    EXPECT_EQ(rig.part.voiceCount(), 0);
    EXPECT_GT(loudest, 0.001f);
    EXPECT_GT(blocks, 200000 / 256);  // the tail is played out
    EXPECT_LT(blocks, 10000);
}

TEST(EffectsInParts, TakeTheirOwnWays) {
    struct Case {
        float auxOut;
        bool inChain;
        std::vector<std::size_t> heardOn;
    };
    // Off, split, then pairs from the part's own on; the last pair is the most there is.
    const Case cases[] = {
        {0.0f, true, {0}},          {1.5f / 15.9f, true, {0}},  {2.5f / 15.9f, false, {0}},
        {3.5f / 15.9f, false, {2}}, {4.5f / 15.9f, false, {4}}, {1.0f, false, {4}},
    };
    for (const Case& c : cases) {
        Rig rig;
        rig.chooseEffect(2, waveshaper);
        rig.patch().store(2, auxOut, c.auxOut);
        rig.note(60, 100);
        rig.render();
        rig.render();
        for (std::size_t output = 0; output < 6; output += 2) {
            const bool heard = output == c.heardOn[0] || (c.inChain && output == 0);
            EXPECT_EQ(rig.peak(output) > 0.001f, heard) << c.auxOut << " " << output;
        }
    }
    // All to one side
    Rig rig;
    rig.chooseEffect(2, waveshaper);
    rig.patch().store(2, auxOut, 3.5f / 15.9f);
    rig.patch().store(2, pan, 1.0f);
    rig.note(60, 100);
    rig.render();
    EXPECT_EQ(rig.peak(2), 0.0f);
    EXPECT_GT(rig.peak(3), 0.001f);
}

TEST(EffectsInParts, SendToSharedOrOwnBuses) {
    Rig rig;
    rig.patch().store(0, 63, 1.0f);             // part send 1
    rig.patch().store(2, firstSend + 2, 0.7f);  // the chain effect's send 3
    rig.chooseEffect(2, waveshaper);
    rig.note(60, 100);
    rig.render();
    EXPECT_GT(rig.busPeak(0), 0.001f);
    EXPECT_EQ(rig.busPeak(1), 0.0f);
    EXPECT_GT(rig.busPeak(2), 0.001f);
    // With an effect of its own in slot 1 and the switch on, the part's send leads there.
    Rig own;
    own.patch().store(0, 62, 1.0f);
    own.patch().store(0, 63, 1.0f);
    own.patch().store(firstSendSlot, elementIndex::mute, 0.0f);
    own.chooseEffect(firstSendSlot, waveshaper);
    own.patch().store(firstSendSlot, auxOut, 2.5f / 32.9f);  // pair 2
    own.patch().store(firstSendSlot, level, 0.5f);
    own.patch().store(firstSendSlot, pan, 0.5f);
    own.note(60, 100);
    own.render();
    own.render();
    EXPECT_EQ(own.busPeak(0), 0.0f);
    EXPECT_GT(own.peak(0), 0.001f);  // the part itself
    EXPECT_GT(own.peak(2), 0.001f);  // what its send effect made of it
}

TEST(SendEffects, FeedTheFirstBusFromTheOthers) {
    EngineShared shared;
    Patch master{shared};
    master.setPlace({.part = 16, .outputPairs = 3});
    SendBuses buses;
    for (SendBus& bus : buses) bus.prepare(64);
    const int third = firstSendSlot + 2;
    for (const int slot : {firstSendSlot, third}) {
        master.store(slot, elementIndex::mute, 0.0f);
        master.store(slot, elementIndex::item, storedEffectType(waveshaper));
        for (int i = 0; i < effectParameters; ++i) master.store(slot, parameters + i, 0.5f);
        master.store(slot, level, 0.5f);
        master.store(slot, pan, 0.5f);
    }
    master.store(firstSendSlot, auxOut, 1.5f / 32.9f);  // pair 1
    master.store(third, auxOut, 2.5f / 32.9f);          // pair 2
    master.store(third, firstSend, 0.5f);               // and into bus 1

    std::vector<std::vector<float>> outputs(6, std::vector<float>(64));
    auto run = [&] {
        float* pointers[6];
        std::uint8_t touched[6] = {};
        for (std::size_t i = 0; i < 6; ++i) {
            std::fill(outputs[i].begin(), outputs[i].end(), 0.0f);
            pointers[i] = outputs[i].data();
        }
        runSendEffects(master, buses, buses.data(), 0, {pointers, touched, 3, buses.data()},
                       {0, 64, 0});
        return touched[0] + 2 * touched[2] + 4 * touched[4];
    };
    std::vector<StereoFrame> sine(64);
    for (std::size_t i = 0; i < 64; ++i)
        sine[i].left = sine[i].right = 0.1f * std::sin(0.3f * static_cast<float>(i));
    buses[2].add(sine, {1, 1}, 0);
    EXPECT_EQ(run(), 3);  // pairs 1 and 2
    EXPECT_GT(std::fabs(outputs[0][20]), 1e-4f);
    EXPECT_GT(std::fabs(outputs[2][20]), 1e-4f);
    // Nothing was sent any more: the buses are silent again.
    for (SendBus& bus : buses) EXPECT_FALSE(bus.written());
    buses[1].add(sine, {1, 1}, 0);  // a slot without an effect
    EXPECT_EQ(run(), 0);
    EXPECT_FALSE(buses[1].written());
}

TEST(EffectsInParts, ShowTheirOwnTexts) {
    Rig rig;
    rig.chooseEffect(2, delayType);
    const auto text = [&](int index, bool name) {
        char buffer[64];
        TextOut out{buffer};
        if (name)
            rig.patch().showName(out, 2, index);
        else
            rig.patch().showValue(out, 2, index);
        return std::string{out.view()};
    };
    EXPECT_EQ(text(elementIndex::item, false), "Delay");
    EXPECT_EQ(text(parameters + 3, true), "Feedback");
    EXPECT_EQ(text(parameters + 3, false), "50 %");
    EXPECT_EQ(text(parameters + 11, true), "");
    rig.patch().store(2, elementIndex::item, 1.0f);
    EXPECT_EQ(text(elementIndex::item, false), "");
    EXPECT_EQ(rig.patch().element(2).unit(), nullptr);
}

TEST(EffectsInParts, AreReplacedOnThePlayingPatchByTheIdleCall) {
    Rig rig;
    rig.patch().handOver();
    rig.note(60, 100);
    rig.render();
    rig.chooseEffect(2, waveshaper);
    EXPECT_EQ(rig.patch().element(2).unit(), nullptr);
    rig.part.idle();
    const EffectUnit* first = rig.patch().element(2).unit();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->type().number, waveshaper);
    rig.render();
    rig.chooseEffect(2, waveshaper);  // the same again keeps the unit
    rig.part.idle();
    EXPECT_EQ(rig.patch().element(2).unit(), first);
    rig.chooseEffect(2, delayType);
    rig.part.idle();
    rig.render();
    EXPECT_EQ(rig.patch().element(2).unit()->type().number, delayType);
    // What was replaced is freed a few idle calls later.
    EXPECT_FALSE(rig.shared.retired.empty());
    for (int i = 0; i < 8; ++i) rig.shared.retired.tick(rig.shared.epoch);
    EXPECT_TRUE(rig.shared.retired.empty());
}

}  // namespace
}  // namespace stratovane
