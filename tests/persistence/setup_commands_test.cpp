// What the user does with files, combis, parts and the library.

#include <gtest/gtest.h>

#include "content/file_bytes.h"
#include "content/program_files.h"
#include "effects/catalogue.h"
#include "patch/scene_table.h"
#include "persistence/setup_rig.h"

namespace stratovane {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
constexpr auto byEditor = LibraryLoader::AskedBy::editor,
               byMessage = LibraryLoader::AskedBy::message;

/// A rig whose library holds some patches, and combis of which each plays a patch of its own name.
struct Commands : testing::Test {
    User user;
    TemporaryFolder folder;
    SetupRig rig;

    void putPatch(const std::string& path, const std::string& name, float level = 0.5f) {
        SetupRig maker;
        maker.put(0, name, level);
        file(path);
        ASSERT_TRUE(maker.user.files.writePreset(maker.engine, 0, folder / path));
    }
    void putCombi(const std::string& path, const std::string& name, int part) {
        SetupRig maker;
        maker.patches.clear(maker.engine, 0);
        maker.put(part, name, 0.25f);
        maker.part(part).location = 0x0304;
        file(path);
        ASSERT_TRUE(maker.user.files.writeBank(maker.engine, folder / path));
    }
    void file(const std::string& path) const {
        fs::create_directories(fs::path{folder / path}.parent_path());
    }
    void open() {
        rig.settings.contentLocation = folder / "";
        ASSERT_TRUE(rig.library.open(folder / ""));
    }
    Lines files(const std::string& path) const {
        Lines names;
        for (const auto& entry : fs::directory_iterator{folder / path})
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    std::string nameAt(int bank, int program) const {
        return std::string{rig.library.programName(bank, program)};
    }
};

// Files.

TEST_F(Commands, FilesComeBack) {
    rig.put(2, "A name of thirty-one characters", 0.25f);
    ASSERT_TRUE(rig.user.files.writePreset(rig.engine, 2, folder / "a.fxp"));
    ASSERT_TRUE(rig.user.files.writeBank(rig.engine, folder / "a.fxb"));
    EXPECT_EQ(files("."), (Lines{"a.fxb", "a.fxp"}));  // nothing else is left
    const std::string preset = folder.get("a.fxp"), bank = folder.get("a.fxb");
    EXPECT_EQ(preset.substr(0, 12), (std::string{"CcnK\0\0\0\0FPCh", 12}));
    EXPECT_EQ(preset.substr(28, 28), (std::string{"A name of thirty-one charac\0", 28}));
    EXPECT_EQ(bank.substr(8, 4), "FBCh");
    EXPECT_EQ(bank.size(), 160 + rig.bank().size());

    SetupRig other;
    EXPECT_TRUE(other.user.files.read(other.engine, 9, folder / "a.fxp"));
    EXPECT_EQ(other.engine.patch(9).name(), "A name of thirty-one characters");
    EXPECT_TRUE(other.user.files.read(other.engine, 9, folder / "a.fxb"));
    EXPECT_EQ(other.engine.patch(9).name(), "");
    EXPECT_EQ(other.engine.patch(2).name(), "A name of thirty-one characters");
    // The fifth letter of the kind decides; sizes and the plug-in's version do not matter.
    std::string marked = bank;
    marked.replace(4, 4, "abcd");
    marked.replace(20, 4, "zzzz");
    folder.put("b", marked);
    EXPECT_TRUE(other.user.files.read(other.engine, 0, folder / "b"));
    EXPECT_TRUE(user.takeSaid().empty());
}

TEST_F(Commands, FilesThatAreNoneAreRefused) {
    rig.put(0, "Kept", 0.5f);
    rig.user.files.writePreset(rig.engine, 0, folder / "good.fxp");
    rig.user.files.writeBank(rig.engine, folder / "good.fxb");
    const Bytes before = rig.bank();
    const std::string preset = folder.get("good.fxp"), bank = folder.get("good.fxb");
    const auto with = [](std::string text, std::size_t at, const std::string& piece) {
        return text.replace(at, piece.size(), piece);
    };
    const std::string path = folder / "bad", none = path + " is not a Stratovane file!";
    const std::string bytes = std::to_string(preset.size() - 60) + " bytes)";
    const struct {
        std::string content, message;
    } cases[] = {
        {"", none},
        {preset.substr(0, 59), none},
        {bank.substr(0, 159), none},
        {with(preset, 0, "x"), none},
        {with(preset, 8, "x"), none},
        {with(preset, 15, "\2"), none},
        {with(preset, 16, "MilE"), none},
        {with(preset, 56, "\1"),
         "Error loading chunk (QvRR, " + std::to_string(16777216 + preset.size() - 60) + " bytes)"},
        {preset.substr(0, preset.size() - 1), "Error loading chunk (QvRR, " + bytes},
        {with(preset, 57, std::string{"\0\3\xE7", 3}), "Error loading chunk (QvRR, 999 bytes)"},
        {with(preset, 60, "abcd"), "Error loading chunk (abcd, " + bytes},
    };
    for (const auto& c : cases) {
        folder.put("bad", c.content);
        EXPECT_FALSE(rig.user.files.read(rig.engine, 0, path));
        EXPECT_EQ(user.takeSaid(), Lines{c.message});
    }
    EXPECT_FALSE(rig.user.files.read(rig.engine, 0, folder / "not there"));
    EXPECT_TRUE(user.takeSaid().empty());
    EXPECT_EQ(rig.bank(), before);

    const std::string nowhere = folder / "no folder/a.fxp";
    EXPECT_FALSE(rig.user.files.writePreset(rig.engine, 0, nowhere));
    EXPECT_FALSE(rig.user.files.writeBank(rig.engine, folder / ""));
    EXPECT_EQ(user.takeSaid(), (Lines{"Error writing " + nowhere, "Error writing " + folder / ""}));
    rig.patches.clear(rig.engine, 0);
    EXPECT_FALSE(rig.user.files.writePreset(rig.engine, 0, folder / "good.fxp"));
    EXPECT_EQ(folder.get("good.fxp"), preset);  // there was nothing to save
    EXPECT_TRUE(user.takeSaid().empty());
}

// The library.

TEST_F(Commands, ProgramsAreLoadedAndSteppedThrough) {
    putPatch("Patches/005 Mine/003 First.fxp", "in the record", 0.25f);
    putPatch("Patches/005 Mine/007 [Second.fxp", "in the record", 0.75f);
    open();
    constexpr std::uint32_t waits = programWaits | 0x0101;
    const struct {
        std::int32_t location;
        LibraryLoader::AskedBy by;
        std::int32_t answer;
        std::uint32_t word;
        int bank;
        const char* name;
    } steps[] = {
        {LibraryLoader::next, byEditor, 0, waits, 9, ""},  // from nowhere
        {0x0503, byMessage, 0x0503, waits, 9, "First"},    // what waits came behind the message
        {LibraryLoader::next, byEditor, 0x0507, 0x0507, 5, "Second"},
        {LibraryLoader::next, byEditor, 0, 0x0507, 5, "Second"},
        {LibraryLoader::again, byEditor, 0x0507, 0x0507, 5, "Second"},
        {LibraryLoader::previous, byEditor, 0x0503, 0x0503, 5, "First"},
        {LibraryLoader::previous, byEditor, 0, 0x0503, 5, "First"},
    };
    rig.part(2).bankSelect = 9;
    rig.part(2).pendingProgram.store(waits);
    for (const auto& step : steps) {
        EXPECT_EQ(rig.programs.load(rig.engine, 2, step.location, step.by), step.answer);
        EXPECT_EQ(rig.word(2), step.word);
        EXPECT_EQ(rig.part(2).bankSelect, step.bank);
        EXPECT_EQ(rig.engine.patch(2).name(), step.name);
    }
    rig.part(2).pendingProgram.store(0x0504);
    EXPECT_EQ(rig.programs.load(rig.engine, 2, 0x0504, byMessage), 0);
    EXPECT_EQ(rig.word(2), 0x0503u);  // nothing there: the word returns
}

TEST_F(Commands, CombisReplaceTheWholeSetup) {
    putCombi("Patches/120 Sets/001 _Quartet.fxb", "Violin", 3);
    folder.put("Patches/120 Sets/002 Broken.fxb", std::string(2000, 'x'));
    open();
    rig.multi.defaultPatchWanted = true;
    // The second is refused: words return to what the parts play.
    for (const std::int32_t combi : {0x7801, 0x7802}) {
        for (int part = 0; part < parts; ++part) rig.part(part).pendingProgram.store(0xFFFF);
        rig.part(4).pendingProgram.store(programWaits | 0x0102);
        EXPECT_EQ(rig.programs.load(rig.engine, 15, combi, byMessage), combi == 0x7801 ? combi : 0);
        EXPECT_STREQ(rig.programName.data(), "Quartet");
        EXPECT_EQ(rig.engine.patch(3).name(), "Violin");
        EXPECT_EQ(rig.engine.patch(0).name(), "");
        EXPECT_EQ(rig.word(3), 0x0304u);
        EXPECT_EQ(rig.word(4), programWaits | 0x0102);
        EXPECT_EQ(rig.word(15), 0u);
        EXPECT_EQ(rig.part(15).location, 0);
    }
    EXPECT_EQ(user.takeSaid(), Lines{"Error loading chunk (xxxx, 1840 bytes)"});
    EXPECT_FALSE(rig.multi.defaultPatchWanted);
    EXPECT_TRUE(rig.multi.patchLoaded);
    EXPECT_EQ(rig.programs.load(rig.engine, 2, 0x7801, byEditor), 0x7801);
    EXPECT_EQ(rig.word(4), 0u);  // the user came later
    EXPECT_FALSE(rig.inside);
}

// Combi chains.

TEST_F(Commands, SlotsOfTheChain) {
    putCombi("Patches/120 Sets/001 Quartet.fxb", "Violin", 3);
    open();
    CombiChain& chain = rig.user.combis;
    chain.set(7, 0x7801);
    chain.copy(7, 127);
    chain.move(7, 0);
    chain.move(0, 0);
    for (const int outside : {-1, 128}) {
        chain.set(outside, 0x7801);
        chain.copy(0, outside);
        chain.move(0, outside);
        chain.copy(outside, 0);
        chain.select(rig.engine, outside);
        EXPECT_EQ(chain.label(outside), "");
    }
    EXPECT_EQ(rig.multi.combis.at(0), 0x7801);
    EXPECT_EQ(rig.multi.combis.at(7), -1);
    EXPECT_EQ(chain.label(0), "000 Quartet");
    EXPECT_EQ(chain.label(7), "007 Empty slot");
    rig.settings.oneBasedNumbers = true;
    EXPECT_EQ(chain.label(127), "128 Quartet");
    chain.select(rig.engine, 9);
    EXPECT_EQ(rig.multi.combis.current, 9);
    EXPECT_EQ(rig.engine.patch(0).name(), "Sawtooth");  // an empty slot loads nothing
    chain.select(rig.engine, 127);
    EXPECT_EQ(rig.multi.combis.current, 127);
    EXPECT_EQ(rig.engine.patch(3).name(), "Violin");
    chain.clear(127);
    EXPECT_EQ(rig.multi.combis.at(127), -1);
    chain.setPreloadMode(2);
    EXPECT_EQ(rig.settings.combiPreload, 2);
    EXPECT_EQ(chain.defaultPath(), folder / "Combi chains/unnamed.s2c");
}

TEST_F(Commands, ChainFiles) {
    CombiChain& chain = rig.user.combis;
    const std::string head = "SV2//COMBICHAIN\n", path = folder / "a.s2c";
    std::string all = head;
    for (int i = 0; i < 128; ++i) all += std::to_string(30720 + i) + "\n";
    const struct {
        std::string text;
        bool good;
        std::vector<std::int32_t> slots;  // the first ones, of which the rest stays
    } cases[] = {
        {head, true, {}},
        {head + "30720\n-1\n30722\n", true, {30720, -1, 30722}},
        {head + "5\n\n\r\n30721\n", true, {30721}},
        {"SV2//COMBICHAIN\r\n30720\r\n-1\r\n", true, {30720, -1}},
        {head + "words\n30723 and more\n", true, {30723}},
        {head + std::string(62, ' ') + "x30724\n", true, {30724}},  // cut into two lines
        {head + "99999999999\n30725", true, {-1, 30725}},           // the first is no combi
        {all + "31000\n", true, {30720, 30721, 30722}},
        {"SV2//COMBICHAIN", false, {}},
        {"SV2//COMBICHAIN \n30720\n", false, {}},
        {"", false, {}},
        {"30720\n", false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 60));
        for (int slot = 0; slot < 128; ++slot) chain.set(slot, 32000 + slot);
        folder.put("a.s2c", c.text);
        EXPECT_EQ(chain.read(path), c.good);
        EXPECT_EQ(user.takeSaid(), c.good ? Lines{} : Lines{"File Format invalid " + path});
        const auto filled = c.text.size() > 700 ? 128 : c.slots.size();
        for (std::size_t slot = 0; slot < c.slots.size(); ++slot)
            EXPECT_EQ(rig.multi.combis.at(static_cast<int>(slot)), c.slots[slot]) << slot;
        for (std::size_t slot = filled; slot < 128; ++slot)
            ASSERT_EQ(rig.multi.combis.at(static_cast<int>(slot)),
                      32000 + static_cast<std::int32_t>(slot));
    }
    chain.set(3, -1);
    EXPECT_TRUE(chain.write(path));
    EXPECT_TRUE(folder.get("a.s2c").starts_with(head + "32000\n32001\n32002\n-1\n32004\n"));
    EXPECT_EQ(files("."), Lines{"a.s2c"});
    const std::string bank = folder / "a.fxb.s2c", other = folder / "a.txt",
                      gone = folder / "b.s2c";
    for (const std::string& wrong : {bank, other, gone}) EXPECT_FALSE(chain.read(wrong));
    EXPECT_FALSE(chain.write(folder / "none/a.s2c"));
    EXPECT_EQ(user.takeSaid(),
              (Lines{bank + " is not a combi chain", other + " is not a combi chain",
                     "Error reading " + gone, "Error writing " + folder / "none/a.s2c"}));
}

// Parts.

TEST_F(Commands, PartsAreCopiedAndMoved) {
    Patch& model = rig.put(0, "Model", 0.25f);
    model.scenes().put(1, std::make_shared<const Scene>(Scene{.name = "One"}));
    model.store(0, 23, 0.1f);  // below what the host's "Arp. Rate" reaches
    // Row 50 means nothing but to the host; 83 is of the second insert effect.
    for (const auto& [row, value] : {std::pair{strip::pan, 0.9f},
                                     {strip::output, 0.08f},
                                     {strip::firstKnob + 2, 0.3f},
                                     {50, 0.4f},
                                     {56 + 24 + 3, 0.7f},
                                     {5 * partRows + strip::link, 1.0f},
                                     {5 * partRows + strip::lock, 1.0f},
                                     {5 * partRows + strip::mute, 1.0f}})
        rig.parameters.set(row, value);
    rig.part(0).location = 0x0203;
    // The first send is the shared reverb, which a copy must neither take along nor touch.
    Patch& master = rig.engine.master();
    master.setText(65, "Hall");
    master.store(65, elementIndex::mute, 0.0f);
    master.store(65, elementIndex::item, storedEffectType(0));
    rig.part(5).pendingProgram.store(programWaits | 1);

    EXPECT_FALSE(rig.user.parts.copy(rig.engine, 0, 0, PartCopier::Source::clear));
    EXPECT_FALSE(rig.user.parts.copy(rig.engine, 0, 16, PartCopier::Source::clear));
    EXPECT_EQ(rig.engine.patch(0).name(), "Model");
    ASSERT_TRUE(rig.user.parts.copy(rig.engine, 0, 5, PartCopier::Source::keep));
    const Patch& copy = rig.engine.patch(5);
    EXPECT_EQ(copy.name(), "Model");
    EXPECT_EQ(copy.scenes().at(1)->name, "One");
    EXPECT_EQ(copy.get(0, 23), 0.1f);
    for (int k = 1; k < partRows; ++k) {
        const HostAddress row = decodeHostIndex(k);
        EXPECT_EQ(rig.host(5, k),
                  row.block == HostBlock::insert
                      ? rig.engine.patch(0).get(firstSendSlot + row.slot, hostRow(row).target)
                      : rig.host(0, k))
            << k;
    }
    EXPECT_EQ(rig.host(5, strip::link), 1.0f);
    EXPECT_EQ(copy.get(66, 27), 0.7f);
    EXPECT_EQ(rig.part(5).knobs[2], 0.3f);
    EXPECT_EQ(rig.part(5).location, 0x0203);
    EXPECT_EQ(rig.word(5), 0x0203u);
    EXPECT_EQ(copy.get(65, elementIndex::item), 1.0f);
    EXPECT_EQ(master.text(65), "Hall");
    EXPECT_EQ(rig.displayUpdates, 1);
    EXPECT_EQ(rig.engine.patch(0).name(), "Model");

    ASSERT_TRUE(rig.user.parts.copy(rig.engine, 0, 6, PartCopier::Source::clear));
    EXPECT_EQ(rig.engine.patch(6).name(), "Model");
    EXPECT_EQ(rig.engine.patch(0).name(), "");
    EXPECT_EQ(rig.part(0).location, 0);
    EXPECT_EQ(rig.part(0).knobs[2], 0.5f);
}

// Saving to the library.

TEST_F(Commands, SavingFindsItsPlace) {
    putPatch("Patches/005 Mine/003 Lead.fxp", "Lead");
    putPatch("Patches/110 Old ones/004 Old.FXP", "Old", 0.1f);
    putCombi("Patches/122 Sets/002 Song.fxb", "Violin", 3);
    putPatch("Patches/122 Sets/006 Odd.fxp", "Odd");
    open();
    const std::string pad = "So/ft: \"Pad\"", padAgain = "Overwrite " + pad + " in User?";
    constexpr int userBank = 100 << 8, setup = 16;
    const struct {
        int part;  // or the whole setup
        std::string name;
        std::int32_t from;
        int bank;
        std::vector<int> answers;
        std::int32_t place;
        Lines said;
    } saves[] = {
        {1, "", 0, 100, {}, -1, {}},
        // A bank without a folder is made; no other bank than one of the user's is taken.
        {1, pad, 0, 5, {}, userBank, {}},
        {1, pad, userBank, 119, {1}, userBank, {padAgain}},
        // No: not asked a second time for the same bank, but for another one with such a patch.
        {1, pad, userBank, 100, {0}, userBank + 1, {padAgain}},
        {1, pad, 0, 100, {1}, userBank, {padAgain}},
        {1, pad, 0, 100, {0}, userBank + 2, {padAgain}},
        // A patch of a factory folder may go back there.
        {2, "Lead", 0x0503, 100, {1}, 0x0503, {"Overwrite Lead in Mine?"}},
        {2, "Lead", 0x0503, 0, {0}, userBank + 3, {"Overwrite Lead in Mine?"}},
        {3, "Elsewhere", 0x7A05, 0, {}, userBank + 4, {}},  // that is no patch's number
        {4, "Near", 0x6E04, 0, {}, 0x6E00, {}},
        {4, "Old", 0, 110, {1}, 0x6E04, {"Overwrite Old in Old ones?"}},
        // Combis.
        {setup, "My song", 0, 100, {}, 121 << 8, {}},
        {setup, "My song", 0, 127, {}, 127 << 8, {}},
        {-1, "Song", 0, 122, {1}, 0x7A02, {"Overwrite Song in Sets?"}},
        {setup, "Odd", 0, 122, {1}, 0x7A06, {"Overwrite Odd in Sets?"}},
        {setup, "", 0, 121, {}, -1, {}},
    };
    int patches = 0, all = 0;
    for (const auto& save : saves) {
        SCOPED_TRACE(testing::Message() << save.name << ' ' << save.place);
        const bool isPatch = save.part >= 0 && save.part < parts;
        if (isPatch) {
            rig.put(save.part, save.name, 0.25f);
            rig.part(save.part).location = save.from;
            rig.part(save.part).pendingProgram.store(programWaits | 7);
        } else {
            rig.access.setProgramName(save.name);
        }
        user.willAnswer(save.answers);
        EXPECT_EQ(rig.user.saver.save(rig.engine, save.part, save.bank), save.place);
        EXPECT_EQ(user.takeSaid(), save.said);
        all += save.place > 0;
        patches += isPatch && save.place > 0;
        EXPECT_EQ(rig.listUpdates, all);
        EXPECT_EQ(rig.displayUpdates, patches);
        if (!isPatch || save.place < 0) continue;
        EXPECT_EQ(rig.part(save.part).location, save.place);
        EXPECT_EQ(rig.word(save.part), static_cast<std::uint32_t>(save.place));
    }
    EXPECT_EQ(files("Patches/100 User"),
              (Lines{"000 So_ft_ _Pad_.fxp", "001 So_ft_ _Pad_.fxp", "002 So_ft_ _Pad_.fxp",
                     "003 Lead.fxp", "004 Elsewhere.fxp"}));
    EXPECT_EQ(nameAt(100, 0), "So_ft_ _Pad_");
    // One file a number, also when it had another kind or spelling.
    EXPECT_EQ(files("Patches/110 Old ones"), (Lines{"000 Near.fxp", "004 Old.FXP"}));
    EXPECT_EQ(files("Patches/122 Sets"), (Lines{"002 Song.fxb", "006 Odd.fxb"}));
    SetupRig reader;
    for (const char* path : {"Patches/110 Old ones/004 Old.FXP", "Patches/005 Mine/003 Lead.fxp"}) {
        ASSERT_TRUE(reader.user.files.read(reader.engine, 0, folder / path));
        EXPECT_EQ(reader.host(0, strip::level), 0.25f) << path;
    }
    EXPECT_EQ(rig.programs.load(rig.engine, 15, 0x7A06, byEditor), 0x7A06);
    EXPECT_EQ(rig.engine.patch(1).name(), pad);
    // A combi that came meanwhile is seen.
    fs::rename(folder / "Patches/121 User/000 My song.fxb",
               folder / "Patches/121 User/000 Other.fxb");
    rig.access.setProgramName("My song");
    EXPECT_EQ(rig.user.saver.save(rig.engine, 16, 121), (121 << 8) + 1);
}

TEST_F(Commands, SavingIsRefusedWithoutAPlace) {
    rig.put(0, "Pad", 0.5f);
    EXPECT_EQ(rig.user.saver.save(rig.engine, 0, 100), -1);  // no library
    EXPECT_EQ(user.takeSaid().size(), 1u);
    file("Patches/100 Full/x");
    for (int i = 0; i < 128; ++i) {
        const std::string digits = std::to_string(1000 + i).substr(1);
        folder.put("Patches/100 Full/" + digits + " P.fxp", "x");
    }
    folder.put("Patches/101 One file.bank", "x");
    open();
    const auto before = files("Patches/100 Full");
    EXPECT_EQ(rig.user.saver.save(rig.engine, 0, 100), -1);
    EXPECT_EQ(rig.user.saver.save(rig.engine, 0, 101), -1);
    EXPECT_EQ(user.takeSaid(), (Lines{"Full is full. Please select another bank",
                                      "One file is full. Please select another bank"}));
    EXPECT_EQ(files("Patches/100 Full"), before);
    EXPECT_EQ(rig.part(0).location, 0);
    EXPECT_EQ(rig.listUpdates, 0);
}

}  // namespace
}  // namespace stratovane
