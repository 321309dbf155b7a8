#include "base/displays.h"

#include <gtest/gtest.h>

#include <string>

#include "base/tempo_divisions.h"

using namespace stratovane;

namespace {

TEST(Displays, ShowWhatPlayersRead) {
    using Show = void (*)(TextOut&, float);
    const Show note = [](TextOut& out, float v) { showNote(out, static_cast<int>(v)); };
    const struct {
        Show show;
        float v;
        const char* text;
    } cases[] = {
        {showPercent, 0.5f, "50 %"},
        {showSignedPercent, 0.0f, "-100 %"},
        {showSignedPercent, 0.5f, "+0 %"},
        {note, 60, "C3"},
        {note, 0, "C-2"},
        {note, 127, "G8"},
        {note, 61, "C#3"},
        {note, 128, "OFF"},
        {note, -3, "C-2"},
        {showPatchLevel, 1.0f, "+6.0 dB"},
        {showPatchLevel, 0.00009f, "-oo"},
        {showPatchLevel, 0.70710677f, "-0.0 dB"},
        {showElementLevel, 0.5f, "+0.0 dB"},
        {showElementLevel, 0.009f, "-oo"},
        {showPan, 0.0f, "L64"},
        {showPan, 0.5f, "<C>"},
        {showPan, 0.504f, "<C>"},
        {showPan, 1.0f, "R64"},
        {showTime, 0.25f, "250 ms"},
        {showTime, 0.5f, "1.00 s"},
        {showTime, 1.0f, "32.00 s"},
        {showLfoRate, 0.0f, "30.00 sec"},
        {showLfoRate, 0.5f, "1.00 Hz"},
        {showLfoRate, 1.0f, "30.00 Hz"},
    };
    for (const auto& c : cases) {
        char buffer[16];
        TextOut out{buffer};
        c.show(out, c.v);
        EXPECT_EQ(out.view(), c.text) << c.v;
    }
}

TEST(TempoDivisions, EveryNameMatchesItsLength) {
    EXPECT_EQ(tempoDivision(0.0f).name, "8/4");
    EXPECT_EQ(tempoDivision(1.0f).name, "1/64");
    EXPECT_EQ(tempoDivision(-5.0f).name, "8/4");
    EXPECT_EQ(tempoDivision(7.0f).name, "1/64");
    for (const TempoDivision& d : tempoDivisions) {
        // "n/m" lasts 4n/m beats, dotted half as long again, a triplet two thirds.
        const std::string name{d.name};
        double beats = 4 * std::stod(name) / std::stod(name.substr(name.find('/') + 1));
        if (name.back() == 'D') beats *= 1.5;
        if (name.back() == 'T') beats *= 2.0 / 3;
        EXPECT_NEAR(double(d.perBeat) * beats, 1.0, 1e-5) << name;
    }
}

}  // namespace
