// The plug-in as a host sees it, through the library's entry point.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "host/host_support.h"
#include "measure/measure.h"

namespace stratovane {
namespace {

TEST(Boundary, FillsTheEffectRecord) {
    TestHost host;
    ASSERT_NE(host.record, nullptr);
    const EffectRecord& r = *host.record;
    EXPECT_EQ((std::vector{r.magic, r.programCount, r.parameterCount, r.inputCount, r.outputCount,
                           r.flags, r.uniqueId, r.version}),
              (std::vector{'M' << 24 | 'r' << 16 | 'x' << 8 | 'P', 1, 2528, 0, 8, 0x131,
                           fourCharacters("QvRR"), 1}));
    EXPECT_EQ(r.inputOutputRatio, 1.0f);
    EXPECT_NE(r.object, nullptr);
    EXPECT_EQ(r.userPointer, nullptr);
    for (const char c : r.future) EXPECT_EQ(c, 0);
    EXPECT_EQ(host.requests.front(), static_cast<std::int32_t>(HostRequest::version));
    EXPECT_EQ(host.sent(HostRequest::needIdle), 1);
}

TEST(Boundary, RefusesAHostThatDoesNotAnswer) {
    TestHost host{{}, {.answers = false}};
    EXPECT_EQ(host.record, nullptr);
}

TEST(Boundary, AnswersRequests) {
    TestHost host;
    for (const auto& [opcode, answer] : {std::pair{Opcode::identify, fourCharacters("ZqRk")},
                                         {Opcode::interfaceVersion, 2300},
                                         {Opcode::plugCategory, 2},
                                         {Opcode::categoryCount, 1},
                                         {Opcode::vendorVersion, 0},
                                         {Opcode::keysRequired, 0},
                                         {Opcode::canBeAutomated, 1},
                                         {Opcode::copyProgram, 1},
                                         {Opcode::getMeterLevel, 0},
                                         {Opcode::idle, 1}})
        EXPECT_EQ(host.ask(opcode, 99), answer) << static_cast<int>(opcode);
    for (const std::int32_t unknown : {16, 17, 27, 31, 46, 66, 1000, -1})
        EXPECT_EQ(host.ask(static_cast<Opcode>(unknown)), 0) << unknown;
    for (const auto& [opcode, answer] : {std::pair{Opcode::effectName, "Stratovane 2"},
                                         {Opcode::productString, "Stratovane 2"},
                                         {Opcode::getProgramName, "Stratovane 2"},
                                         {Opcode::vendorString, "Taldrimor"},
                                         {Opcode::getParameterLabel, ""}})
        EXPECT_EQ(host.text(opcode, 5), answer);
    // Program number and name
    host.ask(Opcode::setProgram, 0, 1);
    EXPECT_EQ(host.ask(Opcode::getProgram), 0);
    char longName[] = "a name of more than thirty-one characters";
    host.ask(Opcode::setProgramName, 0, 0, longName);
    EXPECT_EQ(host.text(Opcode::getProgramName), std::string{longName}.substr(0, 31));
    EXPECT_EQ(host.text(Opcode::programNameIndexed, 17), std::string{longName}.substr(0, 31));
    // Every request that wants a pointer survives none.
    for (std::int32_t opcode = 2; opcode < 70; ++opcode)
        host.ask(static_cast<Opcode>(opcode), 0, 0, nullptr);
    EXPECT_EQ(host.text(Opcode::effectName), "Stratovane 2");
}

TEST(Boundary, SaysWhatItCanDo) {
    for (const auto& [setting, names] :
         {std::pair{"OFF", -1}, {"1", -1}, {"2", 1}, {"3", 1}, {"ON", 1}, {"9", 1}}) {
        TestHost host{std::string{"MIDI Patches="} + setting + "\n"};
        for (const auto& [text, answer] : {std::pair{"midiProgramNames", names},
                                           {"receiveMrxEvents", 1},
                                           {"sendMrxMidiEvent", 1},
                                           {"receivemrxevents", -1},
                                           {"receiveMrxEvents ", -1}})
            EXPECT_EQ(host.ask(Opcode::canDo, 0, 0, const_cast<char*>(text)), answer)
                << setting << text;
    }
}

TEST(Boundary, DescribesItsOutputs) {
    // Per output its label, flags and arrangement.
    for (const auto& [letters, outputs] :
         {std::pair{"SMS",
                    "Strato 1 31,Strato 1 31,Strato 2L 10,Strato 2R 10,Strato 3 31,"
                    "Strato 3 31,"},
          {"QQ", "Strato 1+2 711,Strato 1+2 711,Strato 1+2 711,Strato 1+2 711,"}}) {
        TestHost host{std::string{"Outputs="} + letters + "\n"};
        std::string described;
        OutputProperties p;
        for (std::int32_t i = 0; host.ask(Opcode::getOutputProperties, i, 0, &p) == 1; ++i) {
            EXPECT_LE(std::strlen(p.shortLabel), 7u);
            described += p.label + std::string{' '} + std::to_string(p.flags) +
                         std::to_string(p.arrangement) + ',';
        }
        EXPECT_EQ(described, outputs);
        EXPECT_EQ(std::ranges::count(described, ','), host.record->outputCount);
        host.set(4, 1.0f);  // part 1's output, shown before anything has started
        EXPECT_EQ(host.text(Opcode::getParameterDisplay, 4),
                  std::to_string(host.record->outputCount / 2));
        p.flags = 0x55;
        for (const std::int32_t outside : {-1, host.record->outputCount})
            EXPECT_EQ(host.ask(Opcode::getOutputProperties, outside, 0, &p), 0);
        EXPECT_EQ(p.flags, 0x55);
    }
    for (const auto& [letters, outputs] : {std::pair{17, 8}, {16, 32}})
        EXPECT_EQ(TestHost{"Outputs=" + std::string(static_cast<std::size_t>(letters), 'S') + "\n"}
                      .record->outputCount,
                  outputs);
}

TEST(Boundary, ListsNoProgramsWithoutALibrary) {
    for (const auto& [setting, expected] : {std::pair{"3", -1}, std::pair{"4", 0}}) {
        TestHost host{std::string{"MIDI Patches="} + setting + "\n"};
        host.start();
        MidiProgramName record{};
        EXPECT_EQ(host.ask(Opcode::getCurrentMidiProgram, 0, 0, &record), expected);
        EXPECT_EQ(host.ask(Opcode::getMidiProgramName, 0, 0, &record), 0);
        MidiProgramCategory category{};
        EXPECT_EQ(host.ask(Opcode::getMidiProgramCategory, 0, 0, &category), 0);
        EXPECT_EQ(host.ask(Opcode::hasMidiProgramsChanged, 16), 0);
    }
}

TEST(Boundary, KnowsItsHosts) {
    {
        TestHost host{{}, {.product = "The mrx relay slave 2"}};
        EXPECT_EQ(host.sent(HostRequest::wantMidi), 1);  // resumed by itself
        host.midi({message(0x90, 60, 100)});
        host.render(256);
        EXPECT_GT(host.peak(0), 0.0f);
    }
    for (const char* vendor : {"microsoft corporation", "This-That"}) {
        TestHost host{{}, {.vendor = vendor}};
        host.start();
        EXPECT_EQ(host.get(0), 0.0f);
        EXPECT_EQ(host.get(3), 0.0f);
        EXPECT_EQ(host.text(Opcode::getParameterName, 0), "");
    }
}

TEST(Boundary, IsSilentBeforeTheFirstResume) {
    TestHost host;
    host.midi({message(0x90, 60, 100)});
    host.render(64);
    for (std::size_t i = 0; i < host.outputs.size(); ++i) EXPECT_EQ(host.peak(i), 0.0f);
    host.start();
    host.render(64);
    EXPECT_EQ(host.peak(0), 0.0f);  // what was sent before was dropped
    EXPECT_EQ(host.sent(HostRequest::wantMidi), 1);
}

TEST(Boundary, SurvivesHostsThatMisbehave) {
    TestHost host;
    host.start();
    host.ask(Opcode::processEvents, 0, 0, nullptr);
    EventList list;
    list.count = -5;
    host.ask(Opcode::processEvents, 0, 0, &list);
    list.count = 2;
    SystemExclusiveEvent dump;
    dump.dumpLength = -1;
    list.events[0] = nullptr;
    list.events[1] = &dump.head;
    host.ask(Opcode::processEvents, 0, 0, &list);
    host.ask(Opcode::setSampleRate, 0, 0, nullptr, std::numeric_limits<float>::quiet_NaN());
    host.ask(Opcode::setSampleRate, 0, 0, nullptr, 1.0f);
    host.ask(Opcode::setBlockSize, 0, -4);
    host.ask(Opcode::mainsChanged, 0, 1);
    host.midi({message(0x90, 60, 100, -50), message(0x95, 60, 100, 99999)});
    host.record->processReplacing(host.record, nullptr, nullptr, 64);
    std::vector<float*> none(8, nullptr);
    host.record->processReplacing(host.record, nullptr, none.data(), 64);
    host.record->process(host.record, nullptr, none.data(), -3);
    host.render(5000);  // beyond the announced block
    EXPECT_GT(host.peak(0), 0.01f);
    for (const std::int32_t index : {-1, 2528, 1 << 30}) {
        host.set(index, 1);
        EXPECT_EQ(host.get(index), 0.0f);
        EXPECT_EQ(host.text(Opcode::getParameterName, index), "");
        EXPECT_EQ(host.text(Opcode::getParameterDisplay, index), "");
    }
}

TEST(Boundary, FollowsRateAndBlockSizeAtResume) {
    TestHost host;
    for (const float rate : {8000.0f, 44100.0f, 192000.0f}) {
        host.start(rate, 512);
        host.midi({message(0x90, 69, 100)});
        host.render(static_cast<std::int32_t>(rate));
        const double hz = measure::frequencyNear(host.outputs[0], static_cast<double>(rate), 440);
        EXPECT_NEAR(measure::cents(hz, 440), 0, 0.1) << rate;
        EXPECT_GT(host.peak(0), 0.02f) << rate;
    }
}

TEST(Boundary, AnswersItsOwnRequests) {
    TestHost host;
    const auto vendor = [&](const char(&code)[5], std::intptr_t value = -1) {
        return host.ask(Opcode::vendorSpecific, fourCharacters(code), value);
    };
    EXPECT_EQ(vendor("busy"), 1);  // the default patch is still to be asked for
    host.start();
    host.settle();
    EXPECT_EQ(vendor("busy"), 0);
    EXPECT_EQ(vendor("part"), 1);
    EXPECT_EQ(vendor("part", 5), 1);
    EXPECT_EQ(vendor("part", 16), 6);
    EXPECT_EQ(vendor("voic"), 0);
    host.midi({message(0x90, 60, 100), message(0x90, 64, 100), message(0x90, 67, 100)});
    host.render(64);
    EXPECT_EQ(vendor("voic"), 3);
    host.midi({message(0xC0, 5, 0)});
    EXPECT_EQ(vendor("busy"), 1);
    host.settle();
    EXPECT_EQ(vendor("zzzz"), 0);
    EXPECT_EQ(host.ask(Opcode::vendorSpecific, fourCharacters("tdCA"), fourCharacters("Whee")), 0);
}

TEST(Boundary, AddsEffectsBehindAPatch) {
    struct {
        std::int32_t type;
        float values[12];
    } effect{10, {0.5f, 0, 0.1f, 0, 0.5f, 1, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f}};  // a short delay
    TestHost host;
    host.start();
    host.settle();
    const auto add = [&](std::intptr_t part) {
        return host.ask(Opcode::vendorSpecific, fourCharacters("fxad"), part, &effect);
    };
    EXPECT_EQ(add(16), 0);
    EXPECT_EQ(host.ask(Opcode::vendorSpecific, fourCharacters("fxad"), 0, nullptr), 0);
    effect.type = 9;  // no such effect
    EXPECT_EQ(add(0), 0);
    effect.type = 10;
    EXPECT_EQ(add(0), 2);
    EXPECT_EQ(add(0), 3);
    host.settle();
    host.midi({message(0x90, 60, 100), message(0x80, 60, 0, 100)});
    host.render(20000);
    // Long after the note its echo sounds.
    float late = 0;
    for (std::size_t i = 1200; i < 4000; ++i) late = std::max(late, std::fabs(host.outputs[0][i]));
    EXPECT_GT(late, 0.001f);
}

TEST(Boundary, SameInputSameSamples) {
    std::vector<float> first;
    for (int run = 0; run < 2; ++run) {
        TestHost host;
        host.start();
        std::vector<float> all;
        for (int block = 0; block < 40; ++block) {
            host.midi({message(0x90, 40 + block, block % 3 == 0 ? 0 : 100, block)});
            host.render(200);
            all.insert(all.end(), host.outputs[0].begin(), host.outputs[0].end());
        }
        if (run == 0)
            first = all;
        else
            EXPECT_EQ(all, first);
    }
}

TEST(Boundary, EchoesWhatLinksAndMutesEnd) {
    TestHost host;
    host.start();
    host.set(152, 1.0f);  // part 1 also plays part 2
    host.set(152, 0.0f);  // and no longer: one all sound off for part 2
    host.set(152, 0.0f);
    host.render(64);
    EXPECT_EQ(host.echoed, (std::vector<std::vector<std::uint8_t>>{{0xB1, 120, 0}}));
    host.echoed.clear();
    host.midi({message(0x90, 60, 100)});
    host.render(64);
    host.set(1, 1.0f);  // mute
    host.set(1, 1.0f);
    for (int i = 0; i < 100; ++i) host.render(64);
    EXPECT_EQ(host.echoed, (std::vector<std::vector<std::uint8_t>>{{0xB0, 120, 0}}));
    EXPECT_EQ(host.peak(0), 0.0f);
}

}  // namespace
}  // namespace stratovane
