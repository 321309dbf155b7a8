#include <gtest/gtest.h>

#include "content/content_support.h"

namespace stratovane {
namespace {

using content_test::ContentFixture;

BankFileSource::Item named(const std::string& name, const std::string& second = "") {
    return {name, second, {1}, {}};
}

std::vector<int> found(ContentFixture& f, std::string_view text) {
    f.library.search(text);
    const auto hits = f.library.searchResults();
    return {hits.begin(), hits.end()};
}

TEST(Search, WordsNamesAndMarks) {
    ContentFixture f;
    f.put("Patches/000 Zero.bank", writeBankFile({.items = {named("Grand Piano")}}));
    f.put("Patches/001 One.bank",
          writeBankFile({.items = {named("Grand Piano"), named("Soft", "Grand Pad"),
                                   named("Grand", "Piano"), named("_Grand"), named("}Grand"),
                                   named("]Grand"), named("{Grand"), named("", "Grand")}}));
    for (const int bank : {80, 81, 82, 83, 84, 85})
        f.put("Patches/0" + std::to_string(bank) + " B.bank",
              writeBankFile({.items = {named("Grand")}}));
    ASSERT_TRUE(f.open());
    using List = std::vector<int>;
    EXPECT_EQ(found(f, "grand"), (List{256, 257, 258, 262, 263, 85 << 8}));
    EXPECT_EQ(found(f, "GRAND"), found(f, "grand"));
    EXPECT_EQ(found(f, "piano\xE9 grand"), (List{256}));
    EXPECT_EQ(found(f, "ran iano"), (List{256}));
    EXPECT_EQ(found(f, "pad soft"), (List{0}));
    for (const char* nothing : {"", "   ", "\xE4", "organ"})
        EXPECT_EQ(found(f, nothing), (List{0})) << nothing;

    // A shared table in slot 1 opens banks 80 and 81 and the items marked ']'.
    f.put("Samples/001 S.bank", writeBankFile({.sharedTable = {1}}));
    ASSERT_TRUE(f.open());
    EXPECT_EQ(found(f, "grand"), (List{256, 257, 258, 261, 262, 263, 80 << 8, 81 << 8, 85 << 8}));
    f.put("Samples/001 S.bank", writeBankFile({.sharedTable = {2}}));
    f.put("Samples/002 S.bank", writeBankFile({.sharedTable = {3}}));
    ASSERT_TRUE(f.open());
    EXPECT_EQ(found(f, "grand"), (List{256, 257, 258, 262, 263, 82 << 8, 83 << 8, 85 << 8}));
}

TEST(Search, EndsAfterTheBankThatBringsEnough) {
    ContentFixture f;
    auto bankOf = [](std::size_t items) { return writeBankFile({.items = {items, named("Pad")}}); };
    f.put("Patches/001 A.bank", bankOf(127));
    f.put("Patches/002 B.bank", bankOf(130));  // items from 128 on cannot be chosen
    f.put("Patches/003 C.bank", bankOf(1));
    ASSERT_TRUE(f.open());
    EXPECT_EQ(f.library.search("pad"), 255);
    EXPECT_EQ(f.library.searchResults().back(), 2 << 8 | 127);
}

TEST(Listing, IsExact) {
    ContentFixture f;
    f.put("Patches/005 My Sounds/003 Lead.fxp", "x");
    BankFileSource bank{.secondName = "Band",
                        .items = {named("Strings", "Str"), named(""), named("Brass")}};
    bank.samples = {{1}, {2}, {3}};
    f.put("Samples/001 Orchestra.bank", writeBankFile(bank));
    f.put("Drawbars/000 Organ.bank", writeBankFile({.items = {named("Wheels")}}));
    ASSERT_TRUE(f.open());
    EXPECT_EQ(f.folder.get("content.txt"),
              "Patch Banks\n"
              "  005 My Sounds\t\t\t(128 items, 0 samples)\n"
              "    003 Lead\t\t\n"
              "\n"
              "  (128 items of this type)\n\n"
              "Sample Banks\n"
              "  001 Orchestra\t\tBand\t(3 items, 3 samples)\n"
              "    000 Strings\t\tStr\n"
              "    002 Brass\t\t\n"
              "\n"
              "  (3 items of this type)\n\n"
              "Wavetable Banks\n"
              "  (0 items of this type)\n\n"
              "Tuning Banks\n"
              "  (0 items of this type)\n\n"
              "Drawbar Banks\n"
              "  000 Organ\t\t\t(1 items, 0 samples)\n"
              "    000 Wheels\t\t\n"
              "\n"
              "  (1 items of this type)\n\n"
              "Phrase Banks\n"
              "  (0 items of this type)\n\n"
              "Total 132 items + 3 samples\n");
    EXPECT_FALSE(f.library.writeListing(f.folder / "no/such/folder.txt"));
}

}  // namespace
}  // namespace stratovane
