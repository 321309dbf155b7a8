#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "base/units.h"
#include "measure/measure.h"
#include "voice/fm/fm_voice.h"

namespace stratovane {
namespace {

using measure::Signal;

constexpr double sineOfModulator = 12 / (std::numbers::pi * std::numbers::pi * std::numbers::pi);

double noteHz(double note) { return 440 * std::exp2((note - 69) / 12); }

/// A voice with the filter off (gain 2), operators silent unless told otherwise.
struct Player {
    ElementControls controls;
    FmControls& fm = controls.fm;
    FmVoice::Note note;
    double rate = 44100;
    float modulation = 1;
    FmVoice voice;

    void start() {
        Random random{7};
        voice.start(controls, note, static_cast<float>(rate), random);
    }
    Signal play(double hz, std::size_t samples = 1 << 15) {
        Signal x(samples);
        for (std::size_t i = 0; i + tickFrames <= samples; i += tickFrames) {
            voice.tick(static_cast<float>(2 * hz / rate), modulation, {});
            voice.render(&x[i]);
        }
        return x;
    }
    Signal playNote(std::size_t samples = 1 << 15) {
        start();
        return play(noteHz(note.key), samples);
    }
    double levelAt(double hz) { return measure::levelAt(playNote(), rate, hz); }
};

TEST(FmVoice, HoldsItsPitch) {
    for (const double rate : {44100.0, 48000.0, 96000.0}) {
        for (int key = 24; key <= 120; key += 12) {
            Player p;
            p.rate = rate;
            p.note.key = key;
            p.fm.through = 1;
            p.fm.operators[0].coarse = 1.5f;
            const double hz = noteHz(key);
            const Signal x = p.playNote(1 << 16);
            EXPECT_NEAR(measure::cents(measure::frequencyNear(x, rate, hz), hz), 0, 0.05)
                << key << " at " << rate;
            if (key < (rate > 50000 ? 60 : 48)) continue;  // operators count in steps
            EXPECT_NEAR(measure::cents(measure::frequencyNear(x, rate, 1.5 * hz), 1.5 * hz), 0,
                        0.05)
                << key << " at " << rate;
        }
    }
}

TEST(FmVoice, WithoutDepthIsACarrierAndOperator1) {
    Player p;
    p.fm.operators[0].coarse = 5.5f;
    p.fm.through = 0.8f;  // of level 0.5
    p.note.key = 72;
    const Signal x = p.playNote();
    const double hz = noteHz(72), carrier = measure::levelAt(x, p.rate, hz);
    EXPECT_NEAR(carrier, 0.65, 0.02);
    EXPECT_LT(measure::decibels(measure::levelAt(x, p.rate, 3 * hz) / carrier), -30);
    EXPECT_NEAR(measure::levelAt(x, p.rate, 5.5 * hz), 2 * 0.4 * sineOfModulator, 0.005);
    EXPECT_LT(measure::levelAt(x, p.rate, 4.5 * hz), 1e-3);
    EXPECT_LT(measure::levelAt(x, p.rate, 6.5 * hz), 1e-3);
}

/// Sidebands of a sine whose frequency swings: Bessel functions of its index, equal at every rate.
TEST(FmVoice, SidebandsFollowBesselFunctions) {
    for (const double rate : {44100.0, 96000.0}) {
        for (const int which : {0, 1}) {
            for (const float modulation : {0.0f, 0.5f, 1.0f, 3.0f}) {
                Player p;
                p.rate = rate;
                p.modulation = modulation;
                p.note.key = 57;
                FmOperatorControls& o = p.fm.operators[static_cast<std::size_t>(which)];
                o.coarse = 7;
                o.depth = 0.35f;
                p.fm.envelopeLevel = 1;
                const double hz = 220, modulatorHz = 7 * hz;
                // What the operator adds per sample, in half turns, against its own turns.
                const double depth =
                    0.5 * 0.35 * std::exp(3 * (std::min(double(modulation), 1.0) - 1));
                const double index = depth * sineOfModulator * 44100 / (2 * modulatorHz);
                const Signal x = p.playNote();
                const double carrier = measure::levelAt(x, rate, hz);
                for (const int order : {1, 2}) {
                    const double expected =
                        std::cyl_bessel_j(order, index) / std::cyl_bessel_j(0, index);
                    for (const int side : {-1, 1}) {
                        const double at = std::fabs(hz + side * order * modulatorHz);
                        EXPECT_NEAR(measure::levelAt(x, rate, at) / carrier, expected, 0.02)
                            << "operator " << which + 1 << " input " << modulation << " order "
                            << side * order << " index " << index;
                    }
                }
            }
        }
    }
}

TEST(FmVoice, OperatorLevelsFollowVelocityAndKey) {
    struct Row {
        float velocity, sensitivity;
        int key;
        float low, breakpoint, high;
        double level;
    };
    for (const Row& row : {
             Row{1, 0, 60, 0, 0, 0, 0.5},
             Row{-1, 0, 60, 0, 0, 0, 0.5},
             Row{1, 1, 60, 0, 0, 0, 1},
             Row{0, 1, 60, 0, 0, 0, 0.25},
             Row{-1, 1, 60, 0, 0, 0, 0},
             Row{-1, 0.5f, 60, 0, 0, 0, 0.25},
             Row{0, 0, 72, 5, 60, 1, 1},
             Row{0, 0, 72, 5, 60, -0.5f, 0.5 * std::sqrt(0.5)},
             Row{0, 0, 100, 5, 60, 1, 2},  // two octaves of gain at most
             Row{0, 0, 48, 1, 60, 5, 0.25},
             Row{0, 0, 48, -1, 60, 5, 1},
             Row{0, 0, 60, 5, 60, 5, 0.5},
             Row{0, 0, 66, 5, 63.9f, 1, 0.5 * std::exp2(0.175)},
         }) {
        Player p;
        p.note = {row.key, row.velocity, 0};
        FmOperatorControls& o = p.fm.operators[0];
        o = {2.5f, 0, 0, row.sensitivity, row.low, row.breakpoint, row.high};
        p.fm.through = 1;
        EXPECT_NEAR(p.levelAt(2.5 * noteHz(row.key)), 2 * row.level * sineOfModulator, 0.01)
            << row.velocity << " " << row.sensitivity << " key " << row.key;
        // The same of operator 2, as a sideband.
        Player second;
        second.note = p.note;
        second.fm.operators[1] = o;
        second.fm.operators[1].depth = 0.03f;
        second.fm.envelopeLevel = 1;
        const double hz = noteHz(row.key), modulatorHz = 2.5 * hz;
        const double index = 0.03 * row.level * sineOfModulator * 44100 / (2 * modulatorHz);
        const Signal x = second.playNote();
        EXPECT_NEAR(measure::levelAt(x, p.rate, 3.5 * hz) / measure::levelAt(x, p.rate, hz),
                    std::cyl_bessel_j(1, index) / std::cyl_bessel_j(0, index), 0.02)
            << "sideband, key " << row.key;
    }
}

TEST(FmVoice, RatiosAndKeytrack) {
    struct Row {
        int key;
        float coarse, fine;
        double ratio;
    };
    for (const Row& row :
         {Row{72, 2, 0.01f, 2.005}, Row{48, 2, 0.01f, 2.02}, Row{60, 2, 0.01f, 2.01},
          Row{72, 2, 0.02f, 2.02}, Row{72, 2.5f, 0.01f, 2.51}}) {
        Player p;
        p.note.key = row.key;
        p.fm.operators[0] = {row.coarse, row.fine};
        p.fm.through = 1;
        const double hz = row.ratio * noteHz(row.key);
        EXPECT_NEAR(measure::cents(measure::frequencyNear(p.playNote(1 << 17), p.rate, hz), hz), 0,
                    0.1);
    }
    for (const int key : {48, 72}) {
        for (const float loose : {0.0f, 0.5f, 1.0f}) {
            Player p;
            p.note.key = key;
            p.fm.operators[1] = {.coarse = 6.5f, .depth = 0.2f};
            p.fm.envelopeLevel = 1;
            p.fm.keytrack = loose;
            const double carrier = noteHz(key);
            const double modulator = 6.5 * noteHz(key + (60 - key) * double(loose));
            const Signal x = p.playNote();
            EXPECT_GT(measure::levelAt(x, p.rate, carrier + modulator), 0.05) << key << loose;
            EXPECT_GT(measure::levelAt(x, p.rate, modulator - carrier), 0.05) << key << loose;
        }
    }
}

TEST(FmVoice, EnvelopeOfOperator2) {
    struct Row {
        float level;
        double first, last;  // of the sideband it settles at without an envelope
    };
    const auto sideband = [](float level, std::size_t skip, float bend) {
        Player p;
        p.note = {60, 0, bend};
        p.fm.operators[1] = {.coarse = 7, .depth = 0.2f};
        p.fm.envelopeLevel = level;
        p.fm.envelopePerTick = 0.001f;
        p.start();
        p.play(noteHz(60), skip);
        return measure::levelAt(p.play(noteHz(60), 4096), p.rate, 8 * noteHz(60));
    };
    const double full = sideband(1, 0, 0);
    EXPECT_GT(full, 0.05);
    constexpr std::size_t late = 32 * 8000;
    for (const Row& row : {Row{0, 0.94, 0}, Row{0.5f, 0.95, 0.25}, Row{1, 1, 1}, Row{1.5f, 0.53, 1},
                           Row{2, 0.06, 1}}) {
        EXPECT_NEAR(sideband(row.level, 0, 0) / full, row.first, 0.03) << row.level;
        EXPECT_NEAR(sideband(row.level, late, 0) / full, row.last, 0.03) << row.level;
    }
    // e^7 as fast: past the limit, at its end with the first tick.
    EXPECT_NEAR(sideband(0, 0, 7) / full, 0, 0.03);
    EXPECT_GT(sideband(0, late / 8, -2) / sideband(0, late / 8, 0), 2);
}

TEST(FmVoice, AFixedCarrierLeavesTheOperatorsOnTheNote) {
    Player p;
    p.fm.carrierHz = 30;
    p.fm.operators[0].coarse = 2;
    p.fm.through = 1;
    for (const int key : {60, 72}) {
        p.note.key = key;
        const Signal x = p.playNote();
        EXPECT_NEAR(measure::levelAt(x, p.rate, 15), 0.65, 0.02) << key;  // half turns
        EXPECT_NEAR(measure::levelAt(x, p.rate, 2 * noteHz(key)), sineOfModulator, 0.01) << key;
        EXPECT_LT(measure::levelAt(x, p.rate, noteHz(key)), 0.01) << key;
    }
}

TEST(FmVoice, StartPhases) {
    struct Row {
        float start, velocityToStart, velocity;
        double phase;  // of the operators' turn
    };
    for (const Row& row :
         {Row{0, 0, 1, 0}, Row{0.25f, 0, 1, 0.25}, Row{0.25f, 0.5f, 1, -0.25}, Row{1, -1, 1, 2}}) {
        Player p;
        p.note.velocity = row.velocity;
        p.controls.start = row.start;
        p.controls.velocityToStart = row.velocityToStart;
        p.fm.through = 2;
        p.fm.operators[0].coarse = 0.5f;
        p.start();
        const Signal x = p.play(1, 32);  // hardly moves
        const double turn = row.phase - std::floor(row.phase);
        const double w = 2 * turn - 1, c = row.phase / 2 - 2 * std::floor(row.phase / 4 + 0.5);
        const double carrier = c * (1 - c * c) * (1 - c * c / 2);
        EXPECT_NEAR(x[0], 2 * (carrier + w - w * w * w), 0.002) << row.phase;
    }
}

}  // namespace
}  // namespace stratovane
