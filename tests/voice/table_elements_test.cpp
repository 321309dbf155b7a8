// "Wavetable", "FM" and "Analog" elements in a part, playing tables of a content folder.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "base/trace.h"
#include "content/bank_file_writer.h"
#include "content/content_library.h"
#include "content/wavetable.h"
#include "measure/measure.h"
#include "part_fixture.h"
#include "support/temporary_folder.h"
#include "voice/part_engine.h"

namespace stratovane {
namespace {

using measure::Signal;

constexpr int pieceFrames = 1024;

/// Wave w has its partial 1 + w % 4 alone.
Bytes partials() {
    std::vector<SingleCycle> cycles(Wavetable::waves);
    for (std::size_t w = 0; w < cycles.size(); ++w)
        for (std::size_t i = 0; i < 256; ++i)
            cycles[w][i] =
                static_cast<float>(std::sin(6.283185307 * double(i * (1 + w % 4)) / 256));
    return writeWavetable(*makeWavetable(std::span<const SingleCycle, Wavetable::waves>{cycles}));
}

struct Engine {
    TemporaryFolder folder;
    Trace trace;
    ContentLibrary library{trace};
    EngineShared shared;
    PartEngine part{shared, 1, 3, 0, &library};
    std::vector<float> left, right;
    std::uint8_t touched[1] = {};

    Engine() {
        const Bytes bank = writeBankFile({1, "", {{"Partials", "", partials(), {}}}, {}, {}});
        std::filesystem::create_directory(folder / "Wavetables");
        folder.put("Wavetables/000 Test",
                   {reinterpret_cast<const char*>(bank.data()), bank.size()});
        EXPECT_TRUE(library.open(folder / ""));
        part.setSampleRate(44100, pieceFrames);
        part.patch().makeSawtooth();
    }
    /// A plain element: filter off, full sustain.
    void init(int element, ElementType type) {
        part.patch().initElement(element, type);
        part.patch().set(element, 103, 0);
        part.patch().set(element, tone::randomStart, 0);
    }
    void begin() {
        for (int i = 0; i < 1000 && library.busy(); ++i) library.idle();
        EXPECT_FALSE(library.busy());
        part.patch().handOver();
    }
    void event(int status, int first, int second) {
        part.handleEvent({static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(first),
                          static_cast<std::uint8_t>(second), 0},
                         EventSource::host);
    }
    void render(int frames, int longestPiece = pieceFrames) {
        const std::size_t end = left.size() + static_cast<std::size_t>(frames);
        std::size_t at = left.size();
        left.resize(end);
        right.resize(end);
        float* outputs[2] = {left.data(), right.data()};
        for (; at < end; at += static_cast<std::size_t>(longestPiece))
            part.render({outputs, touched, 1}, static_cast<int>(at),
                        static_cast<int>(std::min(end - at, std::size_t(longestPiece))), 0);
    }
    Signal note(int key) {
        event(0x90, key, 100);
        render(1 << 16);
        return {left.end() - (1 << 15), left.end()};
    }
};

TEST(TableElements, PlayTheChosenTableAtTheNote) {
    for (const ElementType type : {ElementType::wavetable, ElementType::analog}) {
        for (const int wave : {0, 21, 63}) {
            Engine engine;
            engine.init(1, type);
            Patch& patch = engine.part.patch();
            patch.set(1, elementIndex::wave, (static_cast<float>(wave) + 0.5f) / 64);
            if (type == ElementType::analog) {
                patch.set(1, elementIndex::item, entry(6, 7.9f));
                patch.set(1, elementIndex::analogTable, 0);
            } else {
                patch.set(1, elementIndex::item, 0);
                patch.set(1, 29, 0);
            }
            engine.begin();
            const double hz = 440 * (1 + wave % 4);
            const Signal x = engine.note(69);
            EXPECT_NEAR(measure::cents(measure::frequencyNear(x, 44100, hz), hz), 0, 0.05);
            EXPECT_NEAR(measure::levelAt(x, 44100, hz) / (std::sqrt(2.0) * measure::rms(x)), 1,
                        0.03);
            EXPECT_GT(measure::rms(x), 0.01);
        }
    }
}

TEST(TableElements, WithoutATableANotePlaysAndIsSilent) {
    Engine engine;
    engine.init(1, ElementType::wavetable);
    engine.part.patch().set(1, elementIndex::item, 1);
    engine.part.patch().set(1, 29, 0);
    engine.begin();
    const Signal x = engine.note(69);
    EXPECT_EQ(engine.part.voiceCount(), 1);
    EXPECT_LT(measure::peak(x), 1e-5);
}

TEST(TableElements, FmPlaysTheNote) {
    for (const int key : {40, 69, 100}) {
        Engine engine;
        engine.init(1, ElementType::fm);
        for (const int depth : {20, 28}) engine.part.patch().set(1, depth, 0);
        engine.begin();
        const double hz = 440 * std::exp2((key - 69) / 12.0);
        EXPECT_NEAR(measure::cents(measure::frequencyNear(engine.note(key), 44100, hz), hz), 0,
                    0.05);
    }
}

/// Random elements of the three types, and a few hundred notes and edits.
Engine& playStorm(Engine& engine, int longestPiece) {
    constexpr int elements = 6;
    Random dice{29};
    Patch& patch = engine.part.patch();
    patch.setElementCount(elements);
    for (int e = 1; e <= elements; ++e) {
        constexpr ElementType types[] = {ElementType::wavetable, ElementType::fm,
                                         ElementType::analog};
        engine.init(e, types[e % 3]);
        for (int i = elementIndex::firstBlock; i <= 37; ++i) patch.set(e, i, dice.unipolar());
        for (const int i : {60, 67, 68, 69, 98, 99, 100, 101, 103, 104, 106})
            patch.set(e, i, dice.unipolar());
        // Rows push every input far beyond its range.
        for (int i = 0; i < 5 * 8; ++i)
            patch.set(e, elementIndex::firstModulationRow + i, dice.unipolar());
        patch.set(e, elementIndex::item, e % 3 == 2 ? 0.8f : 0);  // the table, or its wave
        patch.set(e, elementIndex::analogTable, e % 3 == 2 ? 0 : 0.5f);
        if (e % 3 == 0) patch.set(e, elementIndex::bank, 0);
    }
    engine.begin();
    for (int i = 0; i < 300; ++i) {
        const int key = 24 + dice.draw() % 96;
        if (dice.draw() % 2 == 0) engine.event(0x90, key, 1 + dice.draw() % 127);
        if (dice.draw() % 2 == 0) engine.event(0x80, key, 0);
        if (dice.draw() % 4 == 0)
            patch.store(1 + dice.draw() % elements, 20 + dice.draw() % 16, dice.unipolar());
        engine.render(1 + dice.draw() % 300, longestPiece);
    }
    return engine;
}

TEST(TableElements, AreTheSameForAnyCutOfBlocks) {
    Engine whole;
    playStorm(whole, pieceFrames);
    EXPECT_GT(measure::rms(whole.left), 0.01);
    EXPECT_TRUE(measure::allFinite(whole.left));
    EXPECT_LT(measure::peak(whole.left), 10000);
    for (const int piece : {7, 64}) {
        Engine cut;
        playStorm(cut, piece);
        EXPECT_TRUE(cut.left == whole.left && cut.right == whole.right) << piece;
    }
}

}  // namespace
}  // namespace stratovane
