#include "content/content_bank.h"

#include <algorithm>
#include <limits>

#include "content/file_bytes.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "content/wavetable.h"
#include "platform/folder.h"

namespace stratovane {

namespace {

/// Bytes in front of a file's item: the wrapper of program and bank files.
constexpr std::uint64_t wrapperBytes(ItemFile type) {
    constexpr std::uint64_t program = 60, bank = 160;
    return type == ItemFile::patch ? program : type == ItemFile::patchBank ? bank : 0;
}

std::uint32_t folderItemSize(const std::string& path, ItemFile type) {
    if (type == ItemFile::tuning) return tuningItemBytes;
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::uint32_t>(std::min(fileSize(path).value_or(0), most));
}

std::unique_ptr<TuningTable> readTuningFile(const std::string& path) {
    const auto text = readFile(path);
    return text ? readTuningText(ByteView{*text}.text()) : nullptr;
}

}  // namespace

std::unique_ptr<ContentBank> ContentBank::fromFolder(ContentKind kind, int number, std::string name,
                                                     std::string path) {
    auto bank = std::make_unique<ContentBank>(kind, number, std::move(name));
    bank->path_ = std::move(path);
    bank->isFolder_ = true;
    std::vector<FolderEntry> entries;
    listFolder(bank->path_, entries);
    const bool holdsItems = kind == ContentKind::patches || kind == ContentKind::tunings ||
                            kind == ContentKind::phrases;
    if (!holdsItems) return bank;
    bank->itemCount_ = itemsPerBank;
    for (const FolderEntry& entry : entries) {
        const auto found = parseItemEntry(entry.name, kind);
        if (entry.isFolder || !found) continue;
        auto& item = bank->items_[static_cast<std::size_t>(found->number)];
        if (item) continue;
        item = std::make_unique<ContentItem>(kind);
        item->name = found->name;
        item->fileName = entry.name;
        item->type = found->type;
        item->normal.range.size = folderItemSize(bank->path_ + entry.name, found->type);
    }
    return bank;
}

std::unique_ptr<ContentBank> ContentBank::fromFile(ContentKind kind, int number, std::string name,
                                                   std::string path, Trace& trace) {
    auto bank = std::make_unique<ContentBank>(kind, number, std::move(name));
    bank->path_ = std::move(path);
    std::optional<ContentFault> fault;
    BankFile file = readBankFile(bank->path_, fault);
    if (fault)
        trace.write(TraceLevel::warning, "%s, byte %d: %s", bank->path_.c_str(), fault->offset,
                    fault->sentence);
    bank->code_ = file.code;
    bank->secondName_ = std::move(file.secondName);
    bank->itemCount_ = static_cast<int>(file.items.size());
    bank->sharedSlot_ = file.sharedSlot;
    for (std::size_t i = 0; i < std::min<std::size_t>(file.items.size(), itemsPerBank); ++i) {
        auto item = std::make_unique<ContentItem>(kind);
        item->name = std::move(file.items[i].name);
        item->secondName = std::move(file.items[i].secondName);
        item->normal.range = file.items[i].normal;
        item->eco.range = file.items[i].eco;
        bank->items_[i] = std::move(item);
    }
    bank->samples_ = std::vector<ContentSample>(file.samples.size());
    for (std::size_t i = 1; i < file.samples.size(); ++i) bank->samples_[i].range = file.samples[i];
    return bank;
}

void ContentBank::inherit(ContentBank& former) {
    for (std::size_t i = 0; i < items_.size(); ++i) {
        if (!items_[i] || !former.items_[i] || items_[i]->name != former.items_[i]->name) continue;
        former.items_[i]->fileName = items_[i]->fileName;
        former.items_[i]->type = items_[i]->type;
        former.items_[i]->normal.range = items_[i]->normal.range;
        // The former bank keeps the fresh record, so that names handed out stay where they are.
        std::swap(items_[i], former.items_[i]);
    }
    requests = former.requests;
    done = former.done;
    stamp = former.stamp;
}

std::optional<Bytes> ContentBank::itemBytes(int number) const {
    const ContentItem* found = item(number);
    if (found == nullptr || !found->normal.exists()) return std::nullopt;
    if (!isFolder_)
        return readFilePart(path_, found->normal.range.offset, found->normal.range.size);
    const std::string file = path_ + found->fileName;
    if (found->type != ItemFile::tuning) return readFileFrom(file, wrapperBytes(found->type));
    const auto table = readTuningFile(file);
    return table ? std::optional{writeTuningItem(*table)} : std::nullopt;
}

std::unique_ptr<ContentData> ContentBank::load(const ContentItem& item,
                                               const ContentItem::Version& version,
                                               ContentFault& fault) const {
    fault = {0, "the file cannot be read"};
    if (isFolder_)
        return item.type == ItemFile::tuning ? readTuningFile(path_ + item.fileName) : nullptr;
    const auto bytes = readFilePart(path_, version.range.offset, version.range.size);
    if (!bytes) return nullptr;
    switch (kind_) {
        case ContentKind::samples:
            return readSampleSet(*bytes, fault);
        case ContentKind::wavetables:
            return readWavetable(*bytes, fault);
        case ContentKind::tunings:
            return readTuningItem(*bytes, fault);
        case ContentKind::drawbars:
            return readToneWheels(*bytes, fault);
        case ContentKind::patches:
        case ContentKind::phrases:
            break;
    }
    return nullptr;
}

std::unique_ptr<SampleData> ContentBank::load(const ContentSample& sample,
                                              ContentFault& fault) const {
    fault = {0, "the file cannot be read"};
    auto bytes = readFilePart(path_, sample.range.offset, sample.range.size);
    return bytes ? readSampleData(std::move(*bytes), fault) : nullptr;
}

}  // namespace stratovane
