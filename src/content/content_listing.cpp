#include "content/content_listing.h"

#include "base/text_out.h"
#include "content/content_bank.h"

namespace stratovane {

namespace {

template <class... A>
void append(std::string& out, std::string_view format, A... arguments) {
    char line[1024];  // names have at most 255 characters
    TextOut text{line};
    text.print(format, arguments...);
    out += text.view();
}

void appendBank(std::string& out, const ContentBank& bank) {
    append(out, "  %.3d %s\t\t%s", bank.number(), std::string_view{bank.name()},
           std::string_view{bank.secondName()});
    append(out, "\t(%d items, %d samples)\n", bank.itemCount(), bank.sampleCount());
    for (int i = 0; i < itemsPerBank; ++i)
        if (const ContentItem* item = bank.item(i); item != nullptr && !item->name.empty())
            append(out, "    %.3d %s\t\t%s\n", i, std::string_view{item->name},
                   std::string_view{item->secondName});
    out += '\n';
}

}  // namespace

std::string contentListing(std::span<const BankList, contentKinds> kinds) {
    std::string out;
    int allItems = 0, allSamples = 0;
    for (std::size_t k = 0; k < kinds.size(); ++k) {
        out += contentKindFacts[k].title;
        int items = 0;
        for (const ContentBank* bank : kinds[k]) {
            if (bank == nullptr) continue;
            appendBank(out, *bank);
            items += bank->itemCount();
            allSamples += bank->sampleCount();
        }
        append(out, "  (%d items of this type)\n\n", items);
        allItems += items;
    }
    append(out, "Total %d items + %d samples\n", allItems, allSamples);
    return out;
}

}  // namespace stratovane
