#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "measure/measure.h"
#include "part_fixture.h"
#include "voice/part_engine.h"

namespace stratovane {
namespace {

float at(int i) { return (static_cast<float>(i) + 0.5f) / 71.9f; }
constexpr int bend = modulationSource::pitchBend;

struct Row {
    int source, modifier;
    float parameter;  // normalised
    int destination;
    float depth = 1;
};

void setRow(Patch& patch, int index, const Row& row) {
    const int first = elementIndex::firstModulationRow + 5 * index;
    patch.set(1, first, at(row.source));
    patch.set(1, first + 1, at(row.modifier));
    patch.set(1, first + 2, row.parameter);
    patch.set(1, first + 3, entry(row.destination, 15.9f));
    patch.set(1, first + 4, row.depth);
}

/// One voice of a part whose ticks last a millisecond.
struct RowPart : TestPart {
    RowPart() : TestPart{1, 32000} {}
    void row(int index, const Row& r) { setRow(state.patch, index, r); }
    float output(int index) const { return voice(0).slots[static_cast<std::size_t>(index)].output; }
    /// The row's outputs while the bend lever stands at each of the inputs for a tick.
    std::vector<float> outputs(int index, const std::vector<float>& inputs) {
        std::vector<float> out;
        for (const float x : inputs) {
            state.controllers.bendPosition = x;
            run(32);
            out.push_back(output(index));
        }
        return out;
    }
};

// What each processor makes of a series of values. Steps of 0.3 a tick where there is a time.
TEST(Rows, Process) {
    constexpr float time = 0.0288675f;                // of both signs' times
    constexpr float up = 0.51443376f, down = 1 - up;  // parameters of ramps
    const std::vector<float> x{-1, -0.5f, 0, 0.25f, 0.5f, 1}, ones{1, 1, 1, 1, 1},
        half{1, 0.5f, 0.5f, 0.5f, 0.5f};
    const struct {
        int modifier;
        float parameter;
        std::vector<float> inputs, outputs;
    } cases[] = {
        {0, 0.5f, x, x},
        {29, 0.75f, x, {0.25f, 0.75f, 1.25f, 1.5f, 1.75f, 2.25f}},
        {30, 0.25f, x, {1.25f, 0.625f, 0, -0.3125f, -0.625f, -1.25f}},
        {31, 0.75f, x, {-1, -0.625f, 0, 0.3125f, 0.625f, 1}},
        {32, 0.5f, x, {-1, -0.5f, 0, 0, 0, 0}},
        {32, 0.625f, x, {-1, -0.5f, 0, 0.25f, 0.25f, 0.25f}},
        {32, 0.25f, x, {-0.5f, 0, 0, 0, 0, 0}},  // negative: what lies below -0.5
        {33, 0.25f, x, {-0.5f, -0.5f, 0, 0.25f, 0.5f, 1}},
        {33, 0.75f, x, {0, 0, 0, 0, 0, 0.5f}},
        {34, 0.75f, x, {-1, -0.5f, 0, 0.25f, 0.5f, 0}},
        {35, 0.25f, x, {0, -0.5f, 0, 0.25f, 0.5f, 1}},
        {36, 1, x, {-1, -0.125f, 0, 0.015625f, 0.125f, 1}},
        {36, 0, {1, 0.5f}, {1, 0.71926f}},
        {37, 0.5625f, x, {0, -1, 0, 0.70711f, 1, 0}},
        {38, 0.75f, {0, 0.5f, -1}, {1, 3.490343f, 0.082085f}},
        {39, 0.625f, {-1, -0.25f, 0.5f, 0.75f}, {-10, -10, -0.28768f, 0}},
        {40, 0.5f, x, {0, 0, 0, 1, 1, 1}},
        {41, 0, x, {-1, -1, 1, 1, 1, 1}},
        {42, 0.2f, x, {-1, 0, 0, 0, 0, 1}},  // -1, 0, 1
        {42, 0.3f, x, {-1, -0.33333f, 0.33333f, 0.33333f, 0.33333f, 1}},
        {43,
         time,
         {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f},
         {0.1f, 0.1f, 0.1f, 0.4f, 0.4f, 0.4f, 0.7f, 0.7f}},
        {45, 1, {0.5f, 0.5f, 0.5f, 0.5f}, {0, 0.0313953f, 0.0626666f, 0.0936907f}},
        {46, 1, {1, 1, 0, 0}, {0, 0.5877853f, 0.9510565f, 0.9685832f}},
        {47, up, half, {0, 0.15f, 0.3f, 0.45f, 0.5f}},
        {47, down, half, {1, 0.35f, 0.2f, 0.05f, 0}},
        {48, up, {1, 1, 1, 1, 1, 1, 1, 1, 0.5f}, {0, 0, 0, 0, 0.2f, 0.5f, 0.8f, 1, 0.5f}},
        {48, down, {1, 1, 1, 1, 1, 1, 1, 1}, {0, 0, 0, 0, 0.8f, 0.5f, 0.2f, 0}},
        {49, up, ones, {0.6447736f, 0.8738142f, 0.9551755f, 0.9840771f, 0.9943438f}},
        {49, down, {1, 1, 1, 0.5f}, {0.3552264f, 0.1261858f, 0.0448245f, 0.0079614f}},
        {50, up, ones, {0.001f, 0.0079433f, 0.0630957f, 0.5011873f, 1}},
        {50, down, ones, {0.999f, 0.9920567f, 0.9369043f, 0.4988127f, 0}},
        {50, 0.5f, ones, ones},
        {51, up, {1, 1, 1, 1, 1, 1, 1, 0.5f}, {0, 0.3f, 0.6f, 0.9f, 0.8f, 0.5f, 0.2f, 0.2f}},
        {51, down, {1, 1, 1, 1, 1, 1, 1, 0.5f}, {1, 0.7f, 0.4f, 0.1f, 0.2f, 0.5f, 0.8f, 0.8f}},
        {52, up, half, {1, 0.5f, 0.5f, 0.5f, 0}},
        {52, down, half, {0, 0, 0, 0, 0.5f}},
        {53, time, {1, 1, -1, -1}, {0.6447736f, 0.8738142f, -0.3343718f, -0.7635513f}},
        {54, time, {1, 1, 1, 1, 0.5f, 0.5f}, {0.3f, 0.6f, 0.9f, 1, 0.7f, 0.5f}},
        {55, time, {0.8f, 0.2f, 0.2f, 0.5f}, {0.8f, 0.56f, 0.392f, 0.5f}},
        {55, 1, {0.8f, 0.2f, 0.2f}, {0.8f, 0.8f, 0.8f}},
        {56, time, {0.5f, 0.5f, 1, 1}, {0.5f, 0.35f, 0.745f, 0.5215f}},
        {57, 0.625f, {0.25f, 0.5f, 1}, {0, -0.5f, -4.5f}},
    };
    for (const auto& c : cases) {
        RowPart part;
        part.row(0, {bend, c.modifier, c.parameter, 0});
        part.on(60);
        const auto found = part.outputs(0, c.inputs);
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(found[i], c.outputs[i], 2e-5 * std::max(1.0f, std::fabs(c.outputs[i])))
                << c.modifier << " at " << c.parameter << ", tick " << i;
    }
}

// The walk is what other rows read; the destination receives it times the source.
TEST(Rows, Drift) {
    RowPart part;
    part.row(0, {bend, 44, 0, modulationDestination::shape1});
    part.on(60);
    part.state.controllers.bendPosition = 0.5f;
    const float base = part.state.patch.element(1).controls().wave;
    float least = 0, most = 0, last = 0;
    for (int i = 0; i < 20000; ++i) {
        part.run(32);
        const float y = part.output(0);
        EXPECT_NEAR(part.voice(0).inputs.shape1 - base, 0.5f * y, 1e-6);
        // A tenth of a tick's approach, measured from one beyond the target: 0.1 to 0.3.
        EXPECT_LT(std::fabs(y - last), 0.31f);
        EXPECT_NE(y, last);
        last = y;
        least = std::min(least, y);
        most = std::max(most, y);
    }
    EXPECT_TRUE(most > 0.7f && most < 1.2f && least < -0.7f && least > -1.2f) << least << most;
}

TEST(Rows, ReadTheirSources) {
    RowPart part;
    part.set(1, 130, 0.8f);
    for (int i = 1; i <= 6; ++i) part.set(0, global::knobs[i - 1], 0.1f * static_cast<float>(i));
    for (const auto& [number, value] :
         {std::pair{1, 127}, {2, 64}, {3, 32}, {4, 16}, {64, 100}, {67, 127}, {128, 126}, {129, 0}})
        part.control(number, value);
    part.event(0xD0, 127, 0);
    part.on(72, 127);
    part.bend(96);
    part.run(32 * 300);
    const Voice& v = part.voice(0);
    const float octave = 0.6931471f;
    const std::pair<int, float> cases[] = {
        {0, 0},
        {1, 1},
        {2, v.randomValue},
        {3, 1},
        {4, octave},
        {6, 1},
        {7, 1},
        {8, 0.5f},
        {9, 64 / 127.0f},
        {10, 32 / 127.0f},
        {11, 16 / 127.0f},
        {12, 100 / 127.0f},
        {13, 1},
        {14, 0.1f},
        {15, 0.2f},
        {19, 0.6f},
        {20, 0},
        {21, 1},
        {22, -1},
        {23, v.step.lfo[0]},
        {24, v.step.lfo[1]},
        {25, v.lfo3.value},
        {26, v.modulation.level},
        {27, v.filterEnvelope.level},
        {28, v.amp.level},
        {45, 0},
        {71, 0},
    };
    for (const auto& [source, expected] : cases) {
        part.row(0, {source, 0, 0.5f, 0});                 // as source
        part.row(1, {1, source < 29 ? source : 0, 1, 0});  // as modifier
        // The tick that takes the rows over moves LFOs and envelopes; what they are then counts.
        part.run(32);
        const float* moving = source == 23   ? &v.step.lfo[0]
                              : source == 24 ? &v.step.lfo[1]
                              : source == 25 ? &v.lfo3.value
                              : source == 26 ? &v.modulation.level
                              : source == 27 ? &v.filterEnvelope.level
                              : source == 28 ? &v.amp.level
                                             : &expected;
        EXPECT_NEAR(part.output(0), *moving, 1e-5) << source;
        if (source > 0 && source < 29) {
            EXPECT_NEAR(part.output(1), *moving, 1e-5) << source;
        }
    }
    EXPECT_NE(v.randomValue, 0);
    EXPECT_NE(v.step.lfo[0], v.step.lfo[1]);
    // The pitch of the tick before: base of the note and a bend of one semitone.
    part.row(0, {5, 0, 0.5f, 0});
    part.run(64);
    EXPECT_NEAR(part.output(0), octave + semitonePitch, 1e-5);
    // An element that does not receive wheel and pressure.
    part.row(0, {6, 0, 0.5f, 0});
    part.row(1, {1, 7, 1, 0});
    part.set(1, 147, 0);
    part.set(1, 149, 0);
    part.run(64);
    EXPECT_EQ(part.output(0), 0);
    EXPECT_EQ(part.output(1), 0);
    part.set(1, 149, 1);
    part.run(64);
    EXPECT_NEAR(part.output(0), 1, 1e-6);
    // Sample and hold without a source takes what enters the filter.
    part.row(0, {0, 43, 0, 0});
    std::set<float> noise;
    for (int i = 0; i < 50; ++i) {
        part.run(32);
        noise.insert(part.output(0));
    }
    EXPECT_GT(noise.size(), 40u);
}

TEST(Rows, ReadEachOther) {
    RowPart part;
    part.row(0, {30, 0, 0.5f, 0});  // row 2: of the tick before
    part.row(1, {bend, 29, 0.5f, 0});
    part.row(2, {30, 30, 0.75f, 0});  // row 2 of this tick times 1.25
    part.row(3, {32, 29, 0.75f, 0});  // itself plus 1.25
    part.row(4, {41, 0, 0.5f, 0});    // a row beyond the active ones
    part.on(60);
    EXPECT_EQ(part.outputs(0, {0.25f, 0.5f, 1}), (std::vector<float>{0, 0.25f, 0.5f}));
    EXPECT_FLOAT_EQ(part.output(2), 1.25f);
    EXPECT_FLOAT_EQ(part.output(3), 3.75f);
    EXPECT_EQ(part.output(4), 0);
    // What feeds back stays bounded.
    part.row(3, {32, 38, 1, 0});  // an exponential of itself
    part.run(3200);
    EXPECT_EQ(part.output(3), 1e6f);
}

// Depth 1 (or a quarter) of a constant at each destination.
TEST(Rows, MoveTheirDestinations) {
    using I = VoiceInputs;
    const struct {
        int destination;
        Row row;
        float (*read)(const I&);
        float change;
    } cases[] = {
        {1, {1, 0, 0.5f, 1}, [](const I& in) { return in.pitch; }, 0.6931471f},
        {2, {1, 0, 0.5f, 2, 0.75f}, [](const I& in) { return in.shape1; }, 0.25f},
        {3, {1, 0, 0.5f, 3, 0.25f}, [](const I& in) { return in.cutoff; }, -3.465736f},
        {4, {1, 0, 0.5f, 4, 0.75f}, [](const I& in) { return in.resonance; }, 0.25f},
        {5, {1, 0, 0.5f, 5, 0.75f}, [](const I& in) { return in.amplitude; }, 0.25f},
        {5, {1, 29, 0.5f, 5, 0.75f}, [](const I& in) { return in.amplitude; }, 0.25f},
        {5, {6, 0, 0.5f, 5}, [](const I& in) { return in.amplitude; }, -1},  // wheel down: 1 - 1
        {6, {1, 0, 0.5f, 6, 0.75f}, [](const I& in) { return in.pan; }, 0.25f},
        {7, {1, 0, 0.5f, 7}, [](const I& in) { return in.lfo3Rate; }, 0.6931471f},
        {8, {1, 0, 0.5f, 8, 0}, [](const I& in) { return in.envelopeRate; }, -0.6931471f},
        {9, {1, 0, 0.5f, 9}, [](const I& in) { return in.shape2; }, 1},
    };
    for (const auto& c : cases) {
        RowPart part;
        part.set(1, 110, 0.5f);
        part.on(60);
        part.run(32);
        const float before = c.read(part.voice(0).inputs);
        part.row(2, c.row);
        part.run(32);
        EXPECT_NEAR(c.read(part.voice(0).inputs) - before, c.change, 1e-5) << c.destination;
        // Two rows on one destination add up; nothing piles up from tick to tick.
        part.row(3, {1, 29, 0.5f, c.destination, 0.75f});
        const float once = c.read(part.voice(0).inputs);
        part.run(32);
        const float twice = c.read(part.voice(0).inputs);
        part.run(320);
        EXPECT_GT(std::fabs(twice - once), 0.1f) << c.destination;
        EXPECT_EQ(c.read(part.voice(0).inputs), twice) << c.destination;
    }
}

TEST(Rows, AreHeard) {
    const auto steady = [](TestPart& part) {
        part.set(1, tone::attack, 0);
        part.set(1, elementIndex::cutoff, 0.3f);
        part.on(69);
        part.run(4410);
    };
    TestPart pitched;
    setRow(pitched.state.patch, 0, {1, 0, 0.5f, 1});
    steady(pitched);
    EXPECT_NEAR(measure::cents(measure::frequencyNear(pitched.run(44100), 44100, 880), 880), 0,
                0.5);
    // A tremolo of 3.9 Hz between silence and twice the level.
    TestPart tremolo;
    tremolo.set(1, elementIndex::lfo3Rate, 0.7f);
    setRow(tremolo.state.patch, 0, {25, 0, 0.5f, 5});
    steady(tremolo);
    auto level = tremolo.run(1 << 17);
    for (float& y : level) y = std::fabs(y);
    const auto mean = static_cast<float>(measure::mean(level));
    EXPECT_NEAR(measure::levelAt(level, 44100, 3.8977) / mean, 1, 0.04);
    // Pan: a constant turns everything left, whatever the LFO of the part says.
    TestPart panned;
    panned.set(0, global::lfo1Wave, 1.5f / 15.9f);
    setRow(panned.state.patch, 0, {23, 0, 0.5f, 6, 0.5f - 0.3536f});
    steady(panned);
    const auto left = panned.run(1000);
    EXPECT_GT(measure::peak(left), 0.01);
    for (const StereoFrame& frame : panned.mix.buffer(1000)) EXPECT_EQ(frame.right, 0);
}

TEST(Rows, TurnTheClickDown) {
    for (const float wheel : {0.0f, 1.0f}) {
        TestPart part;
        part.set(1, tone::click, 1);
        part.set(1, tone::attack, 0);
        setRow(part.state.patch, 0, {6, 0, 0.5f, 5});  // 2 * wheel
        part.control(1, wheel > 0 ? 127 : 0);
        part.on(60);
        EXPECT_EQ(part.voice(0).gain.left > 0, wheel > 0);
        EXPECT_NEAR(part.voice(0).inputs.amplitude, 2 * wheel, 1e-5);
    }
}

// An edited row starts anew in voices that sound, the others and a change of tempo leave it
// running.
TEST(Rows, FollowEditsWhileTheySound) {
    RowPart part;
    part.set(1, 123, 1);
    part.row(0, {1, 47, 0.6f, 0});  // a ramp of 0.04 * 4 s
    part.row(1, {1, 47, 0.6f, 0});
    part.on(60);
    part.run(32 * 80);
    EXPECT_NEAR(part.output(0), 0.49375f, 1e-3);
    part.set(1, elementIndex::firstModulationRow + 9, 0.8f);  // depth of row 2
    part.state.patch.setTempo(60, 1e-4);
    part.run(32);
    EXPECT_NEAR(part.output(0), 0.5f, 1e-3);
    EXPECT_EQ(part.output(1), 0);
    part.run(32 * 16);
    EXPECT_NEAR(part.output(0), 0.55f, 1e-3);
    EXPECT_NEAR(part.output(1), 0.05f, 1e-3);
    part.row(1, {0, 0, 0.5f, 0});
    part.run(32);
    EXPECT_EQ(part.output(1), 0);
    EXPECT_EQ(part.state.patch.element(1).controls().rows.active, 1);
}

// One thread edits rows and knobs while another plays.
TEST(Rows, AreEditedWhileAnotherThreadPlays) {
    EngineShared shared;
    PartEngine part{shared, 1, 1};
    part.setSampleRate(44100, 256);
    part.patch().makeSawtooth();
    part.patch().set(1, 6, entry(elementIndex::firstModulationRow + 4 - 16, 235.9f));
    part.patch().set(1, 145, 0.2f);
    part.patch().handOver();
    std::atomic<bool> done{false};
    std::thread editor{[&] {
        Random random{3};
        for (int i = 0; i < 20000; ++i) {
            part.patch().store(1, elementIndex::firstModulationRow + random.draw() % 80,
                               random.unipolar());
            part.patch().store(0, global::knobs[i % 6], random.unipolar());
            if (i % 100 == 0) std::this_thread::yield();
        }
        done.store(true);
    }};
    std::vector<float> left(256), right(256);
    float* buffers[] = {left.data(), right.data()};
    std::uint8_t touched[2] = {};
    MusicalTime time;
    float loudest = 0;
    for (int i = 0; !done.load() || i < 50; ++i) {
        time.tempo = static_cast<float>(60 + i % 90);
        part.setTime(time);
        part.handleEvent({0x90, static_cast<std::uint8_t>(40 + i % 40), 100, 0}, EventSource::host);
        part.render({buffers, touched, 1}, 0, 256, 0);
        ASSERT_TRUE(measure::allFinite(left));
        loudest = std::max(loudest, static_cast<float>(measure::peak(left)));
    }
    editor.join();
    EXPECT_GT(loudest, 0);
}

}  // namespace
}  // namespace stratovane
