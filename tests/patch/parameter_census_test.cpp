#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/displays.h"
#include "patch/element.h"
#include "patch/expected_parameters.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {
namespace {

constexpr float asked[4] = {0.0f, 0.3f, 0.77f, 1.0f};

std::string name(const Patch& patch, int element, int index) {
    char buffer[64];
    TextOut out{buffer};
    patch.showName(out, element, index);
    return std::string{out.view()};
}

std::string value(const Patch& patch, int element, int index, float v = -1.0f) {
    char buffer[64];
    TextOut out{buffer};
    patch.showValue(out, element, index, v);
    return std::string{out.view()};
}

// At 0, 0.3, 0.77, 1.
std::string shorthand(std::string_view displays) {
    if (displays == "%") return "0 %|30 %|77 %|100 %";
    if (displays == "+%") return "-100 %|-40 %|+54 %|+100 %";
    if (displays == "t") return "0 ms|360 ms|8.66 s|32.00 s";
    return std::string{displays};
}

void check(const Patch& patch, int element, const Expected& e) {
    SCOPED_TRACE("element " + std::to_string(element) + " index " + std::to_string(e.index));
    EXPECT_EQ(name(patch, element, e.index), e.name);
    EXPECT_FLOAT_EQ(patch.get(element, e.index), e.initial);
    std::string shown;
    for (const float v : asked) {
        if (v > 0) shown += '|';
        shown += value(patch, element, e.index, v);
    }
    EXPECT_EQ(shown, shorthand(e.displays));
}

/// Checks indices first..last; `skip` are those that a family of equal ones stands for.
void census(const Patch& patch, int element, int first, int last,
            const std::vector<Expected>& listed, int skipFrom = 256, int skipTo = 256) {
    auto next = listed.begin();
    for (int i = first; i <= last; ++i) {
        while (next != listed.end() && next->index < i) ++next;
        if (next != listed.end() && next->index == i)
            check(patch, element, *next);
        else if (i < skipFrom || i >= skipTo)
            check(patch, element, {i, "", 0.0f, "%"});
    }
}

struct Names : testing::Test {
    EngineShared shared;
    Patch patch{shared};
};

TEST_F(Names, OfThePatch) { census(patch, 0, 0, 251, patchParameters, 177, 247); }

TEST_F(Names, OfAnyElement) {
    census(patch, 3, 0, elementIndex::firstBlock - 1, commonParameters);
    census(patch, 68, elementIndex::lastBlock + 1, 255, commonParameters, 177, 247);
    // Families: fields repeat every five.
    EXPECT_EQ(name(patch, 0, 172 + 5 * 6 + 1), "Vel");
    EXPECT_EQ(name(patch, 0, 172 + 5 * 6), "Note 7");
    EXPECT_EQ(name(patch, 1, 172 + 5 * 6 + 4), " 7 Depth");
}

TEST_F(Names, OfTypeBlocks) {
    const std::pair<ElementType, const std::vector<Expected>*> blocks[] = {
        {ElementType::effect, &effectBlock}, {ElementType::drawbar, &drawbarBlock},
        {ElementType::sample, &sampleBlock}, {ElementType::wavetable, &wavetableBlock},
        {ElementType::fm, &fmBlock},         {ElementType::analog, &analogBlock},
    };
    patch.setElementCount(1);
    for (const auto& [type, block] : blocks) {
        patch.initElement(1, type);
        ASSERT_EQ(patch.element(1).type(), type);
        if (type == ElementType::sample) patch.store(1, elementIndex::bank, 0.08f);
        census(patch, 1, elementIndex::firstBlock, elementIndex::lastBlock, *block);
    }
}

TEST_F(Names, OfAFreshElementsBlock) {
    for (int i = elementIndex::firstBlock; i <= elementIndex::lastBlock; ++i) {
        const bool full = i == 19 || i == 27 || i == 29 || i == 34;
        const bool half = i == 25 || i == 26 || i == 33;
        EXPECT_EQ(patch.get(64, i), full ? 1.0f : half ? 0.5f : 0.0f) << i;
    }
}

TEST_F(Names, OfTypesWithoutASound) {
    patch.store(1, elementIndex::type, 6.0f / 15.0f);
    EXPECT_EQ(value(patch, 1, elementIndex::type), "Model");
    for (int i = elementIndex::firstBlock; i <= elementIndex::lastBlock; ++i) {
        EXPECT_EQ(name(patch, 1, i), "");
        EXPECT_EQ(value(patch, 1, i, 0.3f), "30 %");
    }
    patch.store(1, elementIndex::type, 1.0f);
    EXPECT_EQ(value(patch, 1, elementIndex::type), " ");
}

// What a text says when another parameter has some value.
struct Depends {
    int element, setIndex;
    float to;
    int index;
    std::string_view name;
    float v;
    std::string_view shown;
};

TEST_F(Names, ThatDependOnOtherParameters) {
    patch.setElementCount(4);
    patch.initElement(2, ElementType::analog);
    patch.initElement(3, ElementType::sample);
    patch.initElement(4, ElementType::wavetable);
    for (int knob = 1; knob <= 6; ++knob) patch.setText(knob - 7, "Name " + std::to_string(knob));
    const Depends cases[] = {
        {0, 14, 0.2f, 14, "Name 1", 0.3f, "30 %"},
        {0, 15, 0.2f, 15, "Name 2", 0.3f, "30 %"},
        {0, 109, 0.2f, 109, "Name 6", 0.3f, "30 %"},
        {0, 19, 8 / 15.0f, 177, "Step 2", 0.3f, "5"},
        {0, 19, 0.0f, 177, "Note 2", 0.3f, "-10"},
        {0, 69, 0.1f, 69, "Redamper", 0.001f, "0 %"},
        {0, 69, 0.005f, 69, "Redamper", 1.0f, "OFF"},
        {0, 86, 0.75f, 87, "Rate", 0.5f, "1/4"},
        {0, 86, 0.5f, 87, "Rate", 0.5f, "1.00 Hz"},
        {0, 90, 1.0f, 91, "Rate", 1.0f, "1/64"},
        {1, 63, 0.3f, 64, "Delay Time", 0.0f, "1/64"},
        {1, 63, 0.3f, 64, "Delay Time", 1.0f, "8/4"},
        {1, 63, 0.43f, 64, "Fade Time", 0.25f, "250 ms"},
        {1, 86, 1.0f, 87, "Rate", 0.0f, "8/4"},
        {1, 72, 0.5f, 72, "Cents", 0.51f, " 0.0"},
        {1, 72, 0.5f, 72, "Cents", 0.52f, "+0.1"},
        {2, 98, 0.0f, 67, "Note-on Osc Phase", 0.0f, "0 %"},
        {2, 98, 0.0f, 68, "Vel to Osc Phase", 0.0f, "-100 %"},
        {2, 98, 0.0f, 69, "Random Osc Phase", 0.0f, "0 %"},
        {2, 98, 0.0f, 98, "Osc1 Wave", 0.0f, "0 %"},
        {2, 98, 0.0f, 99, "Key to Osc1 Wave", 1.0f, "+100 %"},
        {2, 98, 0.0f, 100, "Vel to Osc1 Wave", 1.0f, "+100 %"},
        {2, 98, 0.0f, 101, "Random Osc1 Wave", 0.0f, "0 %"},
        {2, 98, 0.0f, 102, "Osc2 Wave", 0.0f, "0 %"},
        {3, 18, 9.5f / 128.9f, 22, "Drum Sel", 0.0f, "0 %"},
        {3, 18, 10.5f / 128.9f, 22, "Formant", 0.0f, "0 %"},
        // A row's parameter reads by its modifier, its depth by its destination.
        {1, 173, 29.5f / 71.9f, 174, " 1 Param", 1.0f, "+10.000"},
        {1, 173, 37.5f / 71.9f, 174, " 1 Param", 0.75f, "2.00 cyc"},
        {1, 173, 41.5f / 71.9f, 174, " 1 Param", 1.0f, "32"},
        {1, 173, 43.5f / 71.9f, 174, " 1 Param", 0.25f, "250 ms"},
        {1, 173, 46.5f / 71.9f, 174, " 1 Param", 1.0f, "10.00 Hz"},
        {1, 173, 47.5f / 71.9f, 174, " 1 Param", 0.75f, "+1.00 s"},
        {1, 173, 52.5f / 71.9f, 174, " 1 Param", 0.5f, "-0 ms"},
        {1, 175, 1.5f / 15.9f, 176, " 1 Depth", 1.0f, "+12.00"},
        {2, 175, 0.0f, 175, " 1 Dest", 2.5f / 15.9f, "Osc1 Wave"},
        {2, 175, 0.0f, 175, " 1 Dest", 9.5f / 15.9f, "Osc2 Wave"},
        {4, 175, 0.0f, 175, " 1 Dest", 9.5f / 15.9f, "Osc1 Pitch"},
        // A slot's destination bears the name of what it drives.
        {2, 6, 0.0f, 6, "Dest 1", (98 - 16 + 0.5f) / 235.9f, "Osc1 Wave"},
    };
    for (const Depends& c : cases) {
        SCOPED_TRACE("index " + std::to_string(c.index) + " after " + std::to_string(c.setIndex));
        patch.store(c.element, c.setIndex, c.to);
        EXPECT_EQ(name(patch, c.element, c.index), c.name);
        EXPECT_EQ(value(patch, c.element, c.index, c.v), c.shown);
    }
}

TEST_F(Names, OfEcoInBracketsWhereThePatchOverrules) {
    patch.setElementCount(1);
    const struct {
        float patchEco, receive, own;
        bool eco;
        std::string_view shown;
    } cases[] = {
        {0.0f, 1, 1, true, "(XXL)"}, {0.0f, 1, 0, true, "ECO"},  {0.5f, 1, 1, false, "XXL"},
        {0.5f, 1, 0, true, "ECO"},   {1.0f, 1, 1, false, "XXL"}, {1.0f, 1, 0, false, "(ECO)"},
        {0.0f, 0, 1, false, "XXL"},  {1.0f, 0, 0, true, "ECO"},
    };
    for (const auto& c : cases) {
        patch.store(1, elementIndex::receive, c.receive);
        patch.store(1, elementIndex::eco, c.own);
        patch.store(0, global::eco, c.patchEco);
        EXPECT_EQ(value(patch, 1, elementIndex::eco), c.shown);
        EXPECT_EQ(patch.element(1).controls().eco, c.eco) << c.shown;
    }
}

TEST_F(Names, AreEmptyForWhatDoesNotExist) {
    const std::pair<int, int> nowhere[] = {{0, 252}, {0, -1}, {69, 0}, {-1, 0}, {1, 256}, {1, -1}};
    for (const auto& [element, index] : nowhere) {
        EXPECT_EQ(name(patch, element, index), "");
        EXPECT_EQ(value(patch, element, index, 0.5f), "");
        EXPECT_EQ(patch.get(element, index), 0.0f);
    }
}

TEST_F(Names, OfPatchAndElementsAreCutToTheirFields) {
    const std::pair<int, std::size_t> fields[] = {
        {0, 31}, {1, 31}, {68, 31}, {-1, 15}, {-6, 15}, {-7, 127}, {-8, 63}, {-9, 63}, {-10, 127}};
    for (const auto& [selector, room] : fields) {
        const std::string longText(200, static_cast<char>('a' + (selector + 20) % 26));
        patch.setText(selector, longText);
        EXPECT_EQ(patch.text(selector), longText.substr(0, room)) << selector;
    }
    patch.setText(0, "short");
    EXPECT_EQ(patch.name(), "short");
    EXPECT_EQ(patch.knobName(1), patch.text(-6));
    for (const int selector : {-11, 69}) {
        patch.setText(selector, "nowhere");
        EXPECT_EQ(patch.text(selector), "");
    }
}

}  // namespace
}  // namespace stratovane
