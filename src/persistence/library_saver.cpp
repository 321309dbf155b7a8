#include "persistence/library_saver.h"

#include <algorithm>
#include <filesystem>

#include "content/content_library.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "persistence/message.h"
#include "persistence/program_file_commands.h"
#include "persistence/program_word.h"
#include "persistence/stay.h"

namespace stratovane {

namespace {

constexpr int firstPatchBank = 100, usualCombiBank = 121, noBank = -1;
constexpr std::int32_t notStored = -1;
constexpr std::string_view newBankName = "User";

constexpr bool isUserPatchBank(int bank) { return bank >= firstPatchBank && bank < firstCombiBank; }
constexpr bool isCombiBank(int bank) { return bank >= firstCombiBank && bank < banksPerKind; }
constexpr std::int32_t locationOf(int bank, int program) { return bank << 8 | program; }

/// A name as files can have it; the library knows no other.
std::string fileName(std::string_view name) {
    constexpr std::string_view forbidden = "/\\:*?\"<>|";
    std::string clean{name};
    for (char& c : clean) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || code == 0x7F || forbidden.find(c) != forbidden.npos) c = '_';
    }
    return clean;
}

}  // namespace

std::int32_t LibrarySaver::save(Engine& engine, int part, int bank) {
    const Stay stay{setup_.inside};
    return part >= 0 && part < parts ? savePatch(engine, part, bank) : saveCombi(engine, bank);
}

std::int32_t LibrarySaver::savePatch(Engine& engine, int part, int bank) {
    const std::string_view name = engine.patch(part).name();
    if (name.empty()) return notStored;
    PartSetup& setup = setup_.multi.part[static_cast<std::size_t>(part)];
    const std::int32_t own = setup.location;
    const int ownBank = own > 0 && own < firstCombi ? bankOf(own) : noBank;

    std::optional<std::int32_t> place;
    int declined = noBank;
    const ContentBank* cameFrom = setup_.library.bank(ContentKind::patches, ownBank);
    if (cameFrom != nullptr && cameFrom->isFolder() &&
        fileName(setup_.library.programName(ownBank, programOf(own))) == fileName(name)) {
        if (mayOverwrite(name, ownBank))
            place = own;
        else
            declined = ownBank;
    }
    if (!place)
        place = choosePlace(isUserPatchBank(bank) ? bank : std::max(ownBank, firstPatchBank), name,
                            declined);
    if (!place) return notStored;
    const std::string before =
        setup_.library.itemPath(ContentKind::patches, bankOf(*place), programOf(*place));
    const std::string path = filePath(*place, name);
    if (!files_.writePreset(engine, part, path)) return notStored;
    readBankAgain(*place, path, before);
    setup.location = *place;
    overrideProgram(setup);
    setup_.listener.partsChanged();
    return *place;
}

std::int32_t LibrarySaver::saveCombi(Engine& engine, int bank) {
    const std::string name{setup_.programName.data()};
    if (name.empty()) return notStored;
    if (!isCombiBank(bank)) bank = usualCombiBank;
    setup_.library.rescan(ContentKind::patches, bank, newBankName);
    const auto place = choosePlace(bank, name, noBank);
    if (!place) return notStored;
    const std::string before =
        setup_.library.itemPath(ContentKind::patches, bank, programOf(*place));
    const std::string path = filePath(*place, name);
    if (!files_.writeBank(engine, path)) return notStored;
    readBankAgain(*place, path, before);
    return *place;
}

bool LibrarySaver::mayOverwrite(std::string_view name, int bank) const {
    return ask("Overwrite " + std::string{name} + " in " +
               std::string{setup_.library.bankName(bank)} + "?");
}

std::string LibrarySaver::folderOf(int newBank) const {
    return setup_.library.itemPath(ContentKind::patches, ContentLibrary::whole,
                                   ContentLibrary::whole) +
           printed("%.3d %s", newBank, newBankName);
}

void LibrarySaver::prepareBank(int bank) {
    ContentLibrary& library = setup_.library;
    if (library.bank(ContentKind::patches, bank) != nullptr || library.root().empty()) return;
    std::error_code failed;  // told when the bank is not there afterwards
    std::filesystem::create_directories(folderOf(bank), failed);
    library.rescan(ContentKind::patches, bank, newBankName);
}

std::optional<std::int32_t> LibrarySaver::choosePlace(int bank, std::string_view name,
                                                      int declinedBank) {
    prepareBank(bank);
    const ContentLibrary& library = setup_.library;
    const std::string wanted = fileName(name);
    int firstEmpty = itemsPerBank, firstSame = itemsPerBank;
    for (int program = itemsPerBank; program-- > 0;) {
        const std::string_view there = library.programName(bank, program);
        if (there.empty()) firstEmpty = program;
        if (fileName(there) == wanted) firstSame = program;
    }
    const ContentBank* found = library.bank(ContentKind::patches, bank);
    if (found == nullptr) {
        tell("Error writing " + folderOf(bank));
        return std::nullopt;
    }
    // A bank that is one file has no room for others.
    if (found->isFolder()) {
        if (firstSame < itemsPerBank && bank != declinedBank && mayOverwrite(name, bank))
            return locationOf(bank, firstSame);
        if (firstEmpty < itemsPerBank) return locationOf(bank, firstEmpty);
    }
    tell(std::string{library.bankName(bank)} + " is full. Please select another bank");
    return std::nullopt;
}

std::string LibrarySaver::filePath(std::int32_t location, std::string_view name) const {
    const ContentLibrary& library = setup_.library;
    const int bank = bankOf(location), program = programOf(location);
    const ContentBank* found = library.bank(ContentKind::patches, bank);
    const std::string_view extension = extensionOf(ContentKind::patches, bank);
    if (const ContentItem* there = found != nullptr ? found->item(program) : nullptr)
        if ((there->type == ItemFile::patchBank) == isCombiBank(bank))
            return library.itemPath(ContentKind::patches, bank, program);
    return library.itemPath(ContentKind::patches, bank, ContentLibrary::whole) +
           printed("%.3d ", program) + fileName(name) + std::string{extension};
}

void LibrarySaver::readBankAgain(std::int32_t location, const std::string& written,
                                 const std::string& before) {
    std::error_code failed;
    // What was overwritten under another file name must not stand in the way of the new one.
    if (before != written && std::filesystem::exists(before, failed) &&
        !std::filesystem::equivalent(before, written, failed))
        std::filesystem::remove(before, failed);
    setup_.library.rescan(ContentKind::patches, bankOf(location), newBankName);
    setup_.listener.libraryChanged();
}

}  // namespace stratovane
