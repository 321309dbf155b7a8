#include "bank_check.h"

#include <map>

#include "content/bank_file.h"
#include "content/bank_file_layout.h"
#include "content/content_data.h"
#include "content/file_bytes.h"
#include "content/sample_set.h"
#include "item_check.h"

namespace stratovane::content_tool {

namespace {

constexpr std::uint64_t zoneBytes = 64, zoneSampleAt = 8, zoneLengthAt = 16, zoneLoopAt = 20;

class BankCheck {
  public:
    BankCheck(const std::string& path, ContentKind kind, Faults& faults)
        : path_{path}, kind_{kind}, faults_{faults} {}

    void run() {
        std::optional<ContentFault> fault;
        bank_ = readBankFile(path_, fault);
        if (fault) return faults_.add(path_, fault->offset, fault->sentence);
        if (bank_.items.empty()) faults_.add(path_, 0, "the bank has no items");
        if (bank_.items.size() > itemsPerBank)
            faults_.add(path_, bankFileLayout::headerBytes,
                        "items from number 128 on cannot be chosen");
        for (std::size_t i = 1; i < bank_.samples.size(); ++i) checkSample(i);
        for (const auto& item : bank_.items)
            for (const FileRange range : {item.normal, item.eco})
                if (range.size != 0) checkItem(range);
    }

  private:
    std::optional<Bytes> read(FileRange range) {
        auto bytes = readFilePart(path_, range.offset, range.size);
        if (!bytes) faults_.add(path_, range.offset, "what the tables tell leaves the file");
        return bytes;
    }

    void checkSample(std::size_t number) {
        const FileRange range = bank_.samples[number];
        if (range.size == 0) return;
        auto bytes = read(range);
        if (!bytes) return;
        ContentFault fault;
        if (const auto sample = readSampleData(std::move(*bytes), fault))
            frames_[static_cast<std::int32_t>(number)] = sample->frames();
        else
            faults_.add(path_, range.offset + fault.offset, fault.sentence);
    }

    void checkItem(FileRange range) {
        const auto bytes = read(range);
        if (!bytes) return;
        if (const auto fault = judgeItem(kind_, *bytes))
            faults_.add(path_, range.offset + fault->offset, fault->sentence);
        else if (kind_ == ContentKind::samples)
            checkZones(range, *bytes);
    }

    void checkZones(FileRange range, const Bytes& bytes) {
        ContentFault ignored;
        const auto set = readSampleSet(bytes, ignored);
        std::int32_t before = 0;
        std::uint64_t at = range.offset;
        for (const Zone& zone : set->zones) {
            if (zone.key < before)
                faults_.add(path_, at, "the zones are not in order of their keys");
            before = zone.key;
            checkZone(zone, at);
            at += zoneBytes;
        }
    }

    void checkZone(const Zone& zone, std::uint64_t at) {
        if (zone.sampleNumber == 0) return;
        const auto number = static_cast<std::size_t>(zone.sampleNumber);
        if (zone.sampleNumber < 0 || number >= bank_.samples.size() ||
            bank_.samples[number].size == 0)
            return faults_.add(path_, at + zoneSampleAt, "the bank has no such sample");
        const auto frames = frames_.find(zone.sampleNumber);
        if (frames == frames_.end()) return;  // damaged, which was told
        if (zone.frames < 0 || zone.frames > frames->second)
            faults_.add(path_, at + zoneLengthAt, "the zone's length leaves its sample");
        if (zone.loopFrames < 0 || zone.loopFrames > zone.frames)
            faults_.add(path_, at + zoneLoopAt, "the zone's loop leaves its length");
    }

    const std::string path_;
    const ContentKind kind_;
    Faults& faults_;
    BankFile bank_;
    std::map<std::int32_t, std::int32_t> frames_;  // of whole samples, by number
};

}  // namespace

void checkBankFile(const std::string& path, ContentKind kind, Faults& faults) {
    BankCheck{path, kind, faults}.run();
}

}  // namespace stratovane::content_tool
