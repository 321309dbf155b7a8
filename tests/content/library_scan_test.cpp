#include <gtest/gtest.h>

#include <filesystem>

#include "content/content_support.h"
#include "content/tuning_table.h"

namespace stratovane {
namespace {

using content_test::ContentFixture;
using content_test::takeTraces;
using Kind = ContentKind;

const std::string wrapped = std::string(60, 'w') + "record";

TEST(LibraryScan, EntriesThatAreBanksAndItems) {
    struct Case {
        std::string path;  // an empty last component: a folder
        Kind kind;
        int bank, item;
        std::string name;  // of the item, or of the bank for item -1; empty: not there
    };
    const std::vector<Case> cases{
        {"Patches/005 My Sounds/000 Init.fxp", Kind::patches, 5, 0, "Init"},
        {"Patches/005 My Sounds/127 Last.fxp", Kind::patches, 5, 127, "Last"},
        {"Patches/005 My Sounds/003 Upper.FXP", Kind::patches, 5, 3, "Upper"},
        {"Patches/005 My Sounds/004 Dot.ted.fxp", Kind::patches, 5, 4, "Dot.ted"},
        {"Patches/005 My Sounds/006 " + std::string(31, 'n') + ".fxp", Kind::patches, 5, 6,
         std::string(31, 'n')},
        {"Patches/005 My Sounds/007 " + std::string(32, 'n') + ".fxp", Kind::patches, 5, 7, ""},
        {"Patches/005 My Sounds/008 Song.tun", Kind::patches, 5, 8, ""},
        {"Patches/005 My Sounds/009.fxp", Kind::patches, 5, 9, ""},
        {"Patches/005 My Sounds/010 .fxp", Kind::patches, 5, 10, ""},
        {"Patches/005 My Sounds/011 Folder.fxp/", Kind::patches, 5, 11, ""},
        {"Patches/005 My Sounds/012 Second.fxp", Kind::patches, 5, 12, "First"},
        {"Patches/005 My Sounds/012 First.fxp", Kind::patches, 5, 12, "First"},
        {"Patches/005 My Sounds/128 Bad.fxp", Kind::patches, 5, 28, ""},
        {"Patches/005 My Sounds/7 Short.fxp", Kind::patches, 5, 7, ""},
        {"Patches/121 Setups/001 Night.fxb", Kind::patches, 121, 1, "Night"},
        {"Patches/006 Ver. 1.2/", Kind::patches, 6, -1, "Ver. 1.2"},
        {"Patches/128 Far/", Kind::patches, 127, -1, ""},
        {"Patches/07 Short/", Kind::patches, 7, -1, ""},
        {"Patches/008_Mark/", Kind::patches, 8, -1, ""},
        {"Patches/010 " + std::string(27, 'b') + "/", Kind::patches, 10, -1, std::string(27, 'b')},
        {"Patches/011 " + std::string(28, 'b') + "/", Kind::patches, 11, -1, ""},
        {"Patches/013 B/", Kind::patches, 13, -1, "A"},
        {"Patches/013 A/", Kind::patches, 13, -1, "A"},
        {"Samples/020 Strings v1.2.bank", Kind::samples, 20, -1, "Strings v1.2"},
        {"Samples/021 Plain", Kind::samples, 21, -1, "Plain"},
        {"Samples/022 Folder/000 x.fxp", Kind::samples, 22, 0, ""},
        {"Tunings/001 Old/005 Werck III.tun", Kind::tunings, 1, 5, "Werck III"},
        {"Phrases/002 Beats/009 Funk.phr", Kind::phrases, 2, 9, "Funk"},
    };
    ContentFixture f;
    for (const Case& c : cases)
        if (c.path.ends_with('/'))
            std::filesystem::create_directories(f.folder / c.path);
        else
            f.put(c.path, wrapped);
    ASSERT_TRUE(f.open());
    for (const Case& c : cases)
        EXPECT_EQ(f.library.itemName(c.kind, c.bank, c.item), c.name) << c.path;
    EXPECT_EQ(f.library.bank(Kind::samples, 22)->itemCount(), 0);
    EXPECT_EQ(f.library.bank(Kind::patches, 6)->itemCount(), 128);
}

TEST(LibraryScan, PathsNamesAndData) {
    ContentFixture f;
    f.put("Patches/005 My Sounds/001 One.FXP", wrapped);
    f.put("Patches/121 Setups/002 Two.fxb", std::string(160, 'w') + "setup");
    f.put("Patches/005 My Sounds/002 Short.fxp", std::string(59, 'w'));
    f.put("Tunings/001 Old/000 Half.tun", "note 69=6950.0\n");
    f.put("Phrases/001 Old/000 P.phr", "phrase");
    f.put("Samples/001 S.bank", writeBankFile({.items = {{"Set", "Second", {1, 2, 3}, {}}}}));
    ASSERT_TRUE(f.open());
    const ContentLibrary& l = f.library;
    const std::string root = f.folder / "";
    EXPECT_EQ(l.root(), root);
    struct Path {
        Kind kind;
        int bank, item;
        std::string path;
    };
    for (const Path& p :
         {Path{static_cast<Kind>(-1), 0, 0, root}, Path{Kind::drawbars, -1, 0, root + "Drawbars/"},
          Path{Kind::patches, 5, -1, root + "Patches/005 My Sounds/"},
          Path{Kind::patches, 5, 1, root + "Patches/005 My Sounds/001 One.FXP"},
          Path{Kind::patches, 5, 9, root + "Patches/005 My Sounds/009 .fxp"},
          Path{Kind::patches, 121, 9, root + "Patches/121 Setups/009 .fxb"},
          Path{Kind::samples, 1, -1, root + "Samples/001 S.bank"}, Path{Kind::samples, 1, 0, ""},
          Path{Kind::patches, 9, 0, ""}, Path{Kind::patches, 5, 128, ""},
          Path{static_cast<Kind>(7), -1, 0, ""}})
        EXPECT_EQ(l.itemPath(p.kind, p.bank, p.item), p.path);
    EXPECT_EQ(l.bankAndItemName(Kind::samples, 1, 0), "S: Set");
    EXPECT_EQ(l.itemName(Kind::samples, 1, -1), "S");
    for (const int number : {-2, 128, 1000}) {
        EXPECT_EQ(l.bankName(Kind::samples, number), "");
        EXPECT_EQ(l.itemName(Kind::samples, 1, number), "");
        EXPECT_FALSE(l.itemData(Kind::samples, 1, number));
    }

    auto data = [&](Kind kind, int bank, int item) {
        const auto bytes = l.itemData(kind, bank, item);
        return bytes ? content_test::asText(*bytes) : "none";
    };
    EXPECT_EQ(data(Kind::patches, 5, 1), "record");
    EXPECT_EQ(data(Kind::patches, 121, 2), "setup");
    EXPECT_EQ(data(Kind::patches, 5, 2), "none");
    EXPECT_EQ(data(Kind::patches, 5, 3), "none");
    EXPECT_EQ(data(Kind::phrases, 1, 0), "phrase");
    EXPECT_EQ(data(Kind::samples, 1, 0), "\1\2\3");
    EXPECT_EQ(ByteView{*l.itemData(Kind::tunings, 1, 0)}.at<float>(4 + 4 * 69), 0.5f);
    EXPECT_EQ(data(Kind::tunings, 1, 0).size(), tuningItemBytes);
}

TEST(LibraryScan, WhatCountsAsFound) {
    ContentFixture f;
    EXPECT_FALSE(f.library.open(""));
    EXPECT_FALSE(f.open());
    EXPECT_EQ(takeTraces(), std::vector<std::string>{"Content not found: " + (f.folder / "")});
    f.put("Tunings/001 Old/000 Half.tun", "");
    EXPECT_FALSE(f.open());
    f.put("Wavetables/001 W.bank", "no bank");
    EXPECT_TRUE(f.library.open(f.folder / ""));
    EXPECT_FALSE(std::filesystem::exists(f.folder / "content.txt") &&
                 f.folder.get("content.txt").find("001 W") != std::string::npos);
    EXPECT_TRUE(f.open());
    EXPECT_NE(f.folder.get("content.txt").find("001 W"), std::string::npos);
    // A library that is open stays when another folder holds none.
    EXPECT_FALSE(f.library.open(f.folder / "Wavetables"));
    EXPECT_TRUE(f.library.isOpen());
    EXPECT_EQ(f.library.bankName(Kind::wavetables, 1), "W");
}

TEST(LibraryScan, RescanMovesTheItemsThatAreStillThere) {
    ContentFixture f;
    f.put("Patches/100 User/000 A.fxp", wrapped);
    f.put("Tunings/001 Old/000 Half.tun", "note 69=6950.0\n");
    f.put("Tunings/001 Old/001 Gone.tun", "note 69=6950.0\n");
    ASSERT_TRUE(f.open());
    const ItemSlot* half = f.library.acquire(Kind::tunings, 1, 0, false);
    const ItemSlot* gone = f.library.acquire(Kind::tunings, 1, 1, false);
    f.idleUntilDone();
    const auto* table = half->get<TuningTable>();
    ASSERT_NE(table, nullptr);
    const std::string_view name = f.library.itemName(Kind::tunings, 1, 1);

    std::filesystem::remove(f.folder / "Tunings/001 Old/001 Gone.tun");
    f.put("Tunings/001 Old/002 New.tun", "note 1=0\n");
    ASSERT_TRUE(f.library.rescan(Kind::tunings, 1, ""));
    EXPECT_EQ(half->get<TuningTable>(), table);
    EXPECT_NE(gone->get<TuningTable>(), nullptr);
    EXPECT_EQ(name, "Gone");
    EXPECT_EQ(f.library.itemName(Kind::tunings, 1, 1), "");
    EXPECT_EQ(f.library.itemName(Kind::tunings, 1, 2), "New");
    EXPECT_EQ(f.library.acquire(Kind::tunings, 1, 0, false), half);

    EXPECT_FALSE(f.library.rescan(Kind::patches, 101, "Mine"));
    f.put("Patches/101 Mine/007 B.fxp", wrapped);
    EXPECT_TRUE(f.library.rescan(Kind::patches, 101, "Mine"));
    EXPECT_EQ(f.library.programName(101, 7), "B");
    EXPECT_FALSE(f.library.rescan(Kind::samples, 1, "Mine"));
    EXPECT_FALSE(f.library.rescan(Kind::phrases, 1, "Mine"));
}

}  // namespace
}  // namespace stratovane
