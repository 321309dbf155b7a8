#include "midi/system_exclusive.h"

#include <gtest/gtest.h>

#include <cmath>

#include "midi/general_midi.h"
#include "midi/midi_rig.h"

namespace stratovane {
namespace {

using Kind = Request::Kind;
using Bytes = std::vector<std::uint8_t>;

constexpr int master(int effect, int row) { return 2432 + 24 * effect + row; }

TEST(SystemExclusive, SetsAtOnceWhatLoadsNothing) {
    struct Case {
        Bytes message;
        const char* status;
        int index;  // host parameter
        float value;
    };
    const float half = 0.5005933f;  // the setting's default, -6 dB
    const Case cases[] = {
        {{0x7F, 0x7F, 4, 1, 127, 127}, "SysEx: Master Volume", 0, 16383 * 6.1e-5f * half},
        {{0x7F, 0x7F, 4, 1, 5, 64}, "SysEx: Master Volume", 0, 8197 * 6.1e-5f * half},
        {{0x7F, 0x7F, 4, 1, 0, 0}, "SysEx: Master Volume", 0, 0},
        {{0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 1, 100}, "SysEx: Reverb Time", master(0, 3), 0.4f},
        {{0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 2, 1, 127}, "SysEx: Chorus Rate", master(2, 3), 0.508f},
        {{0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 2, 2, 70}, "SysEx: Chorus Depth", master(2, 4), 0.7f},
        {{0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 2, 3, 50}, "SysEx: Chorus Feedback", master(2, 7), 0.35f},
        {{0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 2, 4, 25},
         "SysEx: Chorus Send To Reverb",
         master(2, 20),
         0.1f},
    };
    for (const Case& c : cases) {
        MidiRig rig;
        rig.exclusive(c.message);
        EXPECT_EQ(rig.status(), c.status);
        EXPECT_NEAR(rig.parameters.get(c.index), c.value, 1e-6f) << c.status;
        EXPECT_TRUE(rig.multi.dirty) << c.status;
        EXPECT_EQ(rig.multi.refresh.get(), 1u) << c.status;
        EXPECT_TRUE(rig.takeRequests().empty()) << c.status;
    }
    // The volume follows the user's own setting.
    MidiRig rig;
    rig.settings.masterVolume = 1.0f;
    rig.exclusive({0x7F, 0x7F, 4, 1, 127, 127});
    EXPECT_NEAR(rig.parameters.get(0), 0.99936f, 1e-5f);
}

TEST(SystemExclusive, TunesEverything) {
    MidiRig rig;
    struct Case {
        int name, low, high;
        float semitones;
    };
    // Coarse and fine are kept apart: each message leaves the other's part alone.
    const Case cases[] = {
        {4, 99, 64, 0},
        {4, 0, 0, -24},
        {4, 0, 127, 24},
        {4, 0, 66, 2},
        {3, 0, 32, 1.500f},
        {3, 0, 0, 1.0000026f},
        {3, 127, 127, 2.9998754f},
        {4, 0, 64, 0.9998754f},
        {3, 0, 64, 0},
    };
    for (const Case& c : cases) {
        rig.exclusive({0x7F, 0x7F, 4, static_cast<std::uint8_t>(c.name),
                       static_cast<std::uint8_t>(c.low), static_cast<std::uint8_t>(c.high)});
        EXPECT_NEAR(rig.shared.tuningSemitones, c.semitones, 2e-6f) << c.name << " " << c.high;
        EXPECT_EQ(rig.status(),
                  c.name == 3 ? "SysEx: Master Fine Tune" : "SysEx: Master Coarse Tune");
    }
}

TEST(SystemExclusive, AsksForWhatLoads) {
    struct Case {
        Bytes message;
        const char* status;
        Kind kind;
        int argument;
        float value;
    };
    std::vector<Case> cases{
        {{0x7E, 0x7F, 9, 1}, "SysEx: General MIDI On", Kind::resetGeneralMidi, 1, 0},
        {{0x7E, 0x7F, 9, 3}, "SysEx: General MIDI 2 On", Kind::resetGeneralMidi, 1, 0},
        {{0x7E, 0x7F, 9, 2}, "SysEx: General MIDI Off", Kind::generalMidi, -1, 0},
    };
    for (std::uint8_t type = 0; type < 128; ++type) {
        const bool known = type <= 5;
        cases.push_back({{0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 0, type},
                         "SysEx: Reverb Type",
                         Kind::loadEffect,
                         known || type == 8 ? (100 + type) * 4 : -1,
                         0.43f});
        cases.push_back({{0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 2, 0, type},
                         "SysEx: Chorus Type",
                         Kind::loadEffect,
                         known ? (110 + type) * 4 + 2 : -1,
                         0.54f});
    }
    MidiRig rig;
    for (const Case& c : cases) {
        rig.exclusive(c.message);
        EXPECT_EQ(rig.status(), c.status);
        const std::vector<Request> asked = rig.takeRequests();
        ASSERT_EQ(asked.size(), c.argument < 0 ? 0u : 1u) << c.status << " " << +c.message.back();
        if (asked.empty()) continue;
        EXPECT_EQ(asked[0].kind, c.kind);
        EXPECT_EQ(asked[0].argument, c.argument);
        EXPECT_EQ(asked[0].value, c.value);
    }
}

TEST(SystemExclusive, IgnoresWhatItDoesNotKnow) {
    struct Case {
        const char* what;
        Bytes dump;
        std::int32_t length = -1;  // else that of the dump
        const char* status = "";
    };
    const char* ignored = "SysEx: Parameter Control (ignored)";
    const Case cases[] = {
        {"nothing", {}},
        {"a status byte alone", {0xF0}},
        {"one that is empty", {0xF0, 0xF7}},
        {"negative length", {0xF0, 0x7E, 0x7F, 9, 1, 0xF7}, -7},
        {"no start", {0x7E, 0x7F, 9, 1, 0xF7}},
        {"another start", {0xF1, 0x7E, 0x7F, 9, 1, 0xF7}},
        {"continued", {0xF7, 0x7E, 0x7F, 9, 1, 0xF7}},
        {"no end", {0xF0, 0x7E, 0x7F, 9, 1}},
        {"end beyond the length", {0xF0, 0x7E, 0x7F, 9, 1, 0xF7}, 5},
        {"name cut off", {0xF0, 0x7E, 0x7F, 9, 1, 0xF7}, 4},
        {"interrupted", {0xF0, 0x7E, 0x7F, 9, 1, 0xF8, 0xF7}},
        {"interrupted by a note", {0xF0, 0x7F, 0x7F, 4, 1, 0, 0x90, 60, 100, 0xF7}},
        {"status byte in the name", {0xF0, 0x7E, 0xFF, 9, 1, 0xF7}},
        {"one device", {0xF0, 0x7E, 0x10, 9, 1, 0xF7}},
        {"one device's volume", {0xF0, 0x7F, 0x10, 4, 1, 0, 0, 0xF7}},
        {"a maker's own", {0xF0, 0x43, 0x10, 0x4C, 0, 0, 0x7E, 0, 0xF7}},
        {"an enquiry", {0xF0, 0x7E, 0x7F, 6, 1, 0xF7}},
        {"no such mode", {0xF0, 0x7E, 0x7F, 9, 4, 0xF7}},
        {"classes exchanged", {0xF0, 0x7F, 0x7F, 9, 1, 0xF7}},
        {"balance", {0xF0, 0x7F, 0x7F, 4, 2, 0, 0, 0xF7}},
        {"volume without value", {0xF0, 0x7F, 0x7F, 4, 1, 0xF7}},
        {"volume of one byte", {0xF0, 0x7F, 0x7F, 4, 1, 0, 0xF7}},
        {"fine tune of one byte", {0xF0, 0x7F, 0x7F, 4, 3, 0, 0xF7}},
        {"coarse tune of one byte", {0xF0, 0x7F, 0x7F, 4, 4, 0, 0xF7}},
        {"parameter control without end", {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 1, 100}},
        {"no slot", {0xF0, 0x7F, 0x7F, 4, 5, 0xF7}, -1, ignored},
        {"no value", {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 1, 0xF7}, -1, ignored},
        {"longer path", {0xF0, 0x7F, 0x7F, 4, 5, 2, 1, 1, 1, 1, 1, 9, 0xF7}, -1, ignored},
        {"wider number", {0xF0, 0x7F, 0x7F, 4, 5, 1, 2, 1, 1, 1, 1, 9, 0xF7}, -1, ignored},
        {"wider value", {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 2, 1, 1, 1, 9, 0xF7}, -1, ignored},
        {"other path", {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 2, 1, 1, 9, 0xF7}, -1, ignored},
        {"third effect", {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 3, 1, 9, 0xF7}, -1, ignored},
        {"no such parameter", {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 2, 9, 0xF7}, -1, ignored},
        {"nor there", {0xF0, 0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 2, 5, 9, 0xF7}, -1, ignored},
    };
    for (const Case& c : cases) {
        MidiRig rig;
        std::vector<float> before;
        for (int i = 0; i < hostParameters; ++i) before.push_back(rig.parameters.get(i));
        const Bytes exact{c.dump};  // at its own place, so that a read beyond its end is noticed
        rig.dump(exact.data(), c.length != -1 ? c.length : static_cast<std::int32_t>(exact.size()));
        EXPECT_EQ(rig.status(), c.status) << c.what;
        for (int i = 0; i < hostParameters; ++i)
            EXPECT_EQ(rig.parameters.get(i), before[static_cast<std::size_t>(i)]) << c.what;
        EXPECT_EQ(rig.shared.tuningSemitones, 0.0f) << c.what;
        EXPECT_FALSE(rig.multi.generalMidi) << c.what;
        EXPECT_TRUE(rig.takeRequests().empty()) << c.what;
        EXPECT_EQ(rig.multi.refresh.get(), 1u) << c.what;
        EXPECT_EQ(rig.multi.part[15].changes.get(), 1u) << c.what;
    }
    MidiRig rig;
    rig.exclusive({0x7E, 0x7F, 9, 2});
    rig.dump(nullptr, 100);
    EXPECT_EQ(rig.status(), "SysEx: General MIDI Off");  // the last one understood
}

TEST(SystemExclusive, AnnouncesAReset) {
    MidiRig rig;
    rig.presence.set(79, 8, true);
    rig.send(0xC2, 5);
    rig.midi.clear();
    rig.exclusive({0x7E, 0x7F, 9, 1});
    EXPECT_TRUE(rig.multi.generalMidi);
    EXPECT_FALSE(rig.multi.defaultPatchWanted);
    for (int part = 0; part < parts; ++part) {
        const std::uint32_t bank = part == 9 ? 79 : 78;
        EXPECT_EQ(rig.pending(part), bank << 8) << part;  // and nothing waits
        EXPECT_EQ(rig.multi.part[static_cast<std::size_t>(part)].bankSelect.get(),
                  static_cast<std::int32_t>(bank));
        const PartEvents& events = rig.midi.lists()[static_cast<std::size_t>(part)];
        ASSERT_EQ(events.size(), 1) << part;
        EXPECT_EQ(events.begin()->status & 0xF0, 0xC0) << part;  // controllers begin anew
    }
    rig.midi.clear();
    // Program changes behind it are compared with what it loads.
    rig.send(0xC2, 0);
    EXPECT_EQ(rig.pending(2), 78u << 8);
    rig.send(0xC2, 9);
    EXPECT_EQ(rig.pending(2), 0x10000u | 78 << 8 | 9);
    rig.send(0xC9, 8);
    EXPECT_EQ(rig.pending(9), 0x10000u | 79 << 8 | 8);
    // In this mode a program change forgets no controller.
    EXPECT_EQ(rig.take(2), "");
    rig.exclusive({0x7E, 0x7F, 9, 2});
    EXPECT_FALSE(rig.multi.generalMidi);
    EXPECT_EQ(rig.pending(2), 0x10000u | 78 << 8 | 9);  // the parts stay as they are
}

TEST(SystemExclusive, RepeatsSettingsBehindWhatWaits) {
    MidiRig rig;
    rig.exclusive({0x7F, 0x7F, 4, 1, 0, 64});
    EXPECT_FALSE(rig.multi.requests.waits());  // nothing waits, nothing is repeated
    rig.exclusive({0x7E, 0x7F, 9, 1});
    rig.exclusive({0x7F, 0x7F, 4, 1, 0, 32});
    rig.exclusive({0x7F, 0x7F, 4, 4, 0, 65});
    rig.exclusive({0x7F, 0x7F, 4, 3, 0, 72});
    rig.exclusive({0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 1, 100});
    rig.controllers({{101, 0}, {100, 0}, {6, 2}}, 3);
    rig.controllers({{126, 1}}, 4);
    rig.exclusive({0x7E, 0x7F, 9, 2});
    rig.controllers({{99, 2}, {98, 44}, {6, 64}}, 5);
    rig.controllers({{7, 90}, {10, 90}}, 5);  // these go with the part's events
    EXPECT_NEAR(rig.shared.tuningSemitones, 1.125f, 1e-4f);
    const Request expected[] = {
        {Kind::resetGeneralMidi, 1, 0},
        {Kind::hostValue, 0, 4096 * 6.1e-5f * 0.5005933f},
        {Kind::tuneSemitones, 1, 0},
        {Kind::tuneFraction, 0, 1024 * 0.00012207f},
        {Kind::hostValue, 2435, 0.4f},
        {Kind::hostValue, 3 * 152 + 27, 0.128125f},
        {Kind::hostValue, 3 * 152 + 28, 0.128125f},
        {Kind::hostValue, 4 * 152 + 29, 1},
        {Kind::generalMidi, 0, 0},
        {Kind::patchValue, 5 << 16 | 1 << 8 | 44, 0.5f},
    };
    const std::vector<Request> asked = rig.takeRequests();
    ASSERT_EQ(asked.size(), std::size(expected));
    for (std::size_t i = 0; i < asked.size(); ++i) {
        EXPECT_EQ(asked[i].kind, expected[i].kind) << i;
        EXPECT_EQ(asked[i].argument, expected[i].argument) << i;
        EXPECT_NEAR(asked[i].value, expected[i].value, 1e-6f) << i;
    }
    // Undone and repeated, everything is as the messages left it.
    rig.parameters.set(0, 0.9f);
    rig.parameters.set(2435, 0.9f);
    rig.engine.patch(5).store(1, 44, 0.9f);
    rig.multi.generalMidi = true;
    rig.multi.tune.semitones = 7;
    for (const Request& request : asked) rig.messages.apply(rig.engine, request);
    EXPECT_NEAR(rig.parameters.get(0), 0.12507f, 1e-4f);
    EXPECT_EQ(rig.parameters.get(2435), 0.4f);
    EXPECT_EQ(rig.engine.patch(5).get(1, 44), 0.5f);
    EXPECT_FALSE(rig.multi.generalMidi);
    EXPECT_NEAR(rig.shared.tuningSemitones, 1.125f, 1e-4f);
}

TEST(SystemExclusive, DropsWhatTheQueueCannotHold) {
    MidiRig rig;
    rig.exclusive({0x7F, 0x7F, 4, 5, 1, 1, 1, 1, 1, 0, 1});
    for (int i = 0; i < 300; ++i) rig.controllers({{126, 1}}, 4);
    rig.multi.part[3].pendingProgram.store(5);
    rig.exclusive({0x7E, 0x7F, 9, 1});
    EXPECT_TRUE(rig.multi.generalMidi);  // acts at once in any case
    EXPECT_EQ(rig.pending(3), 5u);       // what will not be loaded is not announced
    EXPECT_EQ(rig.takeRequests().size(), 256u);
    EXPECT_FALSE(rig.multi.requests.waits());
    rig.exclusive({0x7E, 0x7F, 9, 1});
    EXPECT_EQ(rig.takeRequests().size(), 1u);
}

}  // namespace
}  // namespace stratovane
