#include <cstdio>
#include <iostream>

#include "base/trace.h"
#include "commands.h"
#include "content/content_library.h"
#include "content/content_listing.h"
#include "content/phrase_import.h"
#include "content/tuning_table.h"
#include "output_file.h"
#include "scala.h"
#include "shared/windows_1252.h"

namespace stratovane::content_tool {

namespace {

void toStandardError(const char* line) { std::fputs(line, stderr); }

void open(ContentLibrary& library, const std::string& folder) {
    if (!library.open(folder)) throw Failure{Exit::input, "there is no content in " + folder};
}

}  // namespace

void listContent(const std::string& folder) {
    Trace trace{toStandardError};
    ContentLibrary library{trace};
    open(library, folder);
    std::array<BankList, contentKinds> kinds{};
    for (std::size_t k = 0; k < kinds.size(); ++k)
        for (int bank = 0; bank < banksPerKind; ++bank)
            kinds[k][static_cast<std::size_t>(bank)] =
                library.bank(static_cast<ContentKind>(k + 1), bank);
    std::cout << utf8FromWindows1252(contentListing(kinds));
}

void findPatches(const std::string& folder, const std::vector<std::string>& words) {
    Trace trace{toStandardError};
    ContentLibrary library{trace};
    open(library, folder);
    std::string text;
    for (const std::string& word : words) text += windows1252FromUtf8(word).value_or(word) + " ";
    library.search(text);
    for (const std::uint16_t found : library.searchResults()) {
        const int bank = found >> 8, item = found & 255;
        if (bank == 0) continue;  // never searched: stands for nothing found
        char number[16];
        std::snprintf(number, sizeof number, "%03d.%03d ", bank, item);
        std::cout << number
                  << utf8FromWindows1252(library.bankAndItemName(ContentKind::patches, bank, item))
                  << '\n';
    }
}

void makeTuning(const std::string& scale, const std::string& mapping, const std::string& out) {
    writeWhole(out, writeTuningText(*tuningFromScala(scale, mapping)));
}

void makePhrase(const std::string& midiFile, const std::string& out) {
    Trace trace{toStandardError};
    const auto scene = importPhrase(midiFile, trace);
    if (!scene) throw Failure{Exit::input, midiFile + " has no note, controller or pitch bend"};
    writeWhole(out, writeSceneRecord(*scene));
}

}  // namespace stratovane::content_tool
