#include "settings/settings.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <cmath>

#include "platform/platform.h"
#include "platform/settings_store.h"
#include "settings/number_text.h"
#include "support/temporary_folder.h"

using namespace stratovane;

namespace {

struct SettingsTest : testing::Test {
    TemporaryFolder folder;
    std::string file = folder / "settings.ini";
    ScopedEnvironment named{"STRATOVANE_SETTINGS", file.c_str()};
    SettingsStore store;
    Settings settings;

    void read(Settings::Which which = Settings::Which::all) { settings.read(store, which, 2); }
    std::string stored(std::string_view name) { return store.read(settingsKey, name); }
};

struct Case {
    const char *name, *text;
    double expected;
};

double valueOf(const Settings& s, std::string_view name) {
    using Get = double (*)(const Settings&);
    static constexpr std::pair<std::string_view, Get> values[] = {
        {"Debug", [](const Settings& x) { return double(x.traceMask); }},
        {"Vel Sens", [](const Settings& x) { return double(x.velocitySensitivity); }},
        {"Touch Sens", [](const Settings& x) { return double(x.touchSensitivity); }},
        {"MIDI Patches", [](const Settings& x) { return double(x.midiPatches); }},
        {"MIDI Combis", [](const Settings& x) { return double(x.midiCombis.get()); }},
        {"Inspector", [](const Settings& x) { return double(x.inspector); }},
        {"MIDI Numbering", [](const Settings& x) { return double(x.oneBasedNumbers); }},
        {"CombiNextCC", [](const Settings& x) { return double(x.combiNextController); }},
        {"CombiPrevCC", [](const Settings& x) { return double(x.combiPreviousController); }},
        {"Meter Mode", [](const Settings& x) { return double(x.meterMode); }},
        {"Memory Use", [](const Settings& x) { return double(x.memoryUse); }},
        {"Master Vol", [](const Settings& x) { return double(x.masterVolume); }},
        {"Lift", [](const Settings& x) { return double(x.lift); }},
        {"Combi Preload Mode", [](const Settings& x) { return double(x.combiPreload); }},
        {"Default Scene Root", [](const Settings& x) { return double(x.sceneRoot); }},
        {"Default Scene MIDI", [](const Settings& x) { return double(x.sceneMidi); }},
        {"UpdateDisplay", [](const Settings& x) { return double(x.updateDisplay); }},
    };
    for (const auto& [known, get] : values)
        if (known == name) return get(s);
    return std::nan("");
}

constexpr Case texts[] = {
    {"Debug", "", 1},
    {"Debug", "127", 127},
    {"Debug", "-1", 4294967295.0},
    {"Vel Sens", "", 0.5},
    {"Vel Sens", "-100", 0},
    {"Vel Sens", " +50 %", 0.75},
    {"Vel Sens", "99999999999", 1},
    {"Vel Sens", "-99999999999", 0},
    {"Vel Sens", "+-5", 0.5},
    {"Touch Sens", "101", 1},
    {"Touch Sens", "soft", 0.5},
    {"MIDI Patches", "", 4},
    {"MIDI Patches", "OFF", 0},
    {"MIDI Patches", "off", 0},
    {"MIDI Patches", "ON", 4},
    {"MIDI Patches", "0", 0},
    {"MIDI Patches", "2", 2},
    {"MIDI Patches", "7", 4},
    {"MIDI Combis", "", 1},
    {"MIDI Combis", "Chain", 2},
    {"MIDI Combis", "cha", 2},
    {"MIDI Combis", "OFF", 0},
    {"MIDI Combis", "ON", 1},
    {"MIDI Combis", "yes", 1},
    {"Inspector", "", 3},
    {"Inspector", "0", 0},
    {"MIDI Numbering", "1-128", 1},
    {"MIDI Numbering", "0-127", 0},
    {"CombiNextCC", "", -1},
    {"CombiNextCC", "80", 80},
    {"CombiPrevCC", "-7", -1},
    {"CombiPrevCC", "1000", 127},
    {"Meter Mode", "2", 2},
    {"Memory Use", "", 0.5},
    {"Memory Use", "xxl", 1},
    {"Memory Use", "ECO", 0},
    {"Memory Use", "Eco", 0},
    {"Memory Use", "Default", 0.5},
    {"Master Vol", "", 0.500593},
    {"Master Vol", "-6.0 dB", 0.500593},
    {"Master Vol", "+6.0 dB", 1},
    {"Master Vol", "1e3", 1},
    {"Master Vol", "0", 0.707107},
    {"Master Vol", "-90", 0.00397635},
    {"Master Vol", "-1e9", 0.00397635},
    {"Master Vol", "-oo", 0.500593},
    {"Master Vol", "nan", 0.500593},
    {"Master Vol", "-inf", 0.500593},
    {"Master Vol", "1e999", 0.500593},
    {"Master Vol", "-6,9", 0.500593},
    {"Lift", "", 0.33},
    {"Lift", "100", 1},
    {"Lift", "250", 1},
    {"Lift", "-1", 0},
    {"Combi Preload Mode", "next", 1},
    {"Combi Preload Mode", "Full", 2},
    {"Combi Preload Mode", "Off", 0},
    {"Default Scene Root", "", 24},
    {"Default Scene Root", "60", 60},
    {"Default Scene MIDI", "On", 1},
    {"Default Scene MIDI", "OFF", 0},
    {"UpdateDisplay", "", 2},
    {"UpdateDisplay", "0", 0},
};

TEST_F(SettingsTest, TextsGiveValues) {
    for (const Case& c : texts) {
        folder.put("settings.ini", "");
        ASSERT_TRUE(store.write(settingsKey, c.name, c.text));
        read();
        EXPECT_NEAR(valueOf(settings, c.name), c.expected, 1e-6) << c.name << '=' << c.text;
    }
    folder.put("settings.ini", "");
    settings.read(store, Settings::Which::all, 1);
    EXPECT_EQ(settings.updateDisplay, 1) << "the host's own default";
}

TEST_F(SettingsTest, NumbersIgnoreTheLocale) {
    bool comma = false;
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "fr_FR"})
        comma = comma || setlocale(LC_NUMERIC, name) != nullptr;
    if (!comma) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(parseDecimal("2.5"), 2.5f);
    EXPECT_EQ(parseDecimal("2,5"), 2.0f);
    settings.write(store);
    setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(stored("Master Vol"), "-6.0 dB");
}

TEST(NumberText, TakesNumbersOnly) {
    EXPECT_EQ(parseDecimal("\t+2.5dB"), 2.5f);
    EXPECT_EQ(parseInteger("\n -12.9"), -12);
    for (const char* text : {"", " ", "+", "-", ".", "x1", "+ 1", "+-1"}) {
        EXPECT_FALSE(parseInteger(text)) << text;
        EXPECT_FALSE(parseDecimal(text)) << text;
    }
}

TEST_F(SettingsTest, WrittenFormsReadBack) {
    settings.outputs.letters = "SMS";
    settings.velocitySensitivity = 0.25f;
    settings.touchSensitivity = 1.0f;
    settings.midiCombis = CombiUse::chain;
    settings.oneBasedNumbers = true;
    settings.memoryUse = 1.0f;
    settings.masterVolume = 1.0f;
    settings.lift = 0.29f;  // 100 times that truncates to 28
    settings.combiPreload = 2;
    settings.combiNextController = 80;
    ASSERT_TRUE(settings.write(store));
    EXPECT_EQ(folder.get("settings.ini"),
              "[Software\\Taldrimor\\Stratovane 2]\nOutputs=SMS\nVel Sens=-50\nTouch Sens=100\n"
              "MIDI Patches=ON\nMIDI Combis=Chain\nInspector=3\nMIDI Numbering=1-128\n"
              "CombiNextCC=80\nCombiPrevCC=-1\nMeter Mode=0\nMemory Use=XXL\nMaster Vol=+6.0 dB\n"
              "Lift=29\nCombi Preload Mode=Full\n");
    Settings again;
    again.read(store, Settings::Which::all, 2);
    EXPECT_EQ(again.outputs.letters, "SMS");
    for (const char* name :
         {"Vel Sens", "Touch Sens", "MIDI Combis", "MIDI Numbering", "Memory Use", "Master Vol",
          "Lift", "Combi Preload Mode", "CombiNextCC", "CombiPrevCC"})
        EXPECT_EQ(valueOf(again, name), valueOf(settings, name)) << name;
    settings.masterVolume = 0.00009f;
    settings.write(store);
    EXPECT_EQ(stored("Master Vol"), "-oo");
}

TEST_F(SettingsTest, LevelsBetweenOffAndOnStayAsStored) {
    store.write(settingsKey, "MIDI Patches", "2 of 4");
    read();
    EXPECT_EQ(settings.midiPatches.get(), 2);
    EXPECT_TRUE(settings.write(store));
    EXPECT_EQ(stored("MIDI Patches"), "2 of 4");
    settings.midiPatches = 0;
    settings.write(store);
    EXPECT_EQ(stored("MIDI Patches"), "OFF");
}

TEST_F(SettingsTest, AnEarlierInstallationIsTakenOverOnlyWhenItIsInUse) {
    constexpr std::string_view former = "Software\\Taldrimor\\Stratovane ";
    store.write(former, "Lift", "50");
    store.write(former, "Outputs", "MM");
    store.write(former, "Content Location", "/former");
    store.write(settingsKey, "Content Location", "/now");
    store.write(settingsKey, "Lift", "60");
    read();
    EXPECT_FLOAT_EQ(settings.lift, 0.6f) << "neither key is in use";
    store.write(former, "Vel Sens", "100");
    read();
    EXPECT_FLOAT_EQ(settings.lift, 0.5f);
    EXPECT_EQ(settings.velocityCurve[64].get(), 96);
    EXPECT_EQ(settings.outputs.letters, "MM");
    EXPECT_EQ(settings.contentLocation, "/now");
    store.write(settingsKey, "Vel Sens", "0");
    read();
    EXPECT_FLOAT_EQ(settings.lift, 0.6f);
    EXPECT_EQ(settings.outputs.letters, "SSSS");
}

TEST_F(SettingsTest, OutputsAndContentAreReadOnlyWhenAskedFor) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "SSSS"}, {std::string(17, 'S'), "SSSS"}, {std::string(16, 'M'), std::string(16, 'M')}};
    for (const auto& [text, letters] : cases) {
        store.write(settingsKey, "Outputs", text);
        read();
        EXPECT_EQ(settings.outputs.letters, letters);
    }
    store.write(settingsKey, "Outputs", "Q");
    store.write(settingsKey, "Content Location", "/else");
    store.write(settingsKey, "Lift", "10");
    settings.lift = 1;
    read(Settings::Which::withoutContentAndOutputs);
    EXPECT_EQ(settings.outputs.pairs(), 16);
    EXPECT_NE(settings.contentLocation, "/else");
    EXPECT_FLOAT_EQ(settings.lift, 0.1f);
}

TEST_F(SettingsTest, ContentLiesBesideTheLibraryOrWhereItWasPut) {
    read();
    const std::string own = ownPath();
    EXPECT_EQ(settings.contentLocation, own.substr(0, own.rfind('/')) + "/Stratovane 2 Content");
    settings.contentLocation = Settings::asContentLocation("/my content \t\r\n");
    EXPECT_TRUE(settings.writeContentLocation(store));
    EXPECT_EQ(stored("Content Location"), "/my content/");
    EXPECT_EQ(Settings::asContentLocation("C:\\x\\ "), "C:\\x\\");
    EXPECT_EQ(Settings::asContentLocation(" \n"), "");
}

}  // namespace
