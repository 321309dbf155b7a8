#include "persistence/library_loader.h"

#include "content/content_library.h"
#include "engine/multi_setup.h"

namespace stratovane {

std::int32_t LibraryLoader::load(int part, std::int32_t location, AskedBy by) {
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
    // Reading a library entry comes with the library: until then no location has a name.
    return 0;
}

}  // namespace stratovane
