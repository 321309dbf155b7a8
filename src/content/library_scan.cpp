// The library's way from folders to banks, and back to nothing.

#include "base/text_out.h"
#include "base/trace.h"
#include "content/content_library.h"
#include "content/entry_names.h"
#include "platform/folder.h"

namespace stratovane {

namespace {

// A shared table of a later kind replaces one of an earlier kind with the same slot.
constexpr ContentKind scanOrder[] = {ContentKind::samples,    ContentKind::patches,
                                     ContentKind::wavetables, ContentKind::drawbars,
                                     ContentKind::tunings,    ContentKind::phrases};

/// Kinds without which there is no library.
constexpr bool makesLibrary(ContentKind kind) {
    return kind != ContentKind::tunings && kind != ContentKind::phrases;
}

std::string withSeparator(std::string_view folder) {
    std::string path{folder};
    if (!path.ends_with('/') && !path.ends_with('\\')) path += '/';
    return path;
}

}  // namespace

void ContentLibrary::scan(ContentKind kind, const std::string& folder, Banks& banks) {
    std::vector<FolderEntry> entries;
    listFolder(folder, entries);
    for (const FolderEntry& entry : entries) {
        const auto found = parseBankEntry(entry.name, entry.isFolder);
        if (!found) continue;
        auto& bank = banks[static_cast<std::size_t>(found->number)];
        if (bank) continue;  // the first entry has the number
        std::string path = folder + entry.name, name{found->name};
        bank = entry.isFolder
                   ? ContentBank::fromFolder(kind, found->number, std::move(name), path + "/")
                   : ContentBank::fromFile(kind, found->number, std::move(name), path, trace_);
    }
}

void ContentLibrary::bury(std::unique_ptr<ContentBank> bank) {
    if (bank) former_.push_back(std::move(bank));
}

bool ContentLibrary::open(std::string_view folder, Tracing tracing) {
    if (folder.empty()) return false;
    const std::string root = withSeparator(folder);
    AllBanks scanned;
    bool found = false;
    std::uint32_t sharedTables = 0;
    for (const ContentKind kind : scanOrder) {
        Banks& banks = scanned[indexOf(kind)];
        scan(kind, root + std::string{factsOf(kind).folder}, banks);
        for (const auto& bank : banks) {
            if (!bank) continue;
            found = found || makesLibrary(kind);
            if (bank->hasSharedTable()) sharedTables |= 1u << bank->sharedSlot();
        }
    }
    traces_ = tracing == Tracing::on;
    if (!found && traces_)
        trace_.write(TraceLevel::content, "Content not found: %s", std::string_view{root});
    if (!found && found_) return false;
    for (Banks& banks : banks_)
        for (auto& bank : banks) bury(std::move(bank));
    banks_ = std::move(scanned);
    sharedTables_ = sharedTables;
    root_ = root;
    found_ = found;
    if (traces_) writeListing(root_ + "content.txt");
    return found;
}

void ContentLibrary::close() {
    disposing_.clear();
    for (Banks& banks : banks_)
        for (auto& bank : banks) bank.reset();
    former_.clear();
    searchResults_.clear();
    root_.clear();
    found_ = false;
    sharedTables_ = 0;
    loader_.memoryInUse = 0;
    done_ = changes_;
}

bool ContentLibrary::rescan(ContentKind kind, int number, std::string_view name) {
    const bool hasItems = kind == ContentKind::patches || kind == ContentKind::tunings ||
                          kind == ContentKind::phrases;
    if (!hasItems || !isLocationNumber(number)) return false;
    auto& bank = banks_[indexOf(kind)][static_cast<std::size_t>(number)];
    std::string path, bankName;
    if (bank) {
        if (!bank->isFolder()) return false;
        path = bank->path();
        bankName = bank->name();
    } else {
        if (kind != ContentKind::patches || root_.empty()) return false;
        char entry[64];
        TextOut out{entry};
        out.print("%.3d %s", number, name);
        if (!parseBankEntry(out.view(), /*isFolder=*/true)) return false;
        bankName = name;
        path = root_ + std::string{factsOf(kind).folder} + std::string{out.view()} + "/";
        std::vector<FolderEntry> entries;
        if (!listFolder(path, entries)) return false;
    }
    auto fresh = ContentBank::fromFolder(kind, number, std::move(bankName), std::move(path));
    if (bank) fresh->inherit(*bank);
    bury(std::move(bank));
    bank = std::move(fresh);
    return true;
}

}  // namespace stratovane
