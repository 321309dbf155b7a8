#include "content/midi_file.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "content/midi_tempo_map.h"

namespace stratovane {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Kind = MidiFileFault::Kind;

Bytes joined(std::initializer_list<Bytes> pieces) {
    Bytes all;
    for (const Bytes& piece : pieces) all.insert(all.end(), piece.begin(), piece.end());
    return all;
}
Bytes header(std::uint8_t tracks, std::uint8_t divisionHigh = 0, std::uint8_t divisionLow = 96) {
    return {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1, 0, tracks, divisionHigh, divisionLow};
}
Bytes track(const Bytes& events) {
    const auto size = static_cast<std::uint32_t>(events.size());
    return joined({{'M', 'T', 'r', 'k', std::uint8_t(size >> 24), std::uint8_t(size >> 16),
                    std::uint8_t(size >> 8), std::uint8_t(size)},
                   events});
}
/// One track; its first event's delta stands at byte 22.
Bytes oneTrack(const Bytes& events) { return joined({header(1), track(events)}); }
constexpr std::size_t firstEvent = 22;
const Bytes endMark{0, 0xFF, 0x2F, 0};
const Bytes note{0, 0x90, 60, 100};

std::string shown(const MidiFileEvent& event) {
    std::ostringstream text;
    text << event.tick << ':' << int{event.status} << ',' << int{event.data1} << ','
         << int{event.data2};
    for (std::uint8_t byte : event.bytes) text << ' ' << int{byte};
    text << "; ";
    return text.str();
}
std::string shown(const MidiFileTrack& events) {
    std::string text;
    for (const MidiFileEvent& event : events) text += shown(event);
    return text;
}

TEST(MidiFile, ReadsWhatFilesHold) {
    struct Case {
        const char* name;
        Bytes events;
        const char* expected;
    };
    const Case cases[] = {
        {"running status",
         {0, 0x90, 60, 100, 96, 60, 0, 0, 0xC3, 5, 1, 6, 0, 0xD0, 9},
         "0:144,60,100; 96:144,60,0; 96:195,5,0; 97:195,6,0; 97:208,9,0; "},
        {"running status behind meta and exclusive events",
         {0, 0xB1, 7, 100, 0, 0xFF, 1, 1, 'x', 1, 10, 64, 0, 0xF0, 1, 0xF7, 1, 11, 3},
         "0:177,7,100; 0:255,1,0 120; 1:177,10,64; 1:240,0,0 240 247; 2:177,11,3; "},
        {"times of four bytes",
         {0xFF, 0xFF, 0xFF, 0x7F, 0xE0, 0, 64, 0x81, 0, 0xA0, 1, 2},
         "268435455:224,0,64; 268435583:160,1,2; "},
        {"an exclusive message in three pieces, a note between",
         {0, 0xF0, 2, 67, 1, 5, 0xF7, 1, 2, 0, 0x90, 60, 1, 5, 0xF7, 2, 3, 0xF7},
         "5:144,60,1; 10:240,0,0 240 67 1 2 3 247; "},
        {"one that never ends, then a whole one",
         {0, 0xF0, 1, 5, 1, 0xF0, 2, 6, 0xF7, 0, 0xF7, 1, 0xF8},
         "0:240,0,0 240 5; 1:240,0,0 240 6 247; 1:247,0,0 248; "},
        {"an escape", {3, 0xF7, 2, 0xF3, 1}, "3:247,0,0 243 1; "},
        {"what stands behind the end mark", {4, 0xFF, 0x2F, 0, 0, 0x90, 1, 1}, "4:255,47,0; "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Bytes bytes = oneTrack(c.events);
        const MidiFile file = readMidiFile(bytes);
        EXPECT_FALSE(file.fault) << file.fault->sentence;
        ASSERT_EQ(file.tracks.size(), 1u);
        EXPECT_EQ(shown(file.tracks[0]), c.expected);
    }
}

TEST(MidiFile, NamesTheFirstFaultAndKeepsTheRest) {
    const Bytes good = oneTrack(joined({note, endMark}));
    auto changed = [&](std::size_t at, std::uint8_t byte) {
        Bytes bytes = good;
        bytes[at] = byte;
        return bytes;
    };
    auto two = [&](const Bytes& first) {
        return joined({header(2), track(first), track(joined({note, endMark}))});
    };
    struct Case {
        const char* damage;
        Bytes bytes;
        Kind kind;
        std::size_t offset;
        std::vector<std::size_t> eventsKept;  // per track
    };
    const Case cases[] = {
        {"nothing", {}, Kind::tooShort, 0, {}},
        {"a header alone", header(0), Kind::tooShort, 14, {}},
        {"another tag", changed(0, 'm'), Kind::noHeader, 0, {}},
        {"format 3", changed(9, 3), Kind::unknownFormat, 8, {2}},
        {"division 0", changed(13, 0), Kind::noDivision, 12, {}},
        {"28 frames a second", changed(12, 228), Kind::unknownFrameRate, 12, {2}},
        {"no ticks a frame", joined({header(1, 231, 0), track(note)}), Kind::noDivision, 12, {}},
        {"another track tag", changed(17, 'K'), Kind::noTrackHeader, 14, {}},
        {"a header that leaves the file", changed(6, 9), Kind::noTrackHeader, 30, {}},
        {"one track too few", joined({header(2), track(note)}), Kind::noTrackHeader, 26, {1}},
        {"a head cut short",
         joined({header(2), track(note), {'M', 'T', 'r', 'k', 0}}),
         Kind::trackBeyondEnd,
         30,
         {1}},
        {"a track one byte too long", changed(21, 9), Kind::trackBeyondEnd, 18, {}},
        {"a track of 2^24 bytes more", changed(18, 1), Kind::trackBeyondEnd, 18, {}},
        {"a time of five bytes",
         two({0x80, 0x80, 0x80, 0x80, 0, 0x90, 1, 1}),
         Kind::longNumber,
         firstEvent + 4,
         {0, 2}},
        {"a data byte first", two({0, 60, 100}), Kind::noStatus, firstEvent + 1, {0, 2}},
        {"a clock message",
         two({0, 0x90, 1, 1, 0, 0xF8}),
         Kind::unknownStatus,
         firstEvent + 5,
         {1, 2}},
        {"a status as data", two({0, 0x90, 60, 0x80}), Kind::badData, firstEvent + 3, {0, 2}},
        {"a time and nothing",
         two({0, 0x90, 1, 1, 5}),
         Kind::eventBeyondTrack,
         firstEvent + 5,
         {1, 2}},
        {"half a time", two({0x81}), Kind::eventBeyondTrack, firstEvent + 1, {0, 2}},
        {"half a note", two({0, 0x90, 60}), Kind::eventBeyondTrack, firstEvent + 3, {0, 2}},
        {"a meta event without type",
         two({0, 0xFF}),
         Kind::eventBeyondTrack,
         firstEvent + 2,
         {0, 2}},
        {"a text over the end",
         two({0, 0xFF, 1, 3, 'a', 'b'}),
         Kind::eventBeyondTrack,
         firstEvent + 3,
         {0, 2}},
        {"an exclusive message over the end",
         two({0, 0xF0, 2, 1}),
         Kind::eventBeyondTrack,
         firstEvent + 2,
         {0, 2}},
        {"two faults",
         joined({header(2), track({0, 1}), track({0, 0xF8})}),
         Kind::noStatus,
         firstEvent + 1,
         {0, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.damage);
        const MidiFile file = readMidiFile(c.bytes);
        ASSERT_TRUE(file.fault);
        EXPECT_EQ(static_cast<int>(file.fault->kind), static_cast<int>(c.kind));
        EXPECT_EQ(file.fault->offset, c.offset);
        EXPECT_FALSE(file.fault->sentence.empty());
        std::vector<std::size_t> kept;
        for (const MidiFileTrack& events : file.tracks) kept.push_back(events.size());
        EXPECT_EQ(kept, c.eventsKept);
    }
}

TEST(MidiFile, HeaderVariants) {
    Bytes longHeader = header(1);
    longHeader[7] = 8;
    const MidiFile longer = readMidiFile(joined({longHeader, {1, 2}, track(note)}));
    EXPECT_FALSE(longer.fault);
    EXPECT_EQ(longer.tracks.size(), 1u);

    Bytes shortHeader = oneTrack(note);
    shortHeader[7] = 2;
    EXPECT_FALSE(readMidiFile(shortHeader).fault);

    const MidiFile some = readMidiFile(joined({header(2), track(note), track(note), {7}}), 1);
    EXPECT_FALSE(some.fault);
    EXPECT_EQ(some.declaredTracks, 2);
    EXPECT_EQ(some.tracks.size(), 1u);
    const MidiFile leftover = readMidiFile(joined({oneTrack(note), {1, 2, 3}}));
    EXPECT_FALSE(leftover.fault);
    EXPECT_EQ(leftover.leftoverOffset, firstEvent + 4);
    EXPECT_EQ(leftover.leftoverBytes, 3u);
}

TEST(MidiFile, MergesByTimeThenTrackThenPlace) {
    const MidiFile file = readMidiFile(
        joined({header(2), track({5, 0x90, 1, 1, 0, 0x90, 2, 1, 5, 0x90, 3, 1, 0, 0xFF, 0x2F, 0}),
                track({0, 0x91, 4, 1, 5, 0x91, 5, 1, 9, 0xFF, 0x2F, 0})}));
    std::string order;
    for (const MidiFileEvent* event : mergeTracks(file)) order += std::to_string(event->data1);
    EXPECT_EQ(order, "41253");
    EXPECT_EQ(file.endTick(), 14);
}

TEST(MidiTempoMap, FollowsEveryTempoAndSignature) {
    const MidiFile file = readMidiFile(oneTrack(joined({
        {96, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40},                // 1 s per quarter from beat 1
        {0, 0xFF, 0x58, 4, 3, 2, 24, 8},                      // 3/4 there
        {96, 0xFF, 0x51, 3, 0, 0, 0},                         // no tempo
        {0, 0xFF, 0x58, 4, 0, 2, 24, 8},                      // no signature
        {0, 0xFF, 0x51, 2, 1, 1},                             // too short
        {96, 0xFF, 0x51, 3, 0x03, 0xD0, 0x90, 0, 0x90, 1, 1}  // 0.25 s from beat 3
    })));
    const MidiTempoMap map{file};
    ASSERT_EQ(map.stretches().size(), 3u);
    EXPECT_DOUBLE_EQ(map.stretches()[1].tempo, 60.0);
    EXPECT_EQ(map.stretches()[1].signature.quartersPerBar(), 3.0);
    EXPECT_DOUBLE_EQ(map.stretches()[2].signatureBeats, 1.0);
    const double seconds[] = {0, 0.5, 1.5, 2.5, 2.75};
    for (int beat = 0; beat < 5; ++beat) {
        EXPECT_NEAR(map.seconds(96 * beat), seconds[beat], 1e-12);
        EXPECT_DOUBLE_EQ(map.beats(96 * beat), beat);
    }
}

TEST(MidiTempoMap, SmpteTimeIsFixed) {
    const struct {
        std::uint8_t code;
        double framesPerSecond;
    } rates[] = {{232, 24}, {231, 25}, {227, 30000.0 / 1001.0}, {226, 30}};
    for (const auto& rate : rates) {
        const MidiFile file = readMidiFile(joined(
            {header(1, rate.code, 40), track({0x87, 0x68, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40})}));
        ASSERT_FALSE(file.fault);
        EXPECT_EQ(file.pulsesPerQuarter, 600);
        const MidiTempoMap map{file};
        EXPECT_NEAR(map.seconds(2000), 50 / rate.framesPerSecond, 1e-12);
        EXPECT_NEAR(map.beats(2000), 100 / rate.framesPerSecond, 1e-12);
        EXPECT_EQ(map.stretches().size(), 1u);
    }
}

TEST(MidiFile, ThousandsOfDamagedFilesAreReadWithoutHarm) {
    const Bytes good = joined(
        {header(3), track({0,    0xFF, 3,    4,    'S', 'o', 'n', 'g', 0, 0xFF, 0x51, 3,    7, 0xA1,
                           0x20, 0,    0xFF, 0x58, 4,   6,   3,   24,  8, 0,    0xFF, 0x2F, 0}),
         track({0,    0xF0, 3,  1,  2,  3, 9,    0xF7, 2,    4, 0xF7, 0, 0xC0, 5,    0,
                0x90, 60,   99, 96, 60, 0, 0x83, 0,    0xE0, 1, 2,    0, 0xFF, 0x2F, 0}),
         track({0, 0xB9, 7, 1, 0, 0x99, 36, 9, 9, 36, 0, 0, 0xF7, 1, 0xFE, 0, 0xFF, 0x2F, 0})});
    ASSERT_FALSE(readMidiFile(good).fault);
    std::mt19937 random{2005};
    int faulty = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = good;
        for (unsigned hits = 1 + random() % 4; hits > 0; --hits)
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
        if (random() % 4 == 0) bytes.resize(random() % bytes.size());
        bytes.shrink_to_fit();  // so that a sanitizer sees one byte too far
        const Bytes before = bytes;
        const MidiFile file = readMidiFile(bytes);
        ASSERT_EQ(bytes, before);
        if (file.fault) {
            ++faulty;
            ASSERT_LE(file.fault->offset, bytes.size()) << file.fault->sentence;
        }
        const MidiTempoMap map{file};
        std::int64_t last = 0;
        std::size_t size = 0;
        for (const MidiFileEvent* event : mergeTracks(file)) {
            ASSERT_GE(event->tick, last);
            last = event->tick;
            size += event->bytes.size();
            ASSERT_TRUE(event->isChannelMessage()
                            ? event->status >= 0x80 && event->data1 < 128 && event->data2 < 128
                            : event->status == 0xF0 || event->status == 0xF7 ||
                                  event->status == 0xFF);
        }
        ASSERT_LE(size, bytes.size());
        ASSERT_GE(map.seconds(file.endTick()), 0);
    }
    EXPECT_GT(faulty, 5000);
}

}  // namespace
}  // namespace stratovane
