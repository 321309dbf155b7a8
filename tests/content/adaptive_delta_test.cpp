#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "content/content_support.h"

namespace stratovane {
namespace {

using content_test::randomWave;

std::vector<float> sine(double hz, float peak, std::size_t frames) {
    std::vector<float> wave(frames);
    for (std::size_t i = 0; i < frames; ++i)
        wave[i] = peak * static_cast<float>(
                             std::sin(2 * std::numbers::pi * hz * static_cast<double>(i) / 44100));
    return wave;
}

double noiseDb(const std::vector<float>& wave, const std::vector<float>& decoded) {
    double signal = 0, noise = 0;
    for (std::size_t i = 0; i < wave.size(); ++i) {
        signal += static_cast<double>(wave[i]) * wave[i];
        noise += std::pow(static_cast<double>(decoded[i]) - wave[i], 2);
    }
    return 10 * std::log10(signal / noise);
}

TEST(AdaptiveDelta, FollowsTheByteRulesOfTheDecoder) {
    struct Case {
        std::uint8_t byte;
        int shift;
        double units;
        int shiftAfter;
    };
    for (const Case& c :
         {Case{64, 3, 0, 2}, Case{95, 3, 31 * 8, 2}, Case{96, 3, 32 * 8, 3},
          Case{32, 1, -32 * 2, 0}, Case{31, 1, -33 * 2, 1}, Case{0, 0, -64, 0}, Case{80, 0, 16, 0},
          Case{128, 0, -64 * 2, 1}, Case{255, 4, 63 * 32, 5}, Case{200, 24, 8.0 * (1 << 24), 24}}) {
        DeltaState state{.value = 0, .shift = c.shift};
        EXPECT_EQ(static_cast<double>(state.slope(c.byte)) * (1 << 21), c.units) << int{c.byte};
        EXPECT_EQ(state.shift, c.shiftAfter) << int{c.byte};
    }
    EXPECT_EQ(DeltaState::fromRecord(5u << 24 | 0x300000).value, 0.5f);
    EXPECT_EQ(DeltaState::fromRecord(99u << 24).shift, 24);
    EXPECT_EQ(DeltaState::fromRecord(0x07123456).record(), 0x07123456u);
}

TEST(AdaptiveDelta, KeepsItsSignalToNoiseRatio) {
    struct Case {
        const char* what;
        std::vector<float> wave;
        double leastDb;
    };
    std::vector<float> mixed = sine(220, 0.3f, 20000);
    for (std::size_t i = 0; i < mixed.size(); ++i) mixed[i] += sine(3100, 0.2f, 20000)[i % 20000];
    std::vector<float> square(20000);
    for (std::size_t i = 0; i < square.size(); ++i) square[i] = i / 100 % 2 == 0 ? 0.8f : -0.8f;
    for (const Case& c :
         {Case{"100 Hz", sine(100, 0.5f, 70000), 75}, Case{"1 kHz", sine(1000, 0.5f, 20000), 55},
          Case{"10 kHz", sine(10000, 0.5f, 20000), 38},
          Case{"quiet", sine(1000, 0.001f, 20000), 55}, Case{"two", mixed, 45},
          Case{"square", square, 20}, Case{"noise", randomWave(20000, 1), 30}}) {
        DeltaState state;
        const Bytes bytes = encodeAdaptiveDelta(c.wave, state);
        std::vector<float> decoded;
        for (const std::uint8_t byte : bytes) {
            decoded.push_back(state.value);
            state.advance(byte);
        }
        EXPECT_GT(noiseDb(c.wave, decoded), c.leastDb) << c.what;
    }
}

// Every start point must decode exactly as a run from the first frame does.
TEST(AdaptiveDelta, StartRecordsStandOnTheRun) {
    for (const int channels : {1, 2}) {
        for (const std::size_t frames : {1u, 2u, 300u, 70000u}) {
            const std::vector<float> wave =
                randomWave(frames * static_cast<std::size_t>(channels), 7);
            ContentFault fault;
            const auto sample = readSampleData(
                writeSampleData({.values = wave, .channels = channels}, SampleFormat::delta),
                fault);
            ASSERT_NE(sample, nullptr) << fault.sentence;
            for (int point = 0; point < SampleData::startPoints; point += 9)
                for (int channel = 0; channel < channels; ++channel) {
                    const DeltaState run =
                        sample->stateAt(SampleData::startFrame(sample->frames(), point), channel);
                    EXPECT_EQ(sample->startState(point, channel).value, run.value);
                    EXPECT_EQ(sample->startState(point, channel).shift, run.shift);
                }
        }
    }
    EXPECT_EQ(SampleData::startFrame(1000, 63), 968);
    EXPECT_EQ(SampleData::startFrame(65537, 63), 16 * 63 * 63);
    EXPECT_EQ(SampleData::startFrame(2000000000, 63), 2000000000 / 4096 * 63 * 63 / 2 * 2);
}

}  // namespace
}  // namespace stratovane
