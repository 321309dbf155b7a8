#include "content/bank_file.h"

#include <algorithm>

#include "content/bank_file_layout.h"
#include "content/file_bytes.h"

namespace stratovane {

namespace {

namespace layout = bankFileLayout;

bool isBankHeader(ByteView header) {
    for (std::size_t i = 0; i < 3; ++i) {
        const auto byte = header.at<char>(i);
        if (byte != layout::magic[0][i] && byte != layout::magic[1][i]) return false;
    }
    return header.at<char>(layout::markAt) == 'W' &&
           header.at<std::int8_t>(layout::formatAt) <= layout::newestFormat;
}

/// The string whose length byte stands at an offset; empty when it does not lie inside.
std::string_view stringAt(ByteView names, std::int64_t offset) {
    if (offset <= 0) return {};
    const auto at = static_cast<std::uint64_t>(offset);
    const auto length = names.at<std::uint8_t>(at);
    if (!names.has(at + 1, length)) return {};
    return names.part(at + 1, length).terminatedText();
}

/// Whether a NUL ends the string whose length byte stands at an offset, and no control character is
/// in it.
bool isString(ByteView names, std::uint64_t offset) {
    const auto length = names.at<std::uint8_t>(offset);
    if (!names.has(offset + 1, length + std::uint64_t{1})) return false;
    const std::string_view text = names.part(offset + 1, length).text();
    return names.at<char>(offset + 1 + length) == '\0' &&
           std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

/// Writers disagree whether byte 3 is the first character or the length byte.
std::string_view secondNameOf(ByteView names) {
    for (const std::size_t lengthAt : {layout::secondNameAt - 1, layout::secondNameAt})
        if (isString(names, lengthAt)) return stringAt(names, static_cast<int>(lengthAt));
    return names.from(layout::secondNameAt).terminatedText();
}

FileRange rangeAt(ByteView entry, std::size_t offset) {
    const auto start = entry.at<std::int32_t>(offset), size = entry.at<std::int32_t>(offset + 4);
    if (start < 0 || size <= 0) return {};
    return {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(size)};
}

/// Whether a table of `count` entries from an offset lies in the block.
bool holds(ByteView block, std::int64_t offset, std::int64_t count, std::size_t entryBytes) {
    return offset >= 0 && count >= 0 &&
           block.has(static_cast<std::uint64_t>(offset),
                     static_cast<std::uint64_t>(count) * entryBytes);
}

void readSharedTable(ByteView block, std::int64_t offset, BankFile& bank) {
    if (offset <= 0 || static_cast<std::uint64_t>(offset) >= block.size()) return;
    const ByteView table = block.from(static_cast<std::uint64_t>(offset));
    const int slot = table.at<std::uint8_t>(0);
    if (slot >= layout::sharedSlots) return;
    bank.sharedSlot = slot;
    bank.sharedTable.assign(table.data(), table.data() + table.size());
}

}  // namespace

BankFile readBankFile(const std::string& path, std::optional<ContentFault>& fault) {
    BankFile bank;
    auto refuse = [&](std::uint64_t offset, const char* sentence) {
        fault = ContentFault{offset, sentence};
        return BankFile{};
    };
    const auto header = readFilePart(path, 0, layout::headerBytes);
    if (!header || !isBankHeader(*header)) return refuse(0, "not a bank file");
    const ByteView head{*header};
    const auto blockBytes = head.at<std::int32_t>(layout::blockBytesAt);
    const auto data = blockBytes < 0 ? std::nullopt
                                     : readFilePart(path, layout::headerBytes,
                                                    static_cast<std::uint64_t>(blockBytes));
    if (!data) return refuse(layout::blockBytesAt, "the data block leaves the file");
    const ByteView block{*data};
    const std::int64_t items = block.at<std::int32_t>(layout::itemCountAt),
                       names = block.at<std::int32_t>(layout::namesAt),
                       samples = block.at<std::int32_t>(layout::samplesAt),
                       sampleCount = block.at<std::int32_t>(layout::sampleCountAt);
    if (!holds(block, layout::itemsAt, items, layout::itemBytes))
        return refuse(layout::headerBytes, "the items leave the data block");
    if (sampleCount != 0 && !holds(block, samples, sampleCount, layout::sampleBytes))
        return refuse(layout::headerBytes + layout::samplesAt, "the samples leave the data block");
    if (!holds(block, names, 0, 1))
        return refuse(layout::headerBytes + layout::namesAt, "the names leave the data block");

    bank.code = head.at<std::int8_t>(layout::codeAt);
    const ByteView area = block.from(static_cast<std::uint64_t>(names));
    bank.secondName = secondNameOf(area);
    for (std::int64_t i = 0; i < items; ++i) {
        const ByteView entry = block.part(
            layout::itemsAt + static_cast<std::uint64_t>(i) * layout::itemBytes, layout::itemBytes);
        bank.items.push_back({std::string{stringAt(area, entry.at<std::int32_t>(0))},
                              std::string{stringAt(area, entry.at<std::int32_t>(4))},
                              rangeAt(entry, layout::itemNormalAt),
                              rangeAt(entry, layout::itemEcoAt)});
    }
    for (std::int64_t i = 0; i < sampleCount; ++i)
        bank.samples.push_back(
            rangeAt(block.part(static_cast<std::uint64_t>(samples) +
                                   static_cast<std::uint64_t>(i) * layout::sampleBytes,
                               layout::sampleBytes),
                    layout::sampleRangeAt));
    readSharedTable(block, head.at<std::int32_t>(layout::sharedTableAt), bank);
    return bank;
}

}  // namespace stratovane
