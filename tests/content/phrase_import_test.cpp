#include "content/phrase_import.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "base/trace.h"
#include "content/bytes.h"

namespace stratovane {
namespace {

// Quarter notes of 96 ticks. `at` 0..127 is a delta in ticks.
Bytes file(const std::vector<Bytes>& tracks, int declared = 0) {
    const std::string_view head{"MThd\0\0\0\6\0\1\0", 11};
    Bytes all(head.begin(), head.end());
    all.push_back(static_cast<std::uint8_t>(declared == 0 ? tracks.size() : declared));
    all.insert(all.end(), {0, 96});
    for (const Bytes& track : tracks) {
        all.insert(all.end(), {'M', 'T', 'r', 'k', 0, 0, std::uint8_t(track.size() >> 8),
                               std::uint8_t(track.size())});
        all.insert(all.end(), track.begin(), track.end());
    }
    return all;
}

/// "status:data1,data2@beats+length" of each event.
std::string shown(const Phrase& phrase) {
    std::string text;
    for (const PhraseEvent& e : phrase.events) {
        char line[80];
        std::snprintf(line, sizeof line, "%s%X:%d,%d@%g+%g", text.empty() ? "" : " ", e.status,
                      e.data1, e.data2, e.beats, e.lengthBeats);
        text += line;
    }
    return text;
}

std::optional<Scene> import(const Bytes& bytes, std::string_view path = "x.mid") {
    Trace silent;
    return importPhrase(bytes, path, silent);
}

struct Case {
    const char* what;
    Bytes track;
    float beats;
    const char* events;
    bool passThrough = false;
};

TEST(PhraseImport, TakesNotesAndControlsFromTheFirstBarOn) {
    // A bar is 384 ticks: 0x83 0x00 as a delta.
    const Case cases[] = {
        {"a note of one beat", {0, 0x90, 60, 100, 96, 0x80, 60, 0}, 4, "90:60,100@0+1"},
        {"a velocity of 0 ends a note", {0, 0x90, 60, 100, 48, 60, 0}, 4, "90:60,100@0+0.5"},
        {"bar 3 begins the phrase",
         {0x86, 0x30, 0x90, 60, 100, 0x30, 60, 0},  // tick 816: beat 8.5
         4,
         "90:60,100@0.5+0.5"},
        {"a downbeat belongs to the next pass",
         {0, 0x90, 60, 100, 96, 60, 0, 0x82, 0x20, 62, 100},  // at tick 384
         8,
         "90:60,100@0+1 90:62,100@4+4"},
        {"what nobody ends lasts to the end", {96, 0x90, 60, 100}, 4, "90:60,100@1+3"},
        {"chords rise",
         {0, 0x90, 67, 1, 0, 60, 2, 0, 64, 3},
         4,
         "90:60,2@0+4 90:64,3@0+4 90:67,1@0+4"},
        {"a controller between keeps a chord in two",
         {0, 0x90, 67, 1, 0, 0xB0, 1, 9, 0, 0x90, 60, 2},
         4,
         "90:67,1@0+4 B0:1,9@0+0 90:60,2@0+4"},
        {"a control at time 0 before bar 2 comes to the start",
         {0, 0xB0, 7, 80, 0x83, 0, 0x90, 60, 100},
         4,
         "B0:7,80@0+0 90:60,100@0+4"},
        {"a repeated note: the note-off means the earlier one",
         {0, 0x90, 60, 100, 96, 60, 90, 0, 60, 0, 96, 60, 0},
         4,
         "90:60,100@0+1 90:60,90@1+1"},
        {"a note that ends where it begins", {0, 0x90, 60, 100, 0, 60, 0}, 4, "90:60,100@0+0.01"},
        {"channels do not end each other's notes",
         {0, 0x90, 60, 100, 48, 0x81, 60, 0, 48, 0x80, 60, 0},
         4,
         "90:60,100@0+1"},
        {"controls alone let keys through",
         {0, 0xB0, 1, 5, 96, 0xE0, 3, 4},
         4,
         "B0:1,5@0+0 E0:3,4@1+0",
         true},
        {"pressure and programs are left out",
         {0, 0xD0, 5, 0, 0xC0, 3, 0, 0x90, 60, 1},
         4,
         "90:60,1@0+4"},
        {"more than 32 beats are cut",
         {0, 0x90, 60, 1, 96, 60, 0, 0x97, 0x40, 62, 1, 0x80 | 0x47, 0, 64, 1},  // beats 32, 41
         32,
         "90:60,1@0+1"},
    };
    for (const Case& c : cases) {
        const auto scene = import(file({c.track}));
        ASSERT_TRUE(scene) << c.what;
        EXPECT_EQ(scene->phrase.lengthBeats, c.beats) << c.what;
        EXPECT_EQ(shown(scene->phrase), c.events) << c.what;
        EXPECT_EQ(scene->phrase.passThrough, c.passThrough) << c.what;
        const Bytes record = writeSceneRecord(*scene);
        EXPECT_EQ(record.size(), (3 * scene->phrase.events.size() + 66) * 8) << c.what;
        EXPECT_EQ(ByteView{record}.at<std::uint32_t>(0), record.size()) << c.what;
    }
}

TEST(PhraseImport, MergesTracksAndKeepsWhatADamagedFileHolds) {
    const Bytes low{0, 0x90, 40, 100, 96, 40, 0}, high{48, 0x91, 70, 90, 48, 70, 0};
    const auto both = import(file({low, high}));
    ASSERT_TRUE(both);
    EXPECT_EQ(shown(both->phrase), "90:40,100@0+1 91:70,90@0.5+0.5");
    Bytes cut = file({low, high});
    cut.pop_back();
    const auto first = import(cut);
    ASSERT_TRUE(first);
    EXPECT_EQ(shown(first->phrase), "90:40,100@0+1");
    std::vector<Bytes> many(33, Bytes{0, 0xC0, 1});
    many[31] = low;
    many[32] = high;
    const auto limited = import(file(many));
    ASSERT_TRUE(limited);
    EXPECT_EQ(shown(limited->phrase), "90:40,100@0+1");
    EXPECT_FALSE(import(file({{0, 0xC0, 1}})));
    EXPECT_FALSE(import({}));
}

TEST(PhraseImport, IsCutToTwoThousandEvents) {
    Bytes track{0, 0xB0, 1, 0};
    for (int i = 0; i < 2500; ++i) track.insert(track.end(), {0, 1, std::uint8_t(i & 127)});
    const auto scene = import(file({track}));
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->phrase.events.size(), 2000u);
}

TEST(PhraseImport, IsNamedAfterTheFile) {
    const std::pair<const char*, const char*> cases[] = {
        {"/songs/A riff.mid", "A riff"},
        {"c:\\songs\\Riff.MID", "Riff"},
        {"plain", "plain"},
        {".mid", ""},
        {"riff.midi", "riff.midi"},
        {"/a/0123456789012345678901234567890123456789.mid", "0123456789012345678901234567890"},
    };
    for (const auto& [path, name] : cases) EXPECT_EQ(phraseName(path), name) << path;
}

/// The lines that the reader tells, in order.
std::string told;  // NOLINT: a trace's sink has no other place
void tell(const char* line) { told += line; }

TEST(PhraseImport, TellsWhatIsWrongWithAFile) {
    const Bytes note{0, 0x90, 60, 100};
    auto changed = [&](std::size_t at, std::initializer_list<std::uint8_t> bytes) {
        Bytes all = file({note});
        std::copy(bytes.begin(), bytes.end(), all.begin() + static_cast<std::ptrdiff_t>(at));
        return all;
    };
    Bytes longer = file({note});
    longer.insert(longer.end(), {1, 2, 3});
    const std::pair<Bytes, const char*> cases[] = {
        {Bytes(21), "SV2 ReadSMF: File too short!\n"},
        {changed(0, {'X'}), "SV2 ReadSMF: No 'MThd' header!\n"},
        {changed(12, {0, 0}), "SV2 ReadSMF: ppqn = 0 !\n"},
        {changed(12, {0xE7, 40}),
         "SV2 ReadSMF: SMPTE locked!  40 ticks per frame.  To do: frame rate\n"},
        {changed(14, {'X'}), "SV2 ReadSMF: No 'MTrk' header!\n"},
        {changed(21, {99}), "SV2 Unexpected end of file! (byte "},
        {longer, "SV2 Unexpected non-end of file! (3 extra bytes @ 26)\n"},
        {file(std::vector<Bytes>(33, note)), "SV2 ReadSMF: Increase MAX_TRACKS! (32 -> 33)\n"},
    };
    for (const auto& [bytes, line] : cases) {
        told.clear();
        Trace trace{tell};
        importPhrase(bytes, "x", trace);
        EXPECT_NE(told.find(line), std::string::npos) << line << "|" << told;
    }
}

}  // namespace
}  // namespace stratovane
