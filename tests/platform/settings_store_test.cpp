#include "platform/settings_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/posix/settings_files.h"
#include "platform/posix/settings_text.h"
#include "support/temporary_folder.h"

using namespace stratovane;

namespace {

constexpr const char* example =
    "; kept by hand\r\n"
    "Stray=1\n"
    "[A]\n"
    "One=1\r\n"
    "not a setting\n"
    "One=2\n"
    " Two = two = 2 \n"
    "#Three=3\n"
    "\n"
    "[A ]\n"
    "One=with a blank\n"
    "[broken\n"
    "Four=4";

TEST(SettingsText, FindsValuesVerbatim) {
    const SettingsText text{example};
    const struct {
        const char *key, *name, *value;
    } cases[] = {
        {"A", "One", "1"},
        {"A", "Two", " two = 2 "},
        {"A", "Three", ""},
        {"A", "Four", ""},
        {"A ", "One", "with a blank"},
        {"A ", "Four", "4"},
        {"", "Stray", ""},
        {"A", "one", ""},
        {"B", "One", ""},
        {"A", "not a setting", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(text.value(c.key, c.name), c.value) << '[' << c.key << "] " << c.name;
}

TEST(SettingsText, SettingChangesOneLineAndKeepsTheRest) {
    SettingsText text{example};
    text.set("A", "One", "x");
    text.set("A", "New", "n");
    text.set("B", "First", "b");
    EXPECT_EQ(text.text(),
              "; kept by hand\r\nStray=1\n[A]\nOne=x\nnot a setting\nOne=2\n Two = two = 2 \n"
              "#Three=3\nNew=n\n\n[A ]\nOne=with a blank\n[broken\nFour=4\n\n[B]\nFirst=b\n");
    EXPECT_EQ(SettingsText{text.text()}.value("A", "New"), "n");
}

struct Store : testing::Test {
    TemporaryFolder folder;
    std::string file = folder / "deep/er/settings.ini";
    ScopedEnvironment named{"STRATOVANE_SETTINGS", file.c_str()};
    SettingsStore store;
};

TEST_F(Store, KeepsWhatWasWritten) {
    EXPECT_EQ(store.read("K", "N"), "");
    const std::string longest(1023, 'v');
    const char* values[] = {"1", "", " blanks ", "a=b", "; no comment", "[no section]", "\xE4\x01"};
    for (const char* value : values) {
        EXPECT_TRUE(store.write("K", "N", value));
        EXPECT_EQ(store.read("K", "N"), value);
    }
    EXPECT_TRUE(store.write("K", "L", longest));
    EXPECT_EQ(store.read("K", "L"), longest);
    EXPECT_EQ(store.read("K", "N"), values[6]);
}

TEST_F(Store, RefusesWhatCouldNotBeReadBack) {
    using namespace std::string_literals;
    ASSERT_TRUE(store.write("K", "N", "kept"));
    const std::string before = folder.get("deep/er/settings.ini");
    const NamedValue bad[] = {
        {"N", "two\nlines"}, {"N", "return\r"}, {"N", {"a\0b", 3}}, {"", "x"},    {"a=b", "x"},
        {";N", "x"},         {"#N", "x"},       {" N", "x"},        {"[N", "x]"}, {"a\nb", "x"}};
    for (const NamedValue& b : bad) {
        const NamedValue values[] = {{"N", "changed"}, b};
        EXPECT_FALSE(store.write("K", values)) << b.name << '=' << b.value;
    }
    EXPECT_FALSE(store.write("K\n[X]", "N", "x"));
    EXPECT_FALSE(store.write("K", "N", std::string(1024, 'v')));
    EXPECT_EQ(folder.get("deep/er/settings.ini"), before);
}

TEST_F(Store, KeepsModeAndLinkAndLeavesNoTemporaryFile) {
    ASSERT_TRUE(store.write("K", "N", "1"));
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    const std::string link = folder / "link.ini";
    std::filesystem::create_symlink(file, link);
    const ScopedEnvironment linked{"STRATOVANE_SETTINGS", link.c_str()};
    EXPECT_TRUE(store.write("K", "N", "2"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(folder.get("deep/er/settings.ini"), "[K]\nN=2\n");
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    const std::filesystem::directory_iterator listing{folder / "deep/er"};
    EXPECT_EQ(std::distance(begin(listing), end(listing)), 1);
}

TEST_F(Store, AFileThatCannotBeReadIsNeverReplaced) {
    std::filesystem::create_directories(file);  // a folder stands where the file should
    EXPECT_EQ(store.read("K", "N"), "");
    EXPECT_FALSE(store.write("K", "N", "1"));
    folder.put("plain", "");
    const ScopedEnvironment below{"STRATOVANE_SETTINGS", (folder / "plain/settings.ini").c_str()};
    EXPECT_FALSE(store.write("K", "N", "1"));
    folder.put("huge", std::string(3 << 20, 'x'));
    const ScopedEnvironment huge{"STRATOVANE_SETTINGS", (folder / "huge").c_str()};
    EXPECT_FALSE(store.write("K", "N", "1"));
    EXPECT_EQ(folder.get("huge").size(), std::size_t{3} << 20);
}

TEST(SettingsFilesTest, TheMachineWideFileIsReadWhileTheOwnOneIsMissing) {
    const TemporaryFolder folder;
    const SettingsFiles files{folder / "own", folder / "wide"};
    std::string text = "left over";
    EXPECT_TRUE(files.load(text));
    EXPECT_EQ(text, "");
    folder.put("wide", "wide");
    EXPECT_TRUE(files.load(text));
    EXPECT_EQ(text, "wide");
    EXPECT_TRUE(files.save(text + "!"));
    EXPECT_TRUE(files.load(text));
    EXPECT_EQ(text, "wide!");
    EXPECT_EQ(folder.get("wide"), "wide");
    EXPECT_FALSE((SettingsFiles{{}, folder / "wide"}).save("x"));
}

TEST(SettingsFilesTest, ThePathFollowsTheEnvironment) {
    const struct {
        const char *named, *configuration, *home, *own;
        bool machineWide;
    } cases[] = {
        {"/n/s.ini", "/c", "/h", "/n/s.ini", false},
        {"", "/c", "/h", "/c/taldrimor/stratovane2.ini", true},
        {nullptr, nullptr, "/h", "/h/.config/taldrimor/stratovane2.ini", true},
        {nullptr, "relative", "/h", "/h/.config/taldrimor/stratovane2.ini", true},
    };
    for (const auto& c : cases) {
        const ScopedEnvironment named{"STRATOVANE_SETTINGS", c.named};
        const ScopedEnvironment configuration{"XDG_CONFIG_HOME", c.configuration};
        const ScopedEnvironment home{"HOME", c.home};
        const SettingsFiles files = SettingsFiles::fromEnvironment();
        EXPECT_EQ(files.own, c.own);
        EXPECT_EQ(files.machineWide, c.machineWide ? "/etc/xdg/taldrimor/stratovane2.ini" : "");
    }
}

}  // namespace
