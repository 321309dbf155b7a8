#include "content/file_bytes.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace stratovane {
namespace {

namespace fs = std::filesystem;

TEST(ReplaceFile, LeavesTheNewFileOrTheOldOneAndNothingBeside) {
    const TemporaryFolder folder;
    const Bytes bytes{1, 2, 3};
    const std::string text{"\x01\x02\x03"};
    folder.put("taken.0.tmp", "mine");
    folder.put("real", "old and longer");
    fs::create_symlink(folder / "real", folder / "link");
    fs::create_directories(folder / "folder/inside");
    EXPECT_TRUE(replaceFile(folder / "taken", bytes));
    EXPECT_TRUE(replaceFile(folder / "link", bytes));
    EXPECT_EQ(folder.get("taken"), text);
    EXPECT_EQ(folder.get("taken.0.tmp"), "mine");
    EXPECT_EQ(folder.get("real"), text);
    EXPECT_TRUE(fs::is_symlink(folder / "link"));

    EXPECT_FALSE(replaceFile(folder / "missing/file", bytes));
    EXPECT_FALSE(replaceFile(folder / "folder", bytes));
    EXPECT_TRUE(fs::is_directory(folder / "folder/inside"));
    std::size_t entries = 0;
    for (const auto& entry : fs::directory_iterator{folder / ""}) entries += entry.exists();
    EXPECT_EQ(entries, 5u);
}

}  // namespace
}  // namespace stratovane
