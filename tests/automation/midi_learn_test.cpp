#include "automation/midi_learn.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/host_parameters.h"
#include "engine/command_ring.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/effect_preset.h"

namespace stratovane {
namespace {

struct Rig : HostParameterObserver {
    EngineShared shared;
    Trace trace;
    MultiSetup multi;
    CommandRing commands;
    HostParameters parameters{shared, multi, commands};
    Engine engine{shared, trace, 4};
    MidiLearn learn{parameters, trace};
    int lastSet = -1;
    Patch& patch = engine.patch(0);

    Rig() {
        parameters.attach(engine);
        parameters.observe(this);
        for (int i = 0; i < 128; ++i) patch.assignController(i, noParameter);
    }
    void hostParameterSet(int index) override { lastSet = index; }

    std::string name(int controller) const {
        char buffer[64];
        TextOut out{buffer};
        MidiLearn::showController(out, patch, controller);
        return std::string{out.view()};
    }
    std::string title(const LearnTarget& target) {
        const auto menu = learn.open(engine, target);
        if (!menu) return "no menu";
        char buffer[16];
        TextOut out{buffer};
        menu->showTitle(out);
        return std::string{out.view()} + (menu->offersForget() ? " and Forget" : "");
    }
};

TEST(MidiLearn, NamesAllControllers) {
    const Rig rig;
    std::string named;  // the others are numbers
    for (int n = 0; n < 128; ++n) {
        char plain[8];
        TextOut out{plain};
        out.print("%.3d. ", n);
        if (rig.name(n) != out.view()) named += rig.name(n) + "|";
        EXPECT_EQ(MidiLearn::isOffered(n), !rig.name(n).starts_with("-G")) << n;
    }
    EXPECT_EQ(named,
              "-G000. Bank MSB|-G006. Data Entry|011. Expression|-G032. Bank LSB|064. Sustain|"
              "066. Sostenuto|067. Soft Pedal|068. Legato Switch|084. Glide Start Note|"
              "-G098. NRPN LSB|-G099. NRPN MSB|-G100. RPN LSB|-G101. RPN MSB|"
              "-G120. All Sound Off|-G121. Reset Controllers|-G123. All Notes Off|"
              "-G126. Mono Mode|-G127. Poly Mode|");
}

TEST(MidiLearn, NamesWhatControllersDrive) {
    Rig rig;
    rig.patch.assignController(7, 67);
    rig.patch.assignController(64, 1 << 8 | 106);
    rig.patch.assignController(70, 200 << 8 | 3);  // an element that does not exist
    rig.patch.assignController(6, 67);             // an old map's: kept, but not obeyed
    EXPECT_EQ(rig.name(7), "007. Level");
    EXPECT_EQ(rig.name(64), "064. E1 Cutoff");
    EXPECT_EQ(rig.name(70), "070. E200 ");
    EXPECT_EQ(rig.name(6), "-G006. Data Entry");
    EXPECT_EQ(rig.patch.storedTarget(6), 67);
}

TEST(MidiLearn, AssignsAndForgets) {
    Rig rig;
    const LearnTarget level{0, 0, 67}, cutoff{0, 1, 106};
    EXPECT_EQ(rig.title(level), "CC");
    rig.learn.assign(rig.engine, level, 20);
    rig.learn.assign(rig.engine, level, 12);
    for (const int refused : {0, 6, 98, 123, 128, -1}) rig.learn.assign(rig.engine, level, refused);
    EXPECT_EQ(rig.title(level), "CC 12 and Forget");
    EXPECT_EQ(rig.title(cutoff), "CC");
    rig.learn.assign(rig.engine, cutoff, 12);  // a controller drives one parameter
    EXPECT_EQ(rig.title(level), "CC 20 and Forget");
    EXPECT_EQ(rig.title(cutoff), "CC 12 and Forget");
    rig.learn.forget(rig.engine, level);
    rig.learn.forget(rig.engine, level);
    EXPECT_EQ(rig.title(level), "CC");
    EXPECT_EQ(rig.patch.storedTarget(12), 1 << 8 | 106);
    EXPECT_EQ(rig.patch.storedTarget(0), noParameter);
}

TEST(MidiLearn, LearnsTheNextController) {
    Rig rig;
    rig.patch.store(0, 67, 0.3f);
    rig.learn.arm(rig.engine, {0, 0, 67});
    EXPECT_EQ(rig.patch.get(0, 67), 0.3f);
    EXPECT_EQ(rig.lastSet, 2);  // the host notices "Level"
    EXPECT_EQ(rig.parameters.stored(2), 0.3f);
    EXPECT_FALSE(rig.patch.learn(99));  // the engine's own
    EXPECT_TRUE(rig.patch.learn(22));
    EXPECT_EQ(rig.title({0, 0, 67}), "CC 22 and Forget");
    EXPECT_FALSE(rig.patch.learn(23));
    // Another parameter that is set meanwhile ends it.
    rig.learn.arm(rig.engine, {0, 0, 67});
    rig.parameters.set(3, 0.5f);
    EXPECT_FALSE(rig.patch.learn(23));
    // The host's arpeggio rate ends above the patch's.
    rig.patch.store(0, 23, 0.1f);
    rig.learn.arm(rig.engine, {0, 0, 23});
    EXPECT_EQ(rig.patch.get(0, 23), 0.1f);
}

TEST(MidiLearn, KnowsWhichControlsTakePart) {
    Rig rig;
    const int element = firstSendSlot + 1;
    EXPECT_EQ(rig.title({0, element, 139}), "no menu");  // no effect there
    loadEffectPreset(rig.patch, element, 98);
    EXPECT_EQ(rig.title({0, element, 139}), "CC");
    EXPECT_EQ(rig.lastSet, 56 + 24 + 18);
    for (const int panel : {63, 64, 65, 66})
        EXPECT_EQ(rig.title({0, element, panel}), "no menu") << panel;
    EXPECT_EQ(rig.title({0, element, 62}), "CC");
    EXPECT_EQ(rig.title({0, 1, 63}), "CC");
    const LearnTarget none[] = {{0, 0, -1}, {0, 0, 252}, {0, 1, 256}, {0, 69, 0}, {16, 0, 0}};
    for (const LearnTarget& target : none) {
        EXPECT_EQ(rig.title(target), "no menu");
        rig.learn.assign(rig.engine, target, 50);
        rig.learn.arm(rig.engine, target);
        rig.learn.forget(rig.engine, target);
        EXPECT_EQ(rig.patch.storedTarget(50), noParameter);
    }
}

}  // namespace
}  // namespace stratovane
