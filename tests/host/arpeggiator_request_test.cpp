// The request for what arpeggiators play: its rules on a log, its way through the library.
#include "host/arpeggiator_request.h"

#include <gtest/gtest.h>

#include <array>

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

TEST(ArpeggiatorRequest, ReachesTheEngine) {
    TestHost host;
    const auto ask = [&](std::intptr_t value, void* pointer = nullptr) {
        return host.ask(Opcode::vendorSpecific, arpeggiatorRequest, value, pointer);
    };
    EXPECT_EQ(ask(1), 1);  // before anything else has been asked, too
    host.start();
    host.settle();
    EXPECT_EQ(ask(2), 1);
    ArpeggiatorEvent event;
    ArpeggiatorTake take{1, 5, &event};
    host.midi({message(0x90, 60, 100)});
    host.render(256);
    EXPECT_EQ(ask(0, &take), 0);
    EXPECT_EQ(take.count, 0);  // a plain note is no arpeggiator's
    EXPECT_EQ(ask(0), 0);
}

}  // namespace
}  // namespace stratovane
