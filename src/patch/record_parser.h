// Finds a patch record in a block of bytes and checks it as a whole before anything is set.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <variant>

#include "content/bytes.h"
#include "content/patch_record_layout.h"
#include "patch/patch.h"
#include "patch/record_fields.h"

namespace stratovane {

/// Why bytes are no patch record.
struct RecordFault {
    enum class Kind {
        noRecord,  // something else, or nothing
        tooNew,    // a version from later than this one
        damaged,
    };
    Kind kind = Kind::noRecord;
    std::uint64_t offset = 0;     // in the block, of what is wrong or missing
    std::string_view sentence{};  // what is wrong there
};

struct SendRecord {
    SendSource source = SendSource::none;
    ByteView slot;  // name and values, of the size of an element
};

/// A record in which every count is in range and everything announced is there. Views of the block
/// that it was found in, which must stay as it is.
struct PatchRecord {
    std::uint32_t version = 0;
    std::uint32_t idWord = 0;
    int elementCount = 0;
    ByteView fixedPart;  // from the id word to the elements
    ByteView elements;
    std::array<SendRecord, sendSlots> sends;
    std::uint32_t endMark = recordLayout::noTailMark;
    ByteView controllers;                               // behind end mark 2
    std::array<ByteView, sceneLayout::slots> scenes{};  // likewise; empty ones have no bytes
};

using ParsedRecord = std::variant<PatchRecord, RecordFault>;

/// The record at the block's start or behind a program file's header. Bytes behind it do not
/// matter. Any thread.
ParsedRecord parsePatchRecord(ByteView block);

/// The record at an offset inside a bank; those of old banks have no header of their own, and their
/// version is the bank's. Any thread.
ParsedRecord parseRecordInBank(ByteView bank, std::uint64_t offset, std::uint32_t bankVersion);

}  // namespace stratovane
