#include "persistence/library_loader.h"

#include <optional>

#include "content/content_library.h"
#include "engine/multi_setup.h"
#include "persistence/patch_loader.h"

namespace stratovane {

std::int32_t LibraryLoader::load(Engine& engine, int part, std::int32_t location, AskedBy by,
                                 PatchLoader::Mix mix) {
    trace_.write(TraceLevel::patch, "loadPatchFromLibrary(ch%ld, %X)", part + 1, location);
    PartSetup& setup = multi_.part[static_cast<std::size_t>(part)];
    auto named = [this](std::int32_t at) {
        return !library_.programName(bankOf(at), programOf(at)).empty();
    };
    if (location < 0) {
        const std::int32_t step = location - again;  // +1 next, -1 previous
        location = setup.location;
        if (location < 1 || location >= firstCombi) return 0;
        if (step != 0) {
            do location += step;
            while (location >= 1 && location < firstCombi && !named(location));
            if (location < 1 || location >= firstCombi) return 0;
        }
    }
    if (by == AskedBy::editor) setup.bankSelect = bankOf(location);
    if (!named(location)) return 0;
    std::string_view name = library_.programName(bankOf(location), programOf(location));
    constexpr std::string_view marks = " _{}[]";  // for the browser
    if (marks.find(name.front()) != std::string_view::npos) name.remove_prefix(1);

    const std::optional<Bytes> entry =
        library_.itemData(ContentKind::patches, bankOf(location), programOf(location));
    // Whole setups come with the bank reader; until then such a location loads nothing.
    if (!entry || location >= firstCombi) return 0;
    const std::int32_t before = setup.location;
    setup.location = location;
    if (!loader_.load(engine, part, ByteView{*entry},
                      {.libraryBank = bankOf(location),
                       .forMessage = by == AskedBy::message,
                       .mix = mix,
                       .name = name})) {
        setup.location = before;
        return 0;
    }
    multi_.refresh.bump();
    multi_.patchLoaded = true;
    return location;
}

}  // namespace stratovane
