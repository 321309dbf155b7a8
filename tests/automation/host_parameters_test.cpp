#include "automation/host_parameters.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "engine/command_ring.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"

namespace stratovane {
namespace {

struct Rig {
    EngineShared shared;
    Trace trace;
    MultiSetup multi;
    CommandRing commands;
    HostParameters parameters{shared, multi, commands};
    Engine engine{shared, trace, 4};
    Rig() { parameters.attach(engine); }

    std::string name(int index) const { return text(index, &HostParameters::showName); }
    std::string display(int index, float value) {
        parameters.set(index, value);
        return text(index, &HostParameters::showValue);
    }
    std::string text(int index, void (HostParameters::*show)(TextOut&, int) const) const {
        char buffer[64];
        TextOut out{buffer};
        (parameters.*show)(out, index);
        return std::string{out.view()};
    }
};

TEST(HostParameters, Names) {
    const Rig rig;
    constexpr int insert = 56, master = 2432;
    std::string names;
    for (const int index :
         {0, 1, 2, 152, 15 * 152, 2 * 152 + 27, 152 + 9, 46, 50, insert, insert + 18,
          insert + 24 * 3 + 19, master, master + 24 + 18, master + 24 * 3 + 23, master + 17,
          master + 1})  // the last: no effect, no name
        names += rig.name(index) + "|";
    EXPECT_EQ(names,
              "Master Volume| Part 1  Mute|Part 1  Level|Part 2  Link to Ch.1|"
              "Part 16  Link to Ch.15| Part 3  Bend Up| Part 2  Edit Knob 1|Part 1  Arp. Gate|"
              " Part 1  | Part 1  |Part 1  FX Output Mix|Part 1  FX Output Pan| FX1  Mute|"
              "FX2  Output Level|FX4  Send to FX4| FX1  Output| FX1  |");
    rig.engine.patch(1).setText(-6, "Brightness");
    EXPECT_EQ(rig.name(152 + 9), " Part 2  Brightness");
}

TEST(HostParameters, Displays) {
    Rig rig;
    constexpr int insert = 56, master = 2432;
    const struct {
        int index;
        std::vector<float> values;
        const char* texts;
    } cases[] = {
        {0, {0.5f, 0, 1}, "-6.0 dB|-oo|+6.0 dB|"},
        {1, {0.6f, 0.5f}, "Mute|-|"},
        {2, {0.7072f}, "+0.0 dB|"},
        {3, {0.5f, 1, 0, 0.495f, 0.505f, 0.4951f}, "<C>|R64|L64|L1|R1|<C>|"},
        {4, {0.05f, 0, 1}, "2|1|4|"},
        {5, {0.5f}, "-6.0 dB|"},
        {9, {0.3f}, "30%|"},
        {24, {0.6f, 0.5f}, "Use Patch FX (if any)|Use Global FX|"},
        {25, {0.51f, 0.5f}, "On|Off|"},
        {31, {0.25f}, "-50 %|"},
        {45, {0.5f}, "50%|"},
        {46, {0.25f}, "25 %|"},
        {152, {0.7f}, "On|"},
        {insert + 1, {0.5f, 1}, "50%|100%|"},
        {insert + 18, {0.5f}, "-6.0 dB|"},
        {insert + 19, {0.75f}, "R32|"},
        {master, {1, 0}, "MUTE|PLAY|"},
        {master + 17, {0, 0.05f, 1}, "OFF|1|4|"},
        {master + 18, {0.5f, 0.0099f}, "+0.0 dB|-oo|"},
        {master + 19, {0.5f}, "<C>|"},
    };
    for (const auto& [index, values, texts] : cases) {
        std::string shown;
        for (const float value : values) shown += rig.display(index, value) + "|";
        EXPECT_EQ(shown, texts) << index;
    }
}

TEST(HostParameters, ReachPatchesAndComeBack) {
    Rig rig;
    std::mt19937 random{5};
    std::uniform_real_distribution<float> values{0.0f, 1.0f};
    for (int index = 1; index < hostParameters; ++index) {
        const float v = values(random);
        rig.parameters.set(index, v);
        EXPECT_NEAR(rig.parameters.get(index), v, 1e-6f) << index;
        const HostAddress a = decodeHostIndex(index);
        if (hostRow(a).target < 0) continue;
        const Patch& patch =
            a.block == HostBlock::master ? rig.engine.master() : rig.engine.patch(a.part);
        const int element = a.block == HostBlock::strip ? 0 : firstSendSlot + a.slot;
        const bool rate = a.block == HostBlock::strip && a.row == strip::arpeggiatorRate;
        EXPECT_NEAR(patch.get(element, hostRow(a).target), rate ? v * 0.8f + 0.2f : v, 1e-6f)
            << index;
    }
    // What a patch says is what the host reads; what no patch holds, or an insert, is what was set.
    rig.engine.patch(4).store(0, 67, 0.25f);
    EXPECT_EQ(rig.parameters.get(4 * 152 + 2), 0.25f);
    rig.engine.patch(4).store(0, 23, 0.0f);
    EXPECT_EQ(rig.parameters.get(4 * 152 + 45), 0.0f);
}

TEST(HostParameters, LimitWhatTheyAreGiven) {
    Rig rig;
    for (const auto& [given, stored] :
         {std::pair{1.5f, 1.0f}, {-0.2f, 0.0f}, {std::nanf(""), 0.0f}}) {
        rig.parameters.set(25, given);
        EXPECT_EQ(rig.parameters.get(25), stored);
    }
    rig.parameters.set(-1, 1);
    rig.parameters.set(hostParameters, 1);
    EXPECT_EQ(rig.parameters.get(-1), 0.0f);
    EXPECT_EQ(rig.parameters.get(hostParameters), 0.0f);
}

TEST(HostParameters, StartAsDocumented) {
    EngineShared shared;
    MultiSetup multi;
    CommandRing commands;
    const HostParameters parameters{shared, multi, commands};
    for (int index = 0; index < hostParameters; ++index) {
        float expected = 0;
        if (index < 2432) {
            const int k = index % 152, r = (k - 56) % 24;
            if (k == 3 || k == 21 || k == 22 || k == 23 || index == 0) expected = 0.5f;
            if (k == 4) expected = 0.05f;
            if (k == 16 || k == 19) expected = 1.0f;
            if (k == 26) expected = 0.7087f;
            if (k >= 56 && (r == 18 || r == 19)) expected = 0.5f;
        } else {
            const int r = (index - 2432) % 24;
            if (r == 17) expected = 0.05f;
            if (r == 18 || r == 19) expected = 0.5f;
        }
        EXPECT_EQ(parameters.get(index), expected) << index;
    }
}

TEST(HostParameters, SetMasterGainLinksAndMutes) {
    Rig rig;
    const float g = 2.2f * 0.5f;
    rig.engine.setLift(0.5f);
    rig.parameters.set(0, 0.5f);
    EXPECT_FLOAT_EQ(rig.shared.masterGain, (8 - g) * 0.25f * 0.25f);
    rig.parameters.set(152, 1.0f);
    EXPECT_TRUE(rig.multi.part[0].linked);
    EXPECT_EQ(rig.commands.takeLinkedOff(), 0u);
    rig.parameters.set(152, 0.0f);
    EXPECT_FALSE(rig.multi.part[0].linked);
    EXPECT_EQ(rig.commands.takeLinkedOff(), 2u);
    rig.parameters.set(152, 0.0f);
    EXPECT_EQ(rig.commands.takeLinkedOff(), 0u);
    rig.parameters.set(152 * 3 + 1, 1.0f);
    EXPECT_EQ(rig.commands.takeOff(), 8u);
    rig.parameters.set(152 * 3 + 1, 0.9f);
    EXPECT_EQ(rig.commands.takeOff(), 0u);
}

/// What was told of, in order.
struct Listener : HostParameterObserver {
    std::vector<int> told;
    void hostParameterSet(int index) override { told.push_back(index); }
};

TEST(HostParameters, RefreshWhatTheEditorChanged) {
    Rig rig;
    Listener listener;
    rig.parameters.refreshPart(3);
    rig.parameters.observe(&listener);
    rig.parameters.refreshPart(3);
    EXPECT_TRUE(listener.told.empty());  // nothing differs
    Patch& patch = rig.engine.patch(3);
    patch.store(0, 60, 0.9f);   // pan
    patch.store(0, 103, 0.2f);  // knob 3
    patch.store(0, 23, 0.1f);   // arpeggio rate, below what the host can say
    patch.store(0, 20, 0.7f);
    patch.armLearn();
    rig.parameters.refreshPart(3);
    EXPECT_EQ(listener.told,
              (std::vector<int>{3 * 152 + 3, 3 * 152 + 11, 3 * 152 + 42, 3 * 152 + 45}));
    EXPECT_EQ(rig.parameters.stored(3 * 152 + 3), 0.9f);
    EXPECT_EQ(rig.multi.part[3].knobs[2], 0.2f);
    EXPECT_EQ(patch.get(0, 23), 0.1f);
    EXPECT_TRUE(patch.learn(30));  // a control that is being learned is not disturbed
    EXPECT_EQ(patch.storedTarget(30), 20);
}

TEST(HostParameters, RefreshEffects) {
    Rig rig;
    Listener listener;
    rig.parameters.observe(&listener);
    rig.engine.master().store(67, 27, 0.29f);
    rig.engine.patch(2).store(68, 140, 0.11f);
    rig.parameters.refreshMaster(2);
    rig.parameters.refreshInsert(2, 3);
    EXPECT_EQ(rig.parameters.get(2432 + 48 + 3), 0.29f);
    EXPECT_EQ(rig.parameters.get(2 * 152 + 56 + 72 + 19), 0.11f);
    ASSERT_EQ(listener.told.size(), 48u);
    EXPECT_EQ(listener.told.front(), 2432 + 48);
    EXPECT_EQ(listener.told.back(), 2 * 152 + 151);
}

TEST(HostParameters, FindTheirPlaceBack) {
    for (int index = 0; index < hostParameters; ++index) {
        const HostAddress a = decodeHostIndex(index);
        if (hostRow(a).target < 0) continue;
        const bool master = a.block == HostBlock::master;
        const int element = a.block == HostBlock::strip ? 0 : 65 + a.slot;
        EXPECT_EQ(hostIndexOf(master ? parts : a.part, element, hostRow(a).target), index);
    }
    for (const auto& [part, element, index] : {std::tuple{0, 0, 99},
                                               {0, 1, 139},
                                               {16, 0, 60},
                                               {17, 65, 0},
                                               {-1, 0, 60},
                                               {0, 69, 0},
                                               {0, 65, 19},
                                               {0, 0, -1}})
        EXPECT_EQ(hostIndexOf(part, element, index), -1) << part << " " << element << " " << index;
}

}  // namespace
}  // namespace stratovane
