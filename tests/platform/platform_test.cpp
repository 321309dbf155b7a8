#include "platform/platform.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/folder.h"
#include "support/temporary_folder.h"

using namespace stratovane;

namespace {

TEST(Platform, OwnPathIsThisProgramFromAnyFolder) {
    const std::filesystem::path own = ownPath();
    EXPECT_TRUE(own.is_absolute()) << own;
    EXPECT_TRUE(std::filesystem::equivalent(own, "/proc/self/exe")) << own;
}

TEST(Platform, DebugOutputGoesToStandardError) {
    testing::internal::CaptureStderr();
    debugOutput("SV2 100 %s\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "SV2 100 %s\n");
}

TEST(Platform, MessageBoxAsksItsHook) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(messageBox("Overwrite %s?", true), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Stratovane 2: Overwrite %s?\n");
    setMessageBoxHook([](const char* text, int question) {
        return std::string{text} == "Sure?" && question == 1 ? 5 : 0;
    });
    EXPECT_EQ(messageBox("Sure?", true), 1);
    EXPECT_EQ(messageBox("Sure?", false), 0);
    setMessageBoxHook(nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(messageBox("Sure?", true), 0);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST(Platform, FoldersListSortedByBytes) {
    const TemporaryFolder folder;
    for (const char* name : {"b", "B", "10", "9", "\xE4", ".hidden"}) folder.put(name, "");
    std::filesystem::create_directory(folder / "a folder");
    std::filesystem::create_symlink("a folder", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    std::vector<FolderEntry> entries;
    ASSERT_TRUE(listFolder(folder / "", entries));
    std::string seen;
    for (const FolderEntry& e : entries) seen += e.name + (e.isFolder ? "/ " : " ");
    EXPECT_EQ(seen, ".hidden 10 9 B a folder/ b link/ \xE4 ");
    EXPECT_FALSE(listFolder(folder / "missing", entries));
    EXPECT_TRUE(entries.empty());
    EXPECT_FALSE(listFolder(folder / "b", entries));
}

}  // namespace
