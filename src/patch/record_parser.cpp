#include "patch/record_parser.h"

#include <optional>

namespace stratovane {

namespace {

namespace layout = recordLayout;

/// Takes piece after piece; the first one that is not there ends it.
class Parser {
  public:
    /// `body` begins at the id word, which lies at `start` of the block.
    Parser(ByteView body, std::uint64_t start, std::uint32_t version) : body_{body}, start_{start} {
        record_.version = version;
    }

    ParsedRecord parse() {
        if (readFixedPart() && readElements() && readSends() && readTail()) return record_;
        return fault_;
    }

  private:
    bool refuse(std::uint64_t at, std::string_view sentence) {
        fault_ = {RecordFault::Kind::damaged, start_ + at, sentence};
        return false;
    }
    bool take(ByteView& piece, std::uint64_t count, std::string_view missing) {
        if (!body_.has(at_, count)) return refuse(at_, missing);
        piece = body_.part(at_, count);
        at_ += count;
        return true;
    }
    template <class T>
    bool take(T& number, std::string_view missing) {
        ByteView piece;
        if (!take(piece, sizeof number, missing)) return false;
        number = piece.at<T>(0);
        return true;
    }

    bool readFixedPart() {
        if (!take(record_.fixedPart, layout::elements - layout::headerBytes,
                  "the texts or global values are cut off"))
            return false;
        constexpr int countAt = layout::elementCount - layout::headerBytes;
        record_.idWord = record_.fixedPart.at<std::uint32_t>(0);
        record_.elementCount = record_.fixedPart.at<std::int32_t>(countAt);
        if (record_.elementCount < 0 || record_.elementCount > maxElements)
            return refuse(countAt, "the number of elements is not 0 to 64");
        return true;
    }

    bool readElements() {
        const auto bytes = static_cast<std::uint64_t>(record_.elementCount) * layout::elementBytes;
        return take(record_.elements, bytes, "the elements are cut off");
    }

    bool readSends() {
        constexpr int sources = layout::sendSources - layout::headerBytes;
        for (std::size_t i = 0; i < record_.sends.size(); ++i) {
            const auto source = record_.fixedPart.at<std::uint8_t>(sources + i);
            if (source == 0) continue;
            SendRecord& send = record_.sends[i];
            send.source = source == 2 ? SendSource::master : SendSource::patch;
            if (!take(send.slot, layout::elementBytes, "a send slot is cut off")) return false;
        }
        return true;
    }

    bool readTail() {
        if (!take(record_.endMark, "the end mark is missing")) return false;
        if (record_.endMark != layout::tailMark) return true;
        std::int32_t highest = 0;
        if (!take(record_.controllers, layout::controllerMapBytes,
                  "the controller map is cut off") ||
            !take(highest, "the number of scenes is missing"))
            return false;
        for (std::int64_t slot = 0; slot <= highest; ++slot)
            if (!readScene(slot)) return false;
        std::uint32_t last = 0;
        return take(last, "the last word is missing");
    }

    bool readScene(std::int64_t slot) {
        std::uint32_t bytes = 0;
        if (!take(bytes, "a scene is missing")) return false;
        if (bytes == 0) return true;
        at_ -= sizeof bytes;  // the size counts its own word
        if (bytes < sceneLayout::smallestBytes) return refuse(at_, "a scene is too short");
        ByteView scene;
        if (!take(scene, bytes, "a scene is cut off")) return false;
        if (slot < sceneLayout::slots) record_.scenes[static_cast<std::size_t>(slot)] = scene;
        return true;
    }

    ByteView body_;
    std::uint64_t start_, at_ = 0;
    PatchRecord record_;
    RecordFault fault_;
};

/// Whether a record's header begins at an offset. The tag may stand backwards; numbers never do.
bool hasTag(ByteView block, std::uint64_t offset) {
    const auto word = block.at<std::uint32_t>(offset);
    return word == layout::tag || word == layout::reversedTag;
}

ParsedRecord parseBody(ByteView block, std::uint64_t offset, std::uint32_t version) {
    if (version >= layout::firstUnknownVersion)
        return RecordFault{RecordFault::Kind::tooNew, offset, "the record is of a later version"};
    return Parser{block.from(offset), offset, version}.parse();
}

ParsedRecord parseBehindHeader(ByteView block, std::uint64_t start) {
    if (!block.has(start, layout::headerBytes))
        return RecordFault{RecordFault::Kind::damaged, start, "the header is cut off"};
    const std::uint64_t kind = start + layout::kind;
    if (block.at<std::uint8_t>(kind) == layout::bankKind)
        return RecordFault{RecordFault::Kind::noRecord, kind, "a bank is no patch"};
    return parseBody(block, start + layout::headerBytes,
                     block.at<std::uint32_t>(start + layout::version));
}

}  // namespace

ParsedRecord parsePatchRecord(ByteView block) {
    for (const int start : {0, layout::wrapperBytes})
        if (hasTag(block, static_cast<std::uint64_t>(start)))
            return parseBehindHeader(block, static_cast<std::uint64_t>(start));
    return RecordFault{RecordFault::Kind::noRecord, 0, "there is no patch record"};
}

ParsedRecord parseRecordInBank(ByteView bank, std::uint64_t offset, std::uint32_t bankVersion) {
    if (!bank.has(offset, sizeof layout::tag))
        return RecordFault{RecordFault::Kind::damaged, offset, "the record lies outside the bank"};
    if (hasTag(bank, offset)) return parseBehindHeader(bank, offset);
    if (offset < layout::headerBytes)
        return RecordFault{RecordFault::Kind::damaged, offset,
                           "there is no room for a header before the record"};
    return parseBody(bank, offset, bankVersion);
}

}  // namespace stratovane
