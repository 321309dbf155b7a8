#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "midi/midi_rig.h"

namespace stratovane {
namespace {

using Rig = MidiRig;

TEST(MidiInput, QueuesChannelMessages) {
    Rig rig;
    const auto queued = [&rig](std::initializer_list<std::array<int, 3>> messages) {
        std::string all;
        for (const auto& [status, d1, d2] : messages) {
            rig.send(status, d1, d2, 5, -5);
            all += rig.take(2) + "|";
        }
        return all;
    };
    EXPECT_EQ(queued({{0x82, 60, 77}, {0x92, 60, 0}, {0x92, 60, 100}, {0xA2, 60, 127}}),
              "5:82 60 0 0|5:82 60 0 0|5:92 60 100 251|5:A2 127 60 0|");
    EXPECT_EQ(queued({{0xB2, 7, 90}, {0xB2, 38, 1}, {0xB2, 96, 1}, {0xB2, 121, 0}}),
              "5:B2 7 90 0|5:B2 38 1 0|5:B2 96 1 0|5:B2 121 0 0|");
    EXPECT_EQ(queued({{0xE2, 3, 64}, {0xD2, 127, 0}}), "5:E2 3 64 0|5:D2 127 0 0|");
    EXPECT_EQ(queued({{0xF2, 1, 1},
                      {0x72, 1, 1},
                      {0xB2, 126, 1},
                      {0xB2, 0, 5},
                      {0xB2, 32, 5},
                      {0xB2, 98, 5},
                      {0xB2, 101, 5}}),
              "|||||||");
    rig.send(0x90, 60, 100, -20);
    EXPECT_EQ(rig.take(0), "0:90 60 100 0");
}

TEST(MidiInput, FollowsPartLinks) {
    Rig rig;
    rig.multi.part[3].linked = rig.multi.part[4].linked = true;
    rig.multi.part[15].linked = true;
    rig.send(0x93, 60, 100);
    EXPECT_EQ(rig.midi.lists()[4].size(), 1);
    EXPECT_EQ(rig.midi.lists()[5].size(), 1);
    EXPECT_EQ(rig.midi.lists()[6].size(), 0);
    rig.midi.clear();
    rig.send(0x94, 60, 100);
    EXPECT_EQ(rig.midi.lists()[3].size(), 0);
    EXPECT_EQ(rig.midi.lists()[5].size(), 1);
    rig.midi.clear();
    rig.send(0x9F, 60, 100);
    EXPECT_EQ(rig.midi.lists()[15].size(), 1);
}

TEST(MidiInput, DropsWhatIsTooMuchAndTellsOnce) {
    Rig rig;
    for (int i = 0; i < 300; ++i) rig.send(0x90, 60, 100, i);
    EXPECT_EQ(rig.midi.lists()[0].size(), 127);
    EXPECT_EQ(rig.midi.lists()[0].lastFrame(), 126);
}

TEST(MidiInput, SetsRegisteredParameters) {
    struct Case {
        int msb, lsb, data;
        int row;
        float value;
    };
    const Case cases[] = {
        {0, 0, 2, strip::bendUp, 0.128125f}, {0, 0, 2, strip::bendDown, 0.128125f},
        {0, 0, 13, strip::bendUp, 1.0f},     {0, 0, 12, strip::bendUp, 12 / 128.0f * 8.2f},
        {0, 1, 32, strip::fineTune, 0.25f},  {0, 2, 64, strip::coarseTune, 0.5f},
        {0, 2, 0, strip::coarseTune, 0.0f},  {0, 3, 127, strip::tuningScale, 1.0f},
        {0, 4, 64, strip::tuningBank, 0.5f},
    };
    for (const Case& c : cases) {
        Rig rig;
        rig.controllers({{101, c.msb}, {100, c.lsb}, {6, c.data}}, 2);
        EXPECT_FLOAT_EQ(rig.parameters.get(2 * partRows + c.row), c.value)
            << c.lsb << " " << c.data;
    }
    // Nothing selected, nothing set.
    Rig rig;
    const float before = rig.parameters.get(strip::bendUp);
    for (const auto& [msb, lsb] : {std::pair{127, 127}, std::pair{0, 5}, std::pair{1, 0}}) {
        rig.controllers({{101, msb}, {100, lsb}, {6, 99}});
        EXPECT_EQ(rig.parameters.get(strip::bendUp), before);
    }
    rig.controllers({{101, 0}, {100, 0}, {121, 0}, {6, 12}});
    EXPECT_EQ(rig.parameters.get(strip::bendUp), before);
}

TEST(MidiInput, SetsPatchParametersByNumber) {
    Rig rig;
    rig.controllers({{99, 2}, {98, 44}, {6, 64}});
    EXPECT_EQ(rig.engine.patch(0).get(1, 44), 0.5f);
    rig.controllers({{99, 0}, {98, 69}, {6, 127}});
    EXPECT_EQ(rig.engine.patch(0).get(0, 69), 1.0f);
    // These go the host's way, mapped as it shows them.
    rig.controllers({{99, 0}, {98, 55}, {6, 0}});
    EXPECT_EQ(rig.parameters.stored(strip::coarseTune), 0.0f);
    rig.controllers({{99, 0}, {98, 103}, {6, 32}});
    EXPECT_EQ(rig.parameters.stored(strip::firstKnob + 2), 0.25f);
    rig.controllers({{99, 0}, {98, 73}, {6, 2}});
    EXPECT_FLOAT_EQ(rig.parameters.stored(strip::bendDown), 0.128125f);
    // Elements that do not exist, the null number and General MIDI mode leave all as it is.
    const std::uint32_t changes = rig.engine.patch(0).changes();
    rig.controllers({{99, 127}, {98, 127}, {6, 1}});
    rig.multi.generalMidi = true;
    rig.controllers({{99, 0}, {98, 69}, {6, 0}});
    EXPECT_EQ(rig.engine.patch(0).changes(), changes);
    EXPECT_EQ(rig.engine.patch(0).get(0, 69), 1.0f);
    rig.controllers({{126, 1}}, 7);
    EXPECT_EQ(rig.parameters.get(7 * partRows + strip::monoMode), 1.0f);
    rig.controllers({{127, 1}}, 7);
    EXPECT_EQ(rig.parameters.get(7 * partRows + strip::monoMode), 0.0f);
}

TEST(MidiInput, QueuesProgramChanges) {
    struct Case {
        const char* what;
        bool gm;
        int channel, msb, lsb, program;
        std::uint32_t word;
    };
    const Case cases[] = {
        {"bank 0", false, 0, 0, 0, 5, 0x10005},
        {"LSB is the bank", false, 3, 0, 84, 7, 0x10000 | 84 << 8 | 7},
        {"no such bank", false, 3, 1, 0, 7, 0},
        {"GM sound", true, 3, 0, 0, 7, 0x10000 | 78 << 8 | 7},
        {"GM drums without kits", true, 9, 0, 0, 16, 0x10000 | 79 << 8},
        {"GM drums with a kit", true, 9, 0, 0, 8, 0x10000 | 79 << 8 | 8},
        {"melodic bank on the drum channel", true, 9, 121, 0, 7, 0x10000 | 78 << 8 | 7},
        {"drum bank elsewhere", true, 2, 120, 0, 8, 0x10000 | 79 << 8 | 8},
        {"combi", true, 2, 64, 0, 8, 0x10000 | 32639},
        {"combi", true, 9, 126, 0, 8, 0x10000 | 32639},
    };
    for (const Case& c : cases) {
        Rig rig;
        rig.presence.set(79, 8, true);
        rig.multi.generalMidi = c.gm;
        rig.controllers({{0, c.msb}, {32, c.lsb}}, c.channel);
        rig.send(0xC0 | c.channel, c.program);
        EXPECT_EQ(rig.pending(c.channel), c.word) << c.what;
        EXPECT_EQ(rig.multi.programRequests.get(), c.word != 0 ? 1u : 0u) << c.what;
        // The same once more, waiting or done, asks for nothing.
        rig.multi.part[static_cast<std::size_t>(c.channel)].pendingProgram.clear(programWaits);
        rig.send(0xC0 | c.channel, c.program);
        EXPECT_EQ(rig.pending(c.channel), c.word & 0xFFFF) << c.what;
    }
}

TEST(MidiInput, ChainsCombis) {
    Rig rig;
    rig.settings.midiCombis = CombiUse::chain;
    rig.multi.combis.entries[5] = 30725;
    rig.multi.combis.entries[6] = 100;  // no combi's location
    rig.send(0xC4, 5);
    EXPECT_EQ(rig.pending(4), 0x10000u | 30725);
    EXPECT_EQ(rig.multi.combis.current.get(), 5);
    rig.send(0xC4, 6);
    EXPECT_EQ(rig.pending(4), 0x10006u);
    // One that the library has replaces what other parts wait for.
    rig.presence.set(120, 5, true);
    rig.send(0xC4, 5);
    EXPECT_EQ(rig.pending(4), 0x10000u | 30725);
    EXPECT_EQ(rig.pending(3), 0xFFFFu);
}

TEST(MidiInput, StepsThroughCombis) {
    struct Case {
        const char* what;
        int next, previous;
        std::vector<std::pair<int, int>> input;
        std::vector<int> current;
    };
    const Case cases[] = {
        {"one controller, up once", 80, 80, {{80, 100}, {80, 100}}, {10, 10}},
        {"up twice", 80, 80, {{80, 100}, {80, 50}, {80, 100}}, {10, 10, 20}},
        {"back", 80, 80, {{80, 50}, {80, 20}}, {-1, 30}},
        {"two controllers",
         81,
         82,
         {{81, 64}, {81, 0}, {81, 64}, {82, 0}, {82, 64}},
         {10, 10, 20, 20, 10}},
        {"round", 81, 82, {{82, 127}, {82, 0}, {81, 127}}, {30, 30, 10}},
        {"others", 81, 82, {{83, 127}}, {-1}},
    };
    for (const Case& c : cases) {
        Rig rig;
        rig.settings.combiNextController = c.next;
        rig.settings.combiPreviousController = c.previous;
        for (const int slot : {10, 20, 30})
            rig.multi.combis.entries[static_cast<std::size_t>(slot)] = 30720 + slot;
        rig.presence.set(120, 10, true);
        for (std::size_t i = 0; i < c.input.size(); ++i) {
            rig.controllers({c.input[i]});
            EXPECT_EQ(rig.multi.combis.current.get(), c.current[i]) << c.what << " " << i;
        }
        // The bank of the last one is part 16's, there or not; only what is there is asked for.
        EXPECT_EQ(rig.multi.part[15].bankSelect.get(), c.current.back() < 0 ? 0 : 120) << c.what;
        for (const Request& request : rig.takeRequests())
            EXPECT_EQ(request.argument, 30730) << c.what;
    }
}

TEST(MidiInput, QueuesCommandsBehindEvents) {
    Rig rig;
    rig.multi.part[2].linked = true;
    rig.send(0x92, 60, 100, 33);
    rig.midi.queue({2, CommandKind::linkedNote, 61, 90});
    rig.midi.queue({2, CommandKind::note, 61, 0});
    rig.midi.queue({2, CommandKind::controller, 1, 55});
    rig.midi.queue({2, CommandKind::controller, 2, 64});
    const PartEvents third = rig.midi.lists()[3];
    EXPECT_EQ(rig.take(2),
              "33:92 60 100 0, 33:92 61 90 0, 33:82 61 0 0, 33:B2 1 55 0, 33:E2 254 64 127");
    ASSERT_EQ(third.size(), 2);
    EXPECT_EQ(third.begin()[1].data1, 61);
}

}  // namespace
}  // namespace stratovane
