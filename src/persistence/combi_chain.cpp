#include "persistence/combi_chain.h"

#include <fstream>

#include "content/content_library.h"
#include "content/file_bytes.h"
#include "engine/multi_setup.h"
#include "persistence/library_loader.h"
#include "persistence/message.h"
#include "persistence/stay.h"
#include "settings/number_text.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

constexpr int slotCount = 128;
constexpr std::string_view header = "SV2//COMBICHAIN";

constexpr bool isSlot(int slot) { return slot >= 0 && slot < slotCount; }

/// The next line with its line end, cut after 63 characters; empty at the end of the file.
std::string takeLine(std::istream& in) {
    constexpr std::size_t longest = 63;
    std::string line;
    char c = 0;
    while (line.size() < longest && !line.ends_with('\n') && in.get(c)) line += c;
    return line;
}

}  // namespace

void CombiChain::changed() {
    setup_.multi.dirty = true;
    setup_.multi.refresh.bump();
}

void CombiChain::set(int slot, std::int32_t location) {
    if (!isSlot(slot)) return;
    setup_.multi.combis.entries[static_cast<std::size_t>(slot)] = location;
    changed();
}

void CombiChain::clear(int slot) { set(slot, CombiTable::none); }

void CombiChain::copy(int from, int to) {
    if (isSlot(from)) set(to, setup_.multi.combis.at(from));
}

void CombiChain::move(int from, int to) {
    if (!isSlot(from) || !isSlot(to) || from == to) return;
    copy(from, to);
    clear(from);
}

std::string CombiChain::label(int slot) const {
    if (!isSlot(slot)) return {};
    const std::string number = printed("%03d ", slot + (setup_.settings.oneBasedNumbers ? 1 : 0));
    const std::int32_t location = setup_.multi.combis.at(slot);
    if (location == CombiTable::none) return number + "Empty slot";
    return number + std::string{setup_.library.programName(bankOf(location), programOf(location))};
}

void CombiChain::select(Engine& engine, int slot) {
    if (!isSlot(slot)) return;
    setup_.multi.combis.current = slot;
    const std::int32_t location = setup_.multi.combis.at(slot);
    if (location != CombiTable::none)
        loader_.load(engine, parts - 1, location, LibraryLoader::AskedBy::editor);
}

void CombiChain::setPreloadMode(int mode) {
    setup_.settings.combiPreload = mode;
    setup_.library.setPreloadMode(mode);
}

std::string CombiChain::defaultPath() const {
    return Settings::asContentLocation(setup_.settings.contentLocation) +
           "Combi chains/unnamed.s2c";
}

bool CombiChain::write(const std::string& path) const {
    const Stay stay{setup_.inside};
    std::string text{header};
    text += '\n';
    for (int slot = 0; slot < slotCount; ++slot) {
        text += std::to_string(setup_.multi.combis.at(slot));
        text += '\n';
    }
    if (replaceFile(path,
                    std::span{reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}))
        return true;
    tell("Error writing " + path);
    return false;
}

bool CombiChain::read(const std::string& path) {
    const Stay stay{setup_.inside};
    if (!path.ends_with(".s2c") || path.ends_with(".fxb.s2c")) {
        setup_.trace.write(TraceLevel::editor, "Extension wrong");
        tell(path + " is not a combi chain");
        return false;
    }
    std::ifstream in{path, std::ios::binary};
    if (!in || !fileSize(path)) {
        tell("Error reading " + path);
        return false;
    }
    std::string line = takeLine(in);
    if (!line.ends_with('\n')) line.clear();
    while (line.ends_with('\n') || line.ends_with('\r')) line.pop_back();
    if (line != header) {
        tell("File Format invalid " + path);
        return false;
    }
    constexpr std::size_t tooShort = 2;  // a single digit and its line end are no location
    for (int slot = 0; slot < slotCount && !(line = takeLine(in)).empty();) {
        if (line.size() <= tooShort) continue;
        if (const auto location = parseInteger(line)) set(slot++, *location);
    }
    changed();
    return true;
}

}  // namespace stratovane
