#include "content/bank_file_writer.h"

#include <limits>
#include <map>

#include "content/bank_file_layout.h"

namespace stratovane {

namespace {

namespace layout = bankFileLayout;

/// The names area while it grows; equal names share a string.
class Names {
  public:
    explicit Names(const std::string& secondName) {
        append("");          // offset 0: the empty string
        append(secondName);  // its characters begin at byte 3
    }
    std::int32_t offsetOf(const std::string& name) {
        if (name.empty()) return 0;
        const auto [place, isNew] = offsets_.try_emplace(name, out_.size());
        if (isNew) append(name);
        return static_cast<std::int32_t>(place->second);
    }
    Bytes take() { return out_.take(); }

  private:
    void append(std::string_view text) {
        text = text.substr(0, std::numeric_limits<std::uint8_t>::max());
        out_.put(static_cast<std::uint8_t>(text.size()));
        out_.text(text, text.size() + 1);
    }
    ByteWriter out_;
    std::map<std::string, std::size_t> offsets_;
};

/// Hands out the room behind the data block, each piece on a multiple of 16.
class Pieces {
  public:
    explicit Pieces(std::size_t start) : end_{start} {}
    void place(ByteWriter& block, std::size_t at, const Bytes& bytes) {
        if (bytes.empty()) return;
        end_ = (end_ + 15) / 16 * 16;
        block.putAt(at, static_cast<std::int32_t>(end_));
        block.putAt(at + 4, static_cast<std::int32_t>(bytes.size()));
        end_ += bytes.size();
    }
    std::size_t end() const { return end_; }

  private:
    std::size_t end_;
};

void appendPiece(ByteWriter& file, const Bytes& bytes) {
    if (bytes.empty()) return;
    file.zeros((16 - file.size() % 16) % 16);
    file.append(bytes);
}

}  // namespace

Bytes writeBankFile(const BankFileSource& bank) {
    std::uint64_t total = layout::headerBytes;
    for (const auto& item : bank.items) total += item.normal.size() + item.eco.size() + 1024;
    for (const auto& sample : bank.samples) total += sample.size() + 64;
    if (total + bank.sharedTable.size() > std::numeric_limits<std::int32_t>::max()) return {};

    Names names{bank.secondName};
    const std::size_t sampleTableAt = layout::itemsAt + layout::itemBytes * bank.items.size();
    const std::size_t sampleCount = bank.samples.empty() ? 0 : bank.samples.size() + 1;
    ByteWriter block;
    block.fillTo(sampleTableAt + layout::sampleBytes * sampleCount);
    block.putAt(layout::itemCountAt, static_cast<std::int32_t>(bank.items.size()));
    block.putAt(layout::samplesAt, static_cast<std::int32_t>(sampleTableAt));
    block.putAt(layout::sampleCountAt, static_cast<std::int32_t>(sampleCount));
    block.putAt(layout::namesAt, static_cast<std::int32_t>(block.size()));
    for (std::size_t i = 0; i < bank.items.size(); ++i) {
        const std::size_t at = layout::itemsAt + layout::itemBytes * i;
        block.putAt(at, names.offsetOf(bank.items[i].name));
        block.putAt(at + 4, names.offsetOf(bank.items[i].secondName));
    }
    block.append(names.take());
    const std::size_t sharedAt = block.size();
    block.append(bank.sharedTable);

    Pieces pieces{layout::headerBytes + block.size()};
    for (std::size_t i = 0; i < bank.items.size(); ++i) {
        const std::size_t at = layout::itemsAt + layout::itemBytes * i;
        pieces.place(block, at + layout::itemNormalAt, bank.items[i].normal);
        pieces.place(block, at + layout::itemEcoAt, bank.items[i].eco);
    }
    for (std::size_t i = 0; i < bank.samples.size(); ++i)
        pieces.place(block, sampleTableAt + layout::sampleBytes * (i + 1) + layout::sampleRangeAt,
                     bank.samples[i]);

    ByteWriter file;
    file.text(layout::magic[0], 4);
    file.putAt(layout::markAt, 'W');
    file.putAt(layout::codeAt, bank.code);
    file.putAt(layout::formatAt, std::int8_t{1});
    file.putAt(layout::sharedTableAt,
               static_cast<std::int32_t>(bank.sharedTable.empty() ? 0 : sharedAt));
    file.putAt(layout::blockBytesAt, static_cast<std::int32_t>(block.size()));
    file.append(block.take());
    for (const auto& item : bank.items) {
        appendPiece(file, item.normal);
        appendPiece(file, item.eco);
    }
    for (const auto& sample : bank.samples) appendPiece(file, sample);
    return file.take();
}

}  // namespace stratovane
