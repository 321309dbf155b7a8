#include "engine/transport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "mrx/events.h"

namespace stratovane {
namespace {

constexpr std::int32_t allValid = TimeInfo::positionValid | TimeInfo::tempoValid |
                                  TimeInfo::barStartValid | TimeInfo::signatureValid;

TimeInfo playingAt(double position, double tempo = 120) {
    TimeInfo info;
    info.musicalPosition = position;
    info.tempo = tempo;
    info.timeSignatureNumerator = info.timeSignatureDenominator = 4;
    info.flags = TimeInfo::playing | allValid;
    return info;
}

TEST(Transport, TellsWhatChanged) {
    struct Case {
        const char* what;
        void (*change)(TimeInfo&);
        std::uint32_t changes;
    };
    const Case cases[] = {
        {"nothing", [](TimeInfo&) {}, 0},
        {"a small slip", [](TimeInfo& t) { t.musicalPosition += 0.19; }, 0},
        {"a jump", [](TimeInfo& t) { t.musicalPosition += 0.21; }, changePosition | changePlaying},
        {"a jump back", [](TimeInfo& t) { t.musicalPosition -= 0.21; },
         changePosition | changePlaying},
        {"tempo", [](TimeInfo& t) { t.tempo = 90; }, changeTempo | changePlaying},
        {"stop", [](TimeInfo& t) { t.flags &= ~TimeInfo::playing; }, changeStopped},
        {"signature", [](TimeInfo& t) { t.timeSignatureNumerator = 3; },
         changeSignature | changePosition | changePlaying},
        {"tempo not a number", [](TimeInfo& t) { t.tempo = std::nan(""); }, 0},
        {"tempo 0", [](TimeInfo& t) { t.tempo = 0; }, 0},
        {"position infinite",
         [](TimeInfo& t) { t.musicalPosition = std::numeric_limits<double>::infinity(); }, 0},
        {"denominator 0", [](TimeInfo& t) { t.timeSignatureDenominator = 0; }, 0},
        {"nothing valid", [](TimeInfo& t) { t = TimeInfo{.flags = TimeInfo::playing}; }, 0},
    };
    for (const Case& c : cases) {
        Transport transport;
        TimeInfo info = playingAt(8);
        EXPECT_EQ(transport.sync(&info).changes,
                  changeTempo | changeStarted | changePosition | changePlaying);
        c.change(info);
        EXPECT_EQ(transport.sync(&info).changes, c.changes) << c.what;
        EXPECT_TRUE(std::isfinite(transport.time().position)) << c.what;
    }
}

TEST(Transport, CountsBeatsByTempoAndRate) {
    Transport transport;
    transport.setSampleRate(48000);
    EXPECT_DOUBLE_EQ(transport.time().beatsPerFrame, 120 / (48000.0 * 60));
    const TimeInfo info = playingAt(4, 90);
    transport.sync(&info);
    transport.advance(48000);
    EXPECT_NEAR(transport.time().position, 5.5, 1e-9);
    // Without an answer the song goes on by itself.
    EXPECT_EQ(transport.sync(nullptr).changes, 0u);
    EXPECT_NEAR(transport.time().position, 5.5, 1e-9);
    // A new rate asks for the tempo again.
    transport.setSampleRate(44100);
    EXPECT_NE(transport.sync(&info).changes & changeTempo, 0u);
}

TEST(Transport, KeepsTheBarStartAtOrBeforeThePosition) {
    Transport transport;
    TimeInfo info = playingAt(100);
    info.timeSignatureNumerator = 3;
    info.barStart = 99;
    transport.sync(&info);
    EXPECT_DOUBLE_EQ(transport.time().barStart, 99);
    for (const double position : {98.5, 96.0, 3.25, -7.5}) {
        info.musicalPosition = position;
        const MusicalTime& time = transport.sync(&info);
        EXPECT_LE(time.barStart, position);
        EXPECT_GT(time.barStart + 3, position);
        EXPECT_NEAR(std::remainder(time.barStart, 3), 0, 1e-9);
    }
    // A signature change while stopped locates to the bar start.
    info.flags &= ~TimeInfo::playing;
    transport.sync(&info);
    info.timeSignatureNumerator = 4;
    info.barStart = 40;
    EXPECT_EQ(transport.sync(&info).changes, changeSignature | changePosition);
    EXPECT_DOUBLE_EQ(transport.time().position, 40);
}

}  // namespace
}  // namespace stratovane
