// The request for what arpeggiators play: its rules on a log, its way through the library.
#include "host/arpeggiator_request.h"

#include <gtest/gtest.h>

#include <array>
#include <span>
#include <string>

#include "host/host_support.h"

namespace stratovane {
namespace {

TEST(ArpeggiatorRequest, TakesEventsOldestFirst) {
    ArpeggiatorLog log;
    log.note({1, 1, {}});  // off: for nobody
    EXPECT_EQ(answerArpeggiatorRequest(log, 7, nullptr), 0);
    EXPECT_EQ(answerArpeggiatorRequest(log, 1, nullptr), 1);
    EXPECT_EQ(answerArpeggiatorRequest(log, 7, nullptr), 1);
    constexpr int room = 4096, given = room + 10;
    for (int i = 0; i < given; ++i) log.note({100 + i, i % 16, {0x90, 60, 100, 0}});
    EXPECT_EQ(answerArpeggiatorRequest(log, 0, nullptr), 0);

    std::array<ArpeggiatorEvent, 100> events;
    std::int64_t next = 100;
    ArpeggiatorTake take{100, 77, events.data()};
    do {
        EXPECT_EQ(answerArpeggiatorRequest(log, 0, &take), 10);
        for (int i = 0; i < take.count; ++i)
            EXPECT_EQ(events[static_cast<std::size_t>(i)].frame, next++);
    } while (take.count == take.capacity);
    EXPECT_EQ(next, 100 + room);
    EXPECT_FALSE(log.isOn());  // a pointer switches nothing

    log.turn(true);
    log.note({5, 2, {0xE0, 1, 2, 0}});
    for (ArpeggiatorTake none :
         {ArpeggiatorTake{0, 3, events.data()}, ArpeggiatorTake{-4, 3, events.data()},
          ArpeggiatorTake{9, 3, nullptr}}) {
        answerArpeggiatorRequest(log, 1, &none);
        EXPECT_EQ(none.count, 0);
    }
    answerArpeggiatorRequest(log, 1, &take);
    EXPECT_EQ(take.count, 1);
    EXPECT_EQ(events[0].part, 2);
}

/// "frame+note", "frame-note" and "frame#controller" of what waits in the log.
std::string played(const TestHost& host) {
    std::array<ArpeggiatorEvent, 64> events;
    ArpeggiatorTake take{64, 0, events.data()};
    host.ask(Opcode::vendorSpecific, arpeggiatorRequest, 2, &take);
    std::string text;
    for (const ArpeggiatorEvent& e : std::span{events}.first(static_cast<std::size_t>(take.count)))
        (((text += std::to_string(e.frame)) += e.bytes[0] == 0x90   ? '+'
                                               : e.bytes[0] == 0x80 ? '-'
                                                                    : '#') +=
         std::to_string(e.bytes[1])) += ' ';
    return text;
}

TEST(ArpeggiatorRequest, TellsWhatHostParametersMakeOfTwoKeys) {
    constexpr int on = 39, block = 256, half = 45;  // blocks with keys and without
    const struct {
        int parameter;
        float value;
        const char* events;
    } cases[] = {
        {on, 0, ""},
        {on, 1, "0+60 2779-60 5513+64 8291-64 11025+60 13804-60 "},
        {40, 1, "0+60 2779-60 5513+64 8291-64 11025+60 13804-60 16538+64 19316-64 22050+60 "},
        {41, 1.5f / 15.9f, "0+60 2779-60 5513+60 8291-60 11025+64 13804-64 "},  // down
        {42, 1.5f / 3.9f, "0+60 2779-60 5513+64 8291-64 11025+72 13804-72 "},   // two octaves
        {43, 2.5f / 16.9f,                                                      // two steps
         "0#128 0#129 0+60 2779-60 5513#128 5513#129 5513+64 8291-64 11025#128 11025#129 "
         "11025+60 13804-60 "},
        {44, 1.5f / 7.9f, "0+60 3079-60 5813+64 8591-64 11325+60 14104-60 "},  // each note
        {45, 0.5f, "0+60 7373-60 "},                                           // 1/4T
        {46, 0, "0+60 23-60 5513+64 5535-64 11025+60 11048-60 "},
        {47, 1, "0+60 2779-60 7350+64 10129-64 11025+60 13804-60 "},
    };
    for (const auto& c : cases) {
        TestHost host;
        host.ask(Opcode::vendorSpecific, arpeggiatorRequest, 1);  // before anything else, too
        host.start();
        host.settle();
        host.set(on, 1);
        host.set(c.parameter, c.value);
        host.midi({message(0x90, 60, 100)});
        host.render(block);
        host.midi({message(0x90, 64, 100, 300 - block)});
        for (int i = 1; i < half; ++i) host.render(block);
        host.midi({message(0x80, 60), message(0x90, 64)});
        for (int i = 0; i < half; ++i) host.render(block);
        EXPECT_EQ(played(host), c.events) << c.parameter;
    }
}

}  // namespace
}  // namespace stratovane
