// What two threads share: the ring, the flags, the trace that waits.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "base/published.h"
#include "base/ring.h"
#include "base/shared.h"
#include "base/trace.h"

using namespace stratovane;

namespace {

TEST(Ring, RefusesWhenFullAndKeepsOrderAcrossTheWrap) {
    Ring<int, 8> ring;
    int next = 0, expected = 0, item = 0;
    for (int round = 0; round < 50; ++round) {
        while (ring.push(next)) ++next;
        EXPECT_EQ(next - expected, 8);
        for (int i = 0; i < 1 + round % 8; ++i) {
            ASSERT_TRUE(ring.pop(item));
            EXPECT_EQ(item, expected++);
        }
    }
    while (ring.pop(item)) EXPECT_EQ(item, expected++);
    EXPECT_EQ(expected, next);
    EXPECT_TRUE(ring.empty());
}

TEST(Ring, SeveralWritersLoseNothingAndTearNothing) {
    struct Item {
        std::uint32_t writer = 0, count = 0, check = 0;
    };
    constexpr std::uint32_t writers = 3, each = 20000;
    Ring<Item, 32> ring;
    std::vector<std::thread> threads;
    for (std::uint32_t w = 0; w < writers; ++w)
        threads.emplace_back([&ring, w] {
            for (std::uint32_t i = 0; i < each; ++i)
                while (!ring.push({w, i, w * 7919u ^ i})) std::this_thread::yield();
        });
    std::uint32_t seen[writers] = {}, wrong = 0;
    for (std::uint32_t left = writers * each; left > 0;) {
        Item item;
        if (!ring.pop(item)) {
            std::this_thread::yield();
            continue;
        }
        --left;
        if (item.writer >= writers || item.count != seen[item.writer]++ ||
            item.check != (item.writer * 7919u ^ item.count))
            ++wrong;
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(wrong, 0u);
    EXPECT_TRUE(ring.empty());
}

TEST(Shared, FlagsAndPointersCarryWhatWasWrittenBefore) {
    struct Message {
        int number = 0;
    };
    constexpr int rounds = 2000;
    std::vector<Message> messages(rounds);
    Published<Message> mailbox;
    SharedBits flags;
    SharedCounter handled;
    int plain = 0, wrong = 0;
    std::thread reader{[&] {
        for (int i = 1; i <= rounds;) {
            const Message* m = mailbox.read();
            if (flags.take() == 0) {
                std::this_thread::yield();
                continue;
            }
            m = mailbox.read();
            if (m == nullptr || m->number != i || plain != i) ++wrong;
            ++i;
            handled.bump();
        }
    }};
    for (int i = 1; i <= rounds; ++i) {
        plain = i;
        messages[static_cast<std::size_t>(i - 1)].number = i;
        mailbox.publish(&messages[static_cast<std::size_t>(i - 1)]);
        flags.set(1u << (i % 32));
        while (handled.get() != static_cast<std::uint32_t>(i)) std::this_thread::yield();
    }
    reader.join();
    EXPECT_EQ(wrong, 0);
}

// A sink is a plain function, so the lines land beside the test.
thread_local std::string lines;
void collect(const char* line) { lines += line; }

TEST(Trace, WritesTheLevelsOfItsMask) {
    lines.clear();
    Trace trace{collect};
    trace.write(TraceLevel::warning, "lost %d", 3);
    trace.write(TraceLevel::patch, "unseen");
    trace.setMask(32 + 8);
    trace.write(TraceLevel::patch, "loadPatch(ch%d)", 2);
    trace.write(TraceLevel::warning, "unseen");
    trace.write(TraceLevel::patch, std::string(600, 'x'));
    EXPECT_EQ(lines, "SV2 lost 3\nSV2 loadPatch(ch2)\nSV2 " + std::string(506, 'x') + "\n");
}

TEST(Trace, LinesOfTheAudioThreadWaitForTheFlush) {
    lines.clear();
    Trace trace{collect};
    trace.setMask(4 + 8);
    std::thread audio{[&trace] {
        trace.later(TraceLevel::midi, "MIDI @ %d: %X %d %d", 5, 0x92, 60, 100);
        trace.later(TraceLevel::transport, "%.2fbpm", 120.5);
        trace.later(TraceLevel::content, "unseen");
        for (int i = 0; i < 100; ++i) trace.later(TraceLevel::midi, ".");
    }};
    audio.join();
    EXPECT_EQ(lines, "");
    trace.flush();
    EXPECT_TRUE(lines.starts_with("SV2 MIDI @ 5: 92 60 100\nSV2 120.50bpm\nSV2 .\n")) << lines;
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 64) << "a full ring loses lines";
}

}  // namespace
