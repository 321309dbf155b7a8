// What the library answers: names, paths, data, references, search.

#include "content/content_library.h"

#include <algorithm>

#include "base/text_out.h"
#include "base/trace.h"
#include "content/content_listing.h"
#include "content/content_search.h"
#include "content/file_bytes.h"

namespace stratovane {

namespace {

/// Kinds whose items are held in memory.
constexpr bool isResidentKind(ContentKind kind) {
    return kind >= ContentKind::samples && kind <= ContentKind::drawbars;
}
constexpr bool isReleased(ContentKind kind) {
    return kind == ContentKind::samples || kind == ContentKind::wavetables;
}

std::string numbered(int number) {
    char text[16];
    TextOut out{text};
    out.print("%.3d ", number);
    return std::string{out.view()};
}

}  // namespace

ContentBank* ContentLibrary::find(ContentKind kind, int bank) const {
    if (!isKind(kind) || !isLocationNumber(bank)) return nullptr;
    return banks_[indexOf(kind)][static_cast<std::size_t>(bank)].get();
}

const ContentBank* ContentLibrary::bank(ContentKind kind, int bank) const {
    return find(kind, bank);
}

std::string_view ContentLibrary::bankName(ContentKind kind, int bank) const {
    const ContentBank* found = find(kind, bank);
    return found != nullptr ? std::string_view{found->name()} : std::string_view{};
}

std::string_view ContentLibrary::itemName(ContentKind kind, int bank, int item) const {
    if (item == whole) return bankName(kind, bank);
    const ContentBank* found = find(kind, bank);
    const ContentItem* named = found != nullptr ? found->item(item) : nullptr;
    return named != nullptr ? std::string_view{named->name} : std::string_view{};
}

std::string ContentLibrary::bankAndItemName(ContentKind kind, int bank, int item) const {
    std::string text{bankName(kind, bank)};
    text += ": ";
    text += itemName(kind, bank, item);
    return text;
}

std::string ContentLibrary::itemPath(ContentKind kind, int bank, int item) const {
    if (static_cast<int>(kind) == whole) return root_;
    if (!isKind(kind)) return {};
    if (bank == whole) return root_ + std::string{factsOf(kind).folder};
    const ContentBank* found = find(kind, bank);
    if (found == nullptr) return {};
    if (item == whole) return found->path();
    if (!found->isFolder() || !isLocationNumber(item)) return {};
    if (const ContentItem* there = found->item(item)) return found->path() + there->fileName;
    return found->path() + numbered(item) + std::string{extensionOf(kind, bank)};
}

std::optional<Bytes> ContentLibrary::itemData(ContentKind kind, int bank, int item) const {
    const ContentBank* found = find(kind, bank);
    return found != nullptr ? found->itemBytes(item) : std::nullopt;
}

void ContentLibrary::traceItem(std::string_view verb, ContentKind kind, int bank, int item,
                               bool eco) {
    if (!traces_) return;
    const std::string name = bankAndItemName(kind, bank, item);
    trace_.write(TraceLevel::content, "%s %d.%d.%d%s %s", verb, static_cast<int>(kind), bank, item,
                 eco ? "e" : "", std::string_view{name});
}

void ContentLibrary::askFor(ContentBank& bank) {
    ++bank.requests;
    ++changes_;
}

const ItemSlot* ContentLibrary::acquire(ContentKind kind, int bank, int item, bool eco) {
    ContentBank* found = isResidentKind(kind) ? find(kind, bank) : nullptr;
    ContentItem* wanted = found != nullptr ? found->item(item) : nullptr;
    if (wanted == nullptr || !wanted->normal.exists()) return nullptr;
    traceItem("load", kind, bank, item, eco);
    ContentItem::Version& version = wanted->version(eco);
    version.references = version.references + 1;
    if (version.references == 1) askFor(*found);
    found->stamp = loader_.pass + 1;
    return &version.slot;
}

void ContentLibrary::release(ContentKind kind, int bank, int item, bool eco) {
    ContentBank* found = isReleased(kind) ? find(kind, bank) : nullptr;
    ContentItem* given = found != nullptr ? found->item(item) : nullptr;
    if (given == nullptr || !given->normal.exists()) return;
    traceItem("unload", kind, bank, item, eco);
    ContentItem::Version& version = given->version(eco);
    found->stamp = loader_.pass + 1;
    if (version.references == 0) return;
    version.references = version.references - 1;
    if (version.references == 0) askFor(*found);
}

void ContentLibrary::release(ContentId id) {
    release(id.kind(), id.item().bank(), id.item().item(), id.item().eco());
}

const ItemSlot* ContentLibrary::request(ContentKind kind, PackedItem wanted, PackedItem old,
                                        WaitingReleases& waiting, std::uint32_t stamp) {
    const ItemSlot* slot =
        wanted.isItem() ? acquire(kind, wanted.bank(), wanted.item(), wanted.eco()) : nullptr;
    if (old.isItem()) waiting.add({ContentId::of(kind, old), stamp});
    return slot;
}

const SampleData* ContentLibrary::sampleData(ContentKind kind, int bank, std::int32_t number) {
    ContentBank* found = find(kind, bank);
    const ContentSample* sample = found != nullptr ? found->sample(number) : nullptr;
    return sample != nullptr ? sample->slot.read() : nullptr;
}

BankList ContentLibrary::list(ContentKind kind) const {
    BankList all{};
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = banks_[indexOf(kind)][i].get();
    return all;
}

std::int32_t ContentLibrary::search(std::string_view text) {
    searchResults_ = searchPatches(list(ContentKind::patches), sharedTables_, text);
    return static_cast<std::int32_t>(searchResults_.size());
}

bool ContentLibrary::writeListing(const std::string& path) const {
    std::array<BankList, contentKinds> kinds;
    for (std::size_t i = 0; i < kinds.size(); ++i) kinds[i] = list(static_cast<ContentKind>(i + 1));
    const std::string text = contentListing(kinds);
    return writeFile(path,
                     std::span{reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

}  // namespace stratovane
