#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "base/random.h"
#include "base/units.h"
#include "measure/measure.h"
#include "voice/filter/voice_filter.h"

namespace stratovane {
namespace {

using measure::Signal;

FilterInputs at(double hz, double rate, float resonance) {
    return {0, static_cast<float>(std::log(2 * std::numbers::pi * hz / rate)), 0, resonance};
}

Signal run(VoiceFilter& filter, const FilterInputs& inputs, const Signal& x) {
    const Signal ones(tickFrames, 1.0f);
    Signal y(x.size());
    for (std::size_t i = 0; i + tickFrames <= x.size(); i += tickFrames) {
        filter.update(inputs);
        filter.render(&x[i], ones.data(), &y[i]);
    }
    return y;
}

Signal responseOf(FilterCore core, FilterMode mode, const FilterInputs& inputs) {
    const float scale = core >= FilterCore::ladder ? 1e-3f : 1.0f;  // where the ladder is linear
    return measure::impulseResponse(
        [&](Signal x) {
            for (float& s : x) s *= scale;
            VoiceFilter filter;
            filter.start(core, mode, false);
            Signal y = run(filter, inputs, x);
            for (float& s : y) s /= scale;
            return y;
        },
        1 << 14);
}

TEST(VoiceFilter, ModesHaveTheirSlopes) {
    constexpr double rate = 96000, cutoff = 500;
    struct Row {
        FilterCore core;
        FilterMode mode;
        double below, above;  // dB per octave far from the cutoff
    };
    const FilterCore d = FilterCore::digital, l = FilterCore::ladder;
    for (const Row& row : {Row{d, FilterMode::off, 0, 0}, Row{d, FilterMode::low24, 0, -24},
                           Row{d, FilterMode::low12, 0, -12}, Row{d, FilterMode::band18, 6, -18},
                           Row{d, FilterMode::band12, 6, -6}, Row{d, FilterMode::high12, 12, 0},
                           Row{d, FilterMode::presence, 0, 0}, Row{d, FilterMode::peak, 0, 0},
                           Row{d, FilterMode::damper, 0, -6}, Row{l, FilterMode::low24, 0, -24},
                           Row{l, FilterMode::low12, 0, -12}, Row{l, FilterMode::damper, 0, -6}}) {
        const Signal h = responseOf(row.core, row.mode, at(cutoff, rate, 0.25f));
        const std::string name =
            std::to_string(int(row.core)) + "/" + std::to_string(int(row.mode));
        const auto gain = [&](double hz) { return measure::gainDb(h, rate, hz); };
        EXPECT_NEAR(gain(60) - gain(30), row.below, 0.6) << name;
        EXPECT_NEAR(gain(4000) - gain(2000), row.above, 1.5) << name;
        const bool passesLow = row.below == 0;
        if (passesLow && row.core == d) {
            EXPECT_NEAR(gain(20), 6.02, 0.15) << name;
        }
    }
}

TEST(VoiceFilter, OffIsTwiceTheInput) {
    VoiceFilter filter;
    filter.start(FilterCore::digital, FilterMode::off, false);
    Random random{3};
    Signal x(320);
    for (float& s : x) s = random.bipolar();
    const Signal y = run(filter, at(100, 48000, 0.9f), x);
    for (std::size_t i = 0; i < x.size(); ++i) EXPECT_EQ(y[i], 2 * x[i]);
}

TEST(VoiceFilter, PeaksAtTheCutoffAsHighAsTheResonanceSays) {
    for (double rate : {44100.0, 96000.0}) {
        for (double hz : {200.0, 1000.0, 2500.0}) {
            // f is the cutoff's angle; the filter's own is 2 asin(f / 2).
            const double f = 2 * std::numbers::pi * hz / rate;
            const double expected = 2 * std::asin(f / 2) * rate / (2 * std::numbers::pi);
            for (float r : {0.6f, 0.8f}) {
                const Signal h =
                    responseOf(FilterCore::digital, FilterMode::band12, at(hz, rate, r));
                double best = 0, bestHz = 0;
                for (double probe = hz * 0.8; probe < hz * 1.25; probe *= 1.001) {
                    const double gain = measure::gainDb(h, rate, probe);
                    if (bestHz == 0 || gain > best) best = gain, bestHz = probe;
                }
                EXPECT_NEAR(bestHz / expected, 1, 0.04) << rate << " " << hz;
                EXPECT_NEAR(best, measure::decibels(2 / (0.95 - double(r))), 0.9)
                    << rate << " " << hz;
            }
        }
    }
    // "Peak EQ" cuts at low resonance and lifts at a high one.
    const auto peak = [](float r) {
        return measure::gainDb(
            responseOf(FilterCore::digital, FilterMode::peak, at(1000, 48000, r)), 48000, 1000);
    };
    EXPECT_LT(peak(0.0f), -10);
    EXPECT_NEAR(peak(0.45f), 6, 1.5);
    EXPECT_GT(peak(0.7f), 12);
}

TEST(VoiceFilter, OscillatesAtItsCutoffWithABoundedLevel) {
    for (const FilterCore core : {FilterCore::digital, FilterCore::ladder}) {
        VoiceFilter filter;
        filter.start(core, FilterMode::low12, true);
        const Signal silence(96000);
        const Signal y = run(filter, at(1000, 48000, 1.0f), silence);
        EXPECT_GT(measure::peak({y.begin(), y.begin() + 480}), 0.3);
        EXPECT_LT(measure::peak(y), 4);
        const Signal end(y.end() - 16384, y.end());
        const bool digital = core == FilterCore::digital;
        EXPECT_GT(measure::rms(end), digital ? 0.001 : 0.1) << int(core);
        const auto s = measure::spectrum(end, 48000);
        EXPECT_NEAR(s.hz(s.strongestBin()), 1000, digital ? 10 : 150) << int(core);
    }
}

TEST(VoiceFilter, ALoudResonanceIsDamped) {
    const auto ring = [](float amplitude) {
        VoiceFilter filter;
        filter.start(FilterCore::digital, FilterMode::low12, false);
        Signal x(48000);
        x[0] = amplitude;
        return measure::decaySeconds(run(filter, at(1000, 48000, 0.94f), x), 48000, 10, 0.01);
    };
    EXPECT_LT(ring(300), 0.5 * ring(0.1f));
}

/// The recurrences as the literature has them, in double: the loops rearrange them.
struct Textbook {
    double low = 0, band = 0, low2 = 0, band2 = 0, last = 0;
    double digital(const FilterKernel& k, double x, double factor) {
        const auto step = [&](float f) {
            return std::clamp(double(f) * factor, 0.0, double(k.limit));
        };
        const double high = double(k.damping) * band + low - (x + last);
        band -= step(k.f1) * high;
        low += step(k.f2) * band;
        last = x;
        band2 -= (double(k.damping2) * band2 - low + low2) * double(k.f3);
        low2 += band2 * double(k.f3);
        return double(k.inputTap) * x + double(k.lowTap) * low + double(k.bandTap) * band +
               double(k.highTap) * high + double(k.low2Tap) * low2 + double(k.band2Tap) * band2;
    }
    double ladder(const FilterKernel& k, double x, double factor) {
        const double a = std::clamp(double(k.stage) * factor, 0.0, 1.0);
        const double y4 = std::clamp(band2, -2.0, 2.0);
        const double u = (x - 1.0576 * (y4 - y4 * y4 * y4 / 12)) * double(k.feedback) + 2 * x;
        double in = u, before = last;
        for (double* s : {&low, &band, &low2, &band2}) {
            const double old = *s;
            *s += (in + before - 2 * old) * a;
            in = *s;
            before = old;
        }
        last = u;
        const double d = double(k.distortion);
        const double e = std::clamp(16 * d * (band2 - low2), -2.0, 2.0);
        return double(k.lowTap) * low + double(k.bandTap) * band + double(k.band2Tap) * band2 -
               e * d;
    }
};

TEST(VoiceFilter, LoopsFollowTheirRecurrences) {
    Random random{11};
    for (const FilterCore core :
         {FilterCore::digital, FilterCore::digitalModulated, FilterCore::alternativeBand,
          FilterCore::ladder, FilterCore::ladderModulated}) {
        const bool ladder = core >= FilterCore::ladder;
        const bool modulated =
            core == FilterCore::digitalModulated || core == FilterCore::ladderModulated;
        for (int mode = 0; mode <= 8; ++mode) {
            VoiceFilter filter;
            filter.start(core, static_cast<FilterMode>(mode), false);
            filter.setCore(core, 0.5f, core == FilterCore::ladderModulated ? 0.3f : 0.0f);
            Textbook book;
            double worst = 0;
            for (int tick = 0; tick < 60; ++tick) {
                filter.update(at(200 * std::pow(2, 5 * double(random.unipolar())), 48000,
                                 random.unipolar() * 0.8f));
                book.band += 1e-8;
                book.band2 += 1e-8;
                Signal x(tickFrames), m(tickFrames), y(tickFrames);
                for (int i = 0; i < tickFrames; ++i) {
                    x[static_cast<std::size_t>(i)] = random.bipolar();
                    m[static_cast<std::size_t>(i)] = 1 + 2 * random.bipolar();
                }
                filter.render(x.data(), m.data(), y.data());
                for (std::size_t i = 0; i < tickFrames; ++i) {
                    const double factor = modulated ? double(m[i]) : 1.0;
                    const double expected =
                        ladder ? book.ladder(filter.kernel(), double(x[i]), factor)
                               : book.digital(filter.kernel(), double(x[i]), factor);
                    worst = std::max(worst, std::fabs(double(y[i]) - expected));
                }
            }
            EXPECT_LT(worst, 2e-5) << int(core) << "/" << mode;
        }
    }
}

TEST(VoiceFilter, StaysBoundedUnderWildModulation) {
    Random random{5};
    for (float rate : {8000.0f, 44100.0f, 96000.0f, 192000.0f}) {
        for (int core = 0; core < 5; ++core) {
            for (int mode = 0; mode <= 8; ++mode) {
                VoiceFilter filter;
                const auto kind = static_cast<FilterCore>(core);
                filter.start(kind, static_cast<FilterMode>(mode), true);
                filter.setCore(kind, 0.68f, 0.5f);
                double loudest = 0;
                Signal x(tickFrames), m(tickFrames), y(tickFrames);
                for (int tick = 0; tick < 2000; ++tick) {
                    filter.update({random.bipolar() * 4,
                                   std::log(262 / rate) + random.bipolar() * 10,
                                   random.bipolar() * 3, random.bipolar() * 3});
                    for (float& s : x) s = random.bipolar();
                    for (float& s : m) s = 1 + 0.8f * random.bipolar();
                    filter.render(x.data(), m.data(), y.data());
                    ASSERT_TRUE(measure::allFinite(y));
                    loudest = std::max(loudest, measure::peak(y));
                }
                EXPECT_LT(loudest, 300) << rate << " core " << core << " mode " << mode;
            }
        }
    }
}

/// Steps that alternate from sample to sample feed the filter where no energy is looked at.
TEST(VoiceFilter, AlternatingStepsDoNotRunAway) {
    VoiceFilter filter;
    filter.start(FilterCore::digitalModulated, FilterMode::low12, false);
    Signal x(tickFrames, 0.1f), m(tickFrames), y(tickFrames);
    for (std::size_t i = 0; i < tickFrames; ++i) m[i] = i % 2 == 0 ? 1.65f : 0.35f;
    double loudest = 0;
    for (int tick = 0; tick < 1000; ++tick) {
        filter.update({0, std::log(1.5f), 0, 0.65f});
        filter.render(x.data(), m.data(), y.data());
        ASSERT_TRUE(measure::allFinite(y));
        loudest = std::max(loudest, measure::peak(y));
    }
    EXPECT_GT(loudest, 10);  // it would
    EXPECT_LT(loudest, 300);
}

TEST(VoiceFilter, TheLouderChannelDampsBoth) {
    VoiceFilter one, both;
    for (VoiceFilter* f : {&one, &both}) f->start(FilterCore::digital, FilterMode::low12, false);
    both.useBothChannels(true);
    Signal loud(tickFrames, 3.0f), y(tickFrames);
    for (int tick = 0; tick < 100; ++tick) {
        for (VoiceFilter* f : {&one, &both}) {
            f->update(at(1000, 48000, 0.94f));
            f->render(loud.data(), y.data(), 1);
        }
    }
    EXPECT_GT(both.kernel(0).damping, 2 * one.kernel(0).damping);
    EXPECT_EQ(both.kernel(0).damping, both.kernel(1).damping);
}

}  // namespace
}  // namespace stratovane
