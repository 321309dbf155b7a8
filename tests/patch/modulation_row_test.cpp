#include "patch/modulation_row.h"

#include <gtest/gtest.h>

#include <string>

#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {
namespace {

constexpr float tick = 32 / 44100.0f;

RowSettings row(int source, int modifier, float parameter, int destination, float depth = 1) {
    return {source, modifier, destination, parameter, depth};
}

// Modifier 0..28: a second source; amount and depth share the row's depth by its parameter.
TEST(Rows, CompileWithASecondSource) {
    const struct {
        RowSettings settings;
        int processor;
        float amount, depth;
        bool wavetable = false;
    } cases[] = {
        {row(3, 0, 0, 2, 0.5f), 0, 0.5f, 0},
        {row(3, 0, 0.9f, 2, 0.5f), 0, 0.5f, 0},
        {row(3, 60, 0.9f, 2, 0.5f), 0, 0.5f, 0},  // no such modifier: as none
        {row(3, 6, 0.25f, 4, 0.5f), 0, 0.375f, 0.125f},
        {row(3, 6, -0.25f, 4, 0.5f), 0, 0.5f, -0.125f},
        {row(25, 6, 1, 1), 0, 0, 0.6931471f},
        {row(25, 0, 0, 7, -1), 0, -0.6931471f, 0},
        {row(25, 0, 0, 8), 0, 0.6931471f, 0},
        {row(25, 0, 0, 9), 0, 1, 0},
        {row(25, 0, 0, 9), 0, 0.6931471f, 0, true},
        {row(25, 6, 0.5f, 3), 0, 6.931472f, 6.931472f},
        {row(4, 6, 0.5f, 3), 0, 0.5f, 0.5f},  // key and pitch are pitches already
        {row(5, 0, 0, 3), 0, 1, 0},
        {row(25, 0, 0, 5), 99, 1, 0},
        {row(8, 0, 0, 5), 99, 1, 0},  // the bend lever has its centre in the middle
        {row(6, 0, 0, 5), 100, 1, 0},
        {row(7, 0, 0, 5), 100, 1, 0},
        {row(9, 0, 0, 5), 100, 1, 0},
        {row(19, 0, 0, 5), 100, 1, 0},
        {row(19, 70, 0, 5), 100, 1, 0},
        {row(20, 0, 0, 5), 99, 1, 0},
        {row(6, 3, 0.5f, 5), 99, 0.5f, 0.5f},
    };
    for (const auto& c : cases) {
        const CompiledRow made = compileRow(c.settings, {c.wavetable, tick, 1});
        const std::string which = std::to_string(&c - cases);
        EXPECT_EQ(made.processor, c.processor) << which;
        EXPECT_FLOAT_EQ(made.amount, c.amount) << which;
        EXPECT_FLOAT_EQ(made.depth, c.depth) << which;
        EXPECT_EQ(made.initialState, 0) << which;
        EXPECT_EQ(made.source, c.settings.source);
    }
}

// Times at 0.25 s (0.25 of the way, or 0.25 either side) and 1 s; one control tick is 0.726 ms.
TEST(Rows, CompileWithAProcessor) {
    const struct {
        int modifier;
        float parameter;
        int processor;
        float amount;
        float state = 0;
        float slowed = 1;  // amount at half the tempo
    } cases[] = {
        {32, -0.25f, 97, -0.25f},
        {33, 0.25f, 98, 0.25f},
        {38, -0.5f, 10, -2.5f},
        {41, -1, 14, 0.499f, 2},     // one step: -1 and 1
        {41, 0, 13, 4.499f, 0.25f},  // eight
        {41, 0.5f, 13, 9.499f, 1 / 9.0f},
        {41, 1, 14, 15.999f, 2 / 31.0f},
        {42, 0, 13, 3.999f, 0.25f},
        {42, 1, 14, 15.499f, 2 / 31.0f},
        {43, -0.5f, 15, 0.0029024943f, 0, 0.5f},
        {43, -1, 15, 1},
        {44, -0.5f, 16, 0.00099636362f},
        {46, 0, 18, 0.00455922f},
        {47, 0.25f, 19, 0.0029024943f, 0, 0.5f},
        {47, -0.25f, 119, 0.0029024943f, 0, 0.5f},
        {47, 0, 19, 1},
        {48, -0.25f, 120, 0.0014512472f, 0, 0.5f},
        {49, 0.25f, 21, 0.00996363622f, 0, 0.50126f},
        {50, -0.25f, 122, 1.02025206f, 0.001f},
        {51, 0.25f, 23, 0.0014512472f, 0, 0.5f},
        {52, -0.5f, 124, 0.00072562358f, 0, 0.5f},
        {53, -0.5f, 25, 0.00996363622f},
        {54, -0.5f, 26, 0.0029024943f, 0, 0.5f},
        {55, -0.5f, 27, 0.0029024943f},
        {55, 1, 27, 0},
        {56, 0.99f, 28, 2.32513e-05f},
    };
    for (const auto& c : cases) {
        const auto settings = row(3, c.modifier, c.parameter, 1, 0.5f);
        const CompiledRow made = compileRow(settings, {false, tick, 1});
        const CompiledRow slow = compileRow(settings, {false, tick, 2});
        const auto which = testing::Message() << c.modifier << " at " << c.parameter;
        EXPECT_EQ(made.processor, c.processor) << which;
        EXPECT_NEAR(made.amount, c.amount, 1e-4 * std::fabs(c.amount)) << which;
        EXPECT_NEAR(slow.amount, c.amount * c.slowed, 1e-4 * std::fabs(c.amount)) << which;
        EXPECT_FLOAT_EQ(made.initialState, c.state) << which;
        EXPECT_FLOAT_EQ(made.depth, 0.5f * 0.6931471f) << which;  // never the amount
        EXPECT_EQ(made.source, 3) << which;
    }
    EXPECT_EQ(compileRow(row(0, 43, 0, 3), {false, tick, 1}).source, 99);
    // At a slow tick a short time is one tick, not less.
    EXPECT_EQ(compileRow(row(3, 47, 0.02f, 1), {false, 0.02f, 1}).amount, 1);
}

struct ElementRows : testing::Test {
    EngineShared shared;
    Patch patch{shared};
    const ModulationRows& rows = patch.element(1).controls().rows;

    void SetUp() override {
        patch.setElementCount(1);
        patch.initElement(1, ElementType::analog);
        patch.handOver();
        patch.takeLayoutChanged();
    }
    void set(int row, int field, float v) {
        patch.set(1, elementIndex::firstModulationRow + 5 * row + field, v);
    }
    static float entry(int i) { return (static_cast<float>(i) + 0.5f) / 71.9f; }
};

TEST_F(ElementRows, CountAndStampWhatIsEdited) {
    EXPECT_EQ(rows.active, 0);
    set(4, 4, 1);
    EXPECT_EQ(rows.active, 0);  // depth alone fills no row
    EXPECT_FALSE(patch.takeLayoutChanged());
    set(4, 1, entry(29));
    EXPECT_EQ(rows.active, 5);
    EXPECT_TRUE(patch.takeLayoutChanged());
    EXPECT_FLOAT_EQ(rows.rows[4].compiled.depth, 1);
    set(2, 0, entry(44));
    EXPECT_EQ(rows.rows[2].compiled.source, 44);
    const auto stamp = rows.rows[2].stamp;
    const auto changes = rows.changes;
    set(2, 0, entry(44));
    EXPECT_EQ(rows.changes, changes);  // the same again is no edit
    set(4, 1, 0);
    EXPECT_EQ(rows.active, 3);
    EXPECT_EQ(rows.rows[2].stamp, stamp);  // another row's edit
    set(15, 3, 1);
    EXPECT_EQ(rows.rows[15].compiled.destination, 15);
    set(15, 0, 0.02f);
    EXPECT_EQ(rows.active, 16);
}

TEST_F(ElementRows, RecompileWithoutAnEditForTempoRateAndType) {
    const int linearRamp = 47, logarithmicLag = 53;
    set(0, 1, entry(linearRamp));
    set(0, 2, 0.75f);  // one second either way
    set(1, 1, entry(logarithmicLag));
    set(1, 4, 1);
    set(1, 3, 9.5f / 15.9f);
    const ModulationRows before = rows;
    patch.setTempo(60, 1e-4);
    EXPECT_EQ(rows.changes, before.changes);  // nothing follows the tempo yet
    patch.set(1, 123, 1);
    EXPECT_NEAR(rows.rows[0].compiled.amount, before.rows[0].compiled.amount / 2, 1e-9);
    EXPECT_EQ(rows.rows[1].stamp, before.rows[1].stamp);
    patch.setTempo(120, 1e-4);
    EXPECT_EQ(rows.rows[0].compiled, before.rows[0].compiled);
    patch.setSampleRate(88200);
    EXPECT_NEAR(rows.rows[0].compiled.amount, before.rows[0].compiled.amount / 2, 1e-9);
    EXPECT_LT(rows.rows[1].compiled.amount, before.rows[1].compiled.amount * 0.51f);
    patch.set(1, elementIndex::type, 3.5f / 15.9f);
    while (patch.waits()) {
        patch.applyLoading();
        patch.applyMarked();
    }
    EXPECT_FLOAT_EQ(rows.rows[1].compiled.depth, 0.6931471f);
    EXPECT_GT(rows.rows[1].stamp, before.rows[1].stamp);
    for (const int i : {0, 1})
        EXPECT_EQ(rows.rows[static_cast<std::size_t>(i)].edited,
                  before.rows[static_cast<std::size_t>(i)].edited);
}

TEST_F(ElementRows, ReadAsText) {
    const auto shown = [&](int field, float v) {
        char buffer[64];
        TextOut out{buffer};
        patch.showValue(out, 1, elementIndex::firstModulationRow + field, v);
        return std::string{buffer};
    };
    const std::pair<int, const char*> sources[] = {
        {0, ""},        {1, "Constant"}, {4, "Key"},      {7, "Aftertouch"},
        {10, "Wheel3"}, {12, "SusPed"},  {13, "SoftPed"}, {14, "Knob 1"},
        {19, "Knob 6"}, {20, "Scale2"},  {22, "Seq 2"},   {28, "Amp Env"},
        {29, "Row 1"},  {44, "Row 16"},  {45, ""},        {71, ""},
    };
    for (const auto& [i, text] : sources) EXPECT_EQ(shown(0, entry(i)), text) << i;
    const std::tuple<int, const char*, float, const char*> modifiers[] = {
        {0, "", 0.25f, "-50.0 %"},          {8, "Pitch Bend", 1, "+100.0 %"},
        {29, "Add", 1, "+10.000"},          {32, "Clip +", 0.5f, "+0.0 %"},
        {37, "Sine", 0, "-4.00 cyc"},       {40, "Switch", 0.75f, "+50.0 %"},
        {42, "Quant 2", 1, "32"},           {43, "S+H", 0.25f, "250 ms"},
        {46, "Sine Freq", 0, "0.10 Hz"},    {47, "Lin Ramp", 0.75f, "+1.00 s"},
        {50, "Log Ramp", 0.5f, "-0 ms"},    {52, "Gate Env", 1, "+32.00 s"},
        {56, "Diff Hold", 0.25f, "250 ms"}, {57, "X-Fade", 0.5f, "+0.0 %"},
        {58, "", 0.5f, "+0.0 %"},
    };
    for (const auto& [i, text, v, parameter] : modifiers) {
        EXPECT_EQ(shown(1, entry(i)), text);
        set(0, 1, entry(i));
        EXPECT_EQ(shown(2, v), parameter) << text;
    }
    const char* destinations[] = {"",    "Pitch",     "Osc1 Wave", "Cutoff",    "Reso", "Amp",
                                  "Pan", "LFO3 Rate", "Mod Env",   "Osc2 Wave", ""};
    for (int i = 0; i < 11; ++i)
        EXPECT_EQ(shown(3, (static_cast<float>(i) + 0.5f) / 15.9f), destinations[i]);
    EXPECT_EQ(shown(4, 0.25f), "-25.0 %");
    set(0, 3, 1.5f / 15.9f);
    EXPECT_EQ(shown(4, 1), "+12.00");
}

}  // namespace
}  // namespace stratovane
