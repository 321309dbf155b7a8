#include "automation/parameter_structure.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace stratovane {
namespace {

/// The text as its layout says it, a line an element, without indents and comments.
struct Expected {
    std::string text;

    void line(const std::string& element) { text += element + "\n"; }
    void parameter(int id, const std::string& name) {
        line("<Param id=\"" + std::to_string(id) + "\" name=\"" + name + "\" label=\"\"/>");
    }
    void numbered(int id, const std::string& name, int count) {
        for (int i = 0; i < count; ++i) parameter(id + i, name + std::to_string(i + 1));
    }
    /// Rows as "number name,number name".
    void rows(int base, const std::string& list) {
        std::istringstream all{list};
        for (std::string row; std::getline(all, row, ',');)
            parameter(base + std::stoi(row), row.substr(row.find(' ') + 1));
    }
    void group(const std::string& name, int base, const std::string& list) {
        line("<Group name=\"" + name + "\">");
        rows(base, list);
        line("</Group>");
    }
    void effects(const std::string& name, int base) {
        for (int slot = 0; slot < 4; ++slot, base += 24) {
            line("<Group name=\"" + name + std::to_string(slot + 1) + "\">");
            numbered(base + 1, "Parameter ", 16);
            rows(base, "0 Mute,18 Level,19 Pan,17 Output");
            numbered(base + 20, "Send to FX", 4);
            line("</Group>");
        }
    }
    void channel(int part) {
        const int base = part * 152;
        line("<Group name=\"Channel " + std::to_string(part + 1) + "\">");
        if (part > 0) parameter(base, "Link Switch");
        rows(base, "1 Mute,2 Level,3 Pan,4 Output");
        numbered(base + 9, "Stratoknob ", 6);
        group("MIDI", base,
              "29 Mono Mode,30 Glide Mode,31 Glide Time,15 Low Key,16 High Key,17 Key Xfade,"
              "18 Low Vel,19 High Vel,20 Vel Xfade,21 Coarse Tune,22 Fine Tune,23 Polyphony,"
              "27 Pitchbend Up,28 Pitchbend Down,26 Level Trim");
        group("Arpeggiator", base,
              "39 On,40 Latch,41 Mode,42 Octaves,43 Steps,44 Sync,45 Rate,46 Gate,47 Swing");
        group("Microtuning", base,
              "32 Tuning1 Bank,33 Tuning1 Scale,34 Tuning1 Root,35 Tuning2 Bank,"
              "36 Tuning2 Scale,37 Tuning2 Root,38 Tuning2 Depth");
        numbered(base + 5, "FX Send ", 4);
        parameter(base + 24, "FX Mode");
        effects("Patch Send FX ", base + 56);
        line("</Group>");
    }
};

TEST(ParameterStructure, ListsEveryParameterInItsGroup) {
    Expected expected;
    expected.line("<MRXParametersStructure>");
    expected.parameter(0, "Master Volume");
    for (int part = 0; part < 16; ++part) expected.channel(part);
    expected.effects("Global Send FX ", 2432);
    expected.line("</MRXParametersStructure>");

    const std::string text = parameterStructure();
    EXPECT_TRUE(text.starts_with("<!--"));
    std::istringstream lines{text};
    std::string found;
    for (std::string line; std::getline(lines, line);) {
        line.erase(0, line.find_first_not_of(' '));
        if (!line.starts_with("<!--")) found += line + "\n";
    }
    EXPECT_EQ(found, expected.text);
}

}  // namespace
}  // namespace stratovane
