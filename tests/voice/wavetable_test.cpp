#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "base/units.h"
#include "measure/measure.h"
#include "voice/analog/analog_voice.h"
#include "voice/wavetable/wavetable_voice.h"

namespace stratovane {
namespace {

using measure::Signal;

double noteHz(double note) { return 440 * std::exp2((note - 69) / 12); }

/// 64 times the same cycle.
template <class Wave>
std::unique_ptr<Wavetable> tableOf(Wave wave) {
    std::vector<SingleCycle> cycles(Wavetable::waves);
    for (SingleCycle& cycle : cycles)
        for (std::size_t i = 0; i < cycle.size(); ++i)
            cycle[i] = static_cast<float>(wave(static_cast<double>(i) / 256));
    return makeWavetable(std::span<const SingleCycle, Wavetable::waves>{cycles});
}
double sine(double x) { return std::sin(2 * std::numbers::pi * x); }
double saw(double x) { return 1 - 2 * x; }

/// Every value tells its level and wave.
std::unique_ptr<Wavetable> labelled() {
    auto table = std::make_unique<Wavetable>();
    for (int level = 0; level < Wavetable::levels; ++level)
        for (int w = 0; w < Wavetable::waves; ++w)
            for (int i = 0; i < Wavetable::size(level); ++i)
                const_cast<std::int16_t*>(table->wave(level, w))[i] =
                    static_cast<std::int16_t>(256 * level + w);
    return table;
}
int label(WavetableReader& reader) { return static_cast<int>(reader.next() * 32768); }

Signal read(const Wavetable& table, double cyclesPerSample, std::size_t samples) {
    WavetableReader reader;
    reader.start(&table);
    reader.tick(cyclesPerSample, 0);
    Signal x(samples);
    for (float& sample : x) sample = reader.next();
    return x;
}

TEST(WavetableReader, HoldsItsPitch) {
    const auto table = tableOf(sine);
    struct Row {
        double rate, lowestNote;  // below, the step of 2^-23 cycles is audible in the figures
    };
    for (const Row& row : {Row{44100, 48}, Row{48000, 48}, Row{96000, 60}, Row{192000, 72}}) {
        for (double note = row.lowestNote; noteHz(note) < 0.45 * row.rate; note += 12) {
            const double hz = noteHz(note);
            const double found =
                measure::frequencyNear(read(*table, hz / row.rate, 1 << 15), row.rate, hz);
            EXPECT_NEAR(measure::cents(found, hz), 0, 0.05) << note << " at " << row.rate;
        }
    }
}

TEST(WavetableReader, AliasesNoMoreThanItsLevelsDo) {
    const auto table = tableOf(saw);
    struct Row {
        int note;
        double db;
    };
    for (const Row& row : {Row{60, -55}, Row{96, -37}, Row{120, -25}}) {
        const double hz = noteHz(row.note);
        const auto s = measure::spectrum(read(*table, hz / 44100, 1 << 16), 44100);
        const double db = measure::inharmonicDb(s, hz, 22050);
        EXPECT_LT(db, row.db) << row.note << "\n" << s.peaks(-60);
    }
}

TEST(WavetableReader, StaysBelowTwoValuesPerSample) {
    const auto table = labelled();
    struct Row {
        double valuesPerSample;  // of level 0
        int level;
    };
    for (const Row& row : {Row{0.01, 0}, Row{1.999, 0}, Row{2, 1}, Row{3.999, 1}, Row{4, 2},
                           Row{127.9, 6}, Row{128, 7}, Row{1000, 7}, Row{INFINITY, 7}}) {
        WavetableReader reader;
        reader.start(table.get());
        reader.tick(row.valuesPerSample / 256, 0);
        EXPECT_EQ(label(reader) / 256, row.level) << row.valuesPerSample;
    }
}

TEST(WavetableReader, ChangesWaveWhereACycleBegins) {
    const auto table = labelled();
    struct Row {
        float place;
        int wave;
    };
    WavetableReader reader;
    reader.start(table.get());
    reader.tick(0.125, 0.5f);
    for (const Row& row :
         {Row{0, 0}, Row{-3, 0}, Row{1.0f / 64, 1}, Row{0.0155f, 0}, Row{0.99f, 63}, Row{1, 63},
          Row{50, 63}, Row{INFINITY, 63}, Row{-INFINITY, 0}, Row{NAN, 0}}) {
        const int before = label(reader) % 256;
        reader.tick(0.125, row.place);
        for (int i = 1; i < 8; ++i) EXPECT_EQ(label(reader) % 256, before) << row.place;
        for (int i = 0; i < 8; ++i) EXPECT_EQ(label(reader) % 256, row.wave) << row.place;
    }
}

TEST(WavetableReader, ReadsWhatIsStoredAndFlipsBits) {
    const auto table = tableOf(saw);
    for (const int bits : {0, 1, 5000, 16383}) {
        WavetableReader reader;
        reader.start(table.get());
        reader.setAliasing(bits);
        reader.tick(0.5 / 256, 1);  // half a value per sample
        for (int i = 0; i < 256; ++i) {
            const int a = table->wave(0, 63)[i] ^ bits, b = table->wave(0, 63)[i + 1] ^ bits;
            ASSERT_EQ(reader.next() * 32768, static_cast<float>(a)) << i;
            ASSERT_EQ(reader.next() * 32768, static_cast<float>(a + b) / 2) << i;
        }
    }
}

/// A voice with the filter off (gain 2).
struct Player {
    ElementControls controls;
    double rate = 48000;
    float wave = 0, tablePitch = 0;
    Random random{7};
    WavetableVoice voice;

    explicit Player(TableShape shape, float mix, const Wavetable* table = nullptr) {
        controls.wavetable.wave2 = static_cast<int>(shape);
        controls.wavetable.mix2 = mix;
        start(table);
    }
    void start(const Wavetable* table) { voice.start(controls, table, 0, random); }
    Signal play(double hz, std::size_t samples = 1 << 15) {
        Signal x(samples);
        for (std::size_t i = 0; i + tickFrames <= samples; i += tickFrames) {
            voice.tick(static_cast<float>(hz / rate * (voice.runsTwice() ? 2 : 1)), wave,
                       tablePitch, {});
            voice.render(&x[i]);
        }
        return x;
    }
};

TEST(WavetableVoice, SecondOscillatorHasItsWaves) {
    const double pi = std::numbers::pi, hz = 301;
    const auto constant = tableOf([](double) { return 1; });
    struct Row {
        TableShape shape;
        double below, first, second, third, rms;  // amplitudes at 1/2, 1, 2, 3 times the note
    };
    const double triangle = 8 / (pi * pi);
    for (const Row& row :
         {Row{TableShape::saw, 0, 2 / pi, 1 / pi, 2 / pi / 3, 1 / std::sqrt(3.0)},
          Row{TableShape::square, 0, 0.6 * 4 / pi, 0, 0.6 * 4 / pi / 3, 0.6},
          Row{TableShape::triangle, 0, 1.5 * triangle, 0, 1.5 * triangle / 9, 1.5 / std::sqrt(3.0)},
          Row{TableShape::sawTriangle, 0.5 * triangle, 2 / pi, 1 / pi, 2 / pi / 3,
              std::sqrt(1 / 3.0 + 0.25 / 3)},
          Row{TableShape::noise, 0, 0, 0, 0, 1 / std::sqrt(12.0)},
          Row{TableShape::tableNoise, 0, 0, 0, 0, 2 / std::sqrt(12.0)},
          Row{TableShape::tableTriangle, 2 * triangle, 0, 0, 0, 2 / std::sqrt(3.0)}}) {
        const auto name = ::testing::Message() << "wave " << static_cast<int>(row.shape);
        Player p{row.shape, 1, constant.get()};
        const Signal x = p.play(hz);
        EXPECT_NEAR(measure::levelAt(x, p.rate, hz / 2), row.below, 0.03) << name;
        EXPECT_NEAR(measure::levelAt(x, p.rate, hz), row.first, 0.03) << name;
        EXPECT_NEAR(measure::levelAt(x, p.rate, 2 * hz), row.second, 0.03) << name;
        EXPECT_NEAR(measure::levelAt(x, p.rate, 3 * hz), row.third, 0.03) << name;
        EXPECT_NEAR(measure::rms(x), row.rms, 0.02) << name;
        // Its pitch is a fraction's: exact on low notes, too.
        if (row.first == 0) continue;
        const double low = measure::frequencyNear(p.play(40, 1 << 16), p.rate, 40);
        EXPECT_NEAR(measure::cents(low, 40), 0, 0.05) << name;
    }
}

TEST(WavetableVoice, MixesAndIsSilentWithoutATable) {
    const auto table = tableOf(sine);
    Player none{TableShape::saw, 1e-8f};
    none.controls.wavetable.aliasing = 16383;
    none.start(nullptr);
    EXPECT_LT(measure::peak(none.play(300)), 1e-6);
    EXPECT_NEAR(none.voice.levelFactor(), 1, 1e-6);
    Player half{TableShape::square, 0.5f, table.get()};
    EXPECT_NEAR(half.voice.levelFactor(), 1.5, 1e-6);
    // The table keeps the note's pitch below an oscillator that runs twice as fast.
    EXPECT_NEAR(measure::levelAt(half.play(300), 48000, 900), 0.3 * 4 / std::numbers::pi / 3, 0.01);
    half.controls.wavetable.mix2 = 0;
    half.controls.wavetable.ratio2 = 1.5f;
    half.voice.refresh(half.controls);
    half.tablePitch = octavePitch;
    EXPECT_NEAR(measure::levelAt(half.play(300), 48000, 900), 2, 0.01);
}

TEST(WavetableVoice, SyncRestartsTheTableOncePerPeriod) {
    const auto table = tableOf(sine);
    const double hz = 200.3;
    for (const TableShape shape : {TableShape::saw, TableShape::square, TableShape::triangle,
                                   TableShape::noise, TableShape::tableTriangle}) {
        Player p{shape, 0, table.get()};
        p.tablePitch = std::log(1.5f);
        const Signal free = p.play(hz);
        p.controls.wavetable.sync = true;
        p.voice.refresh(p.controls);
        const Signal synced = p.play(hz);
        EXPECT_NEAR(measure::levelAt(free, p.rate, 1.5 * hz), 2, 0.01);
        EXPECT_LT(measure::levelAt(synced, p.rate, 1.5 * hz), 0.01);
        EXPECT_GT(measure::levelAt(synced, p.rate, hz), 0.5);
        // Half a turn of a sine is left over: without fractions the edges would jitter by a sample.
        EXPECT_LT(measure::inharmonicDb(measure::spectrum(synced, p.rate), hz, 15000), -40)
            << static_cast<int>(shape);
    }
}

TEST(AnalogVoice, ReadsATablePastItsHighpass) {
    const auto table = tableOf(sine);
    AnalogVoice voice;
    ElementControls controls;
    controls.analog.wave = controls.analog.wave2 = 6;
    controls.analog.mix1 = -0.5f;
    controls.analog.mix2 = 0.25f;
    controls.analog.ratio2 = 1.5f;
    controls.analog.leak = 0.5f;
    Random random;
    voice.start(controls, 0, 48000, random, table.get());
    Signal x(1 << 15);
    for (std::size_t i = 0; i < x.size(); i += tickFrames) {
        voice.tick(2 * 1000.0f / 48000, 0, 0, {});
        voice.render(&x[i]);
    }
    EXPECT_NEAR(measure::levelAt(x, 48000, 1000), 1, 0.01);
    EXPECT_NEAR(measure::levelAt(x, 48000, 1500), 0.5, 0.01);
    // From phase 0 a quarter turn inverted, and three eighths.
    EXPECT_NEAR(x[12], -1 + 0.5 * std::sqrt(0.5), 0.01);
}

}  // namespace
}  // namespace stratovane
