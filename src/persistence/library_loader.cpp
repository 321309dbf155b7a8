#include "persistence/library_loader.h"

#include <optional>

#include "content/content_library.h"
#include "content/patch_record_layout.h"
#include "engine/multi_setup.h"
#include "persistence/chunk_reader.h"
#include "persistence/patch_loader.h"
#include "persistence/program_word.h"
#include "persistence/stay.h"

namespace stratovane {

namespace {

/// Library files of patches may carry the header of a program file before the record.
bool isPatch(ByteView entry) {
    return entry.at<std::uint8_t>(recordLayout::kind) == 'P' ||
           entry.at<std::uint32_t>(recordLayout::wrapperBytes) == recordLayout::tag;
}

}  // namespace

std::int32_t LibraryLoader::step(int part, std::int32_t step) const {
    std::int32_t location = setup_.multi.part[static_cast<std::size_t>(part)].location;
    const auto inside = [&] { return location >= 1 && location < firstCombi; };
    if (!inside()) return 0;
    if (step != 0) {
        do location += step;
        while (inside() &&
               setup_.library.programName(bankOf(location), programOf(location)).empty());
    }
    return inside() ? location : 0;
}

std::int32_t LibraryLoader::load(Engine& engine, int part, std::int32_t location, AskedBy by,
                                 PatchLoader::Mix mix) {
    setup_.trace.write(TraceLevel::patch, "loadPatchFromLibrary(ch%ld, %X)", part + 1, location);
    const Stay stay{setup_.inside};
    const bool forMessage = by == AskedBy::message;
    if (location < 0) {
        location = step(part, location - again);  // +1 next, -1 previous
        if (location == 0) return 0;
    }
    const bool loaded = loadEntry(engine, part, location, forMessage, mix);
    if (forMessage)
        settleProgram(setup_.multi.part[static_cast<std::size_t>(part)],
                      static_cast<std::uint32_t>(location));
    if (forMessage && location >= firstCombi)
        for (PartSetup& setup : setup_.multi.part) settleProgram(setup, noProgram);
    if (!loaded) return 0;
    setup_.multi.refresh.bump();
    setup_.multi.patchLoaded = true;
    return location;
}

bool LibraryLoader::loadEntry(Engine& engine, int part, std::int32_t location, bool forMessage,
                              PatchLoader::Mix mix) {
    PartSetup& setup = setup_.multi.part[static_cast<std::size_t>(part)];
    const int bank = bankOf(location), program = programOf(location);
    if (!forMessage) setup.bankSelect = bank;
    std::string_view name = setup_.library.programName(bank, program);
    if (name.empty()) return false;
    constexpr std::string_view marks = " _{}[]";  // for the browser
    if (marks.find(name.front()) != std::string_view::npos) name.remove_prefix(1);
    const std::optional<Bytes> entry = setup_.library.itemData(ContentKind::patches, bank, program);
    if (!entry) return false;

    const std::int32_t before = setup.location;
    setup.location = location;
    if (isPatch(*entry)) {
        if (loader_.load(
                engine, part, ByteView{*entry},
                {.libraryBank = bank, .forMessage = forMessage, .mix = mix, .name = name})) {
            if (!forMessage) overrideProgram(setup);
            return true;
        }
    } else if (chunks_.read(engine, *entry, {.part = part, .forMessage = forMessage})) {
        setup_.setProgramName(name);
        return true;
    }
    setup.location = before;
    return false;
}

}  // namespace stratovane
