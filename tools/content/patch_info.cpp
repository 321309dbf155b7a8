#include "patch_info.h"

#include <iostream>

#include "content/program_files.h"
#include "failure.h"
#include "patch/element_rows.h"
#include "patch/record_parser.h"
#include "patch_check.h"
#include "shared/windows_1252.h"

namespace stratovane::content_tool {

namespace {

std::string field(ByteView bytes, std::uint64_t offset, std::uint64_t size) {
    return utf8FromWindows1252(bytes.part(offset, size).terminatedText());
}

std::string typeOf(ByteView element) {
    const auto value = element.at<float>(recordLayout::elementNameBytes + 4 * elementIndex::type);
    const int type = choice(toUnitRange(value), 15.9f);
    return std::string{elementTypeName(static_cast<ElementType>(type))};
}

void showRecord(const PatchRecord& record, const char* indent) {
    auto text = [&](int offset, int bytes) {
        return field(record.fixedPart,
                     static_cast<std::uint64_t>(offset - recordLayout::headerBytes),
                     static_cast<std::uint64_t>(bytes));
    };
    std::cout << indent << "Patch: " << text(recordLayout::name, recordLayout::nameBytes) << '\n'
              << indent << "Codes: " << text(recordLayout::codes, recordLayout::codesBytes) << '\n'
              << indent << "Version: " << record.version << '\n'
              << indent << "Location: " << record.idWord / 256 << '.' << record.idWord % 256 << '\n'
              << indent << "Elements: " << record.elementCount << '\n';
    for (int i = 0; i < record.elementCount; ++i) {
        const ByteView element = record.elements.part(
            static_cast<std::uint64_t>(i) * recordLayout::elementBytes, recordLayout::elementBytes);
        std::cout << indent << "  " << i + 1 << ' ' << typeOf(element) << ": "
                  << field(element, 0, recordLayout::elementNameBytes) << '\n';
    }
    for (std::size_t i = 0; i < record.sends.size(); ++i)
        if (record.sends[i].source != SendSource::none)
            std::cout << indent << "Send " << i + 1 << ": "
                      << field(record.sends[i].slot, 0, recordLayout::elementNameBytes)
                      << (record.sends[i].source == SendSource::master ? " (of the master)\n"
                                                                       : "\n");
}

}  // namespace

void showPatchInfo(const std::string& path, ByteView file) {
    auto refuse = [&](const ContentFault& fault) {
        throw Failure{Exit::input,
                      path + ", byte " + std::to_string(fault.offset) + ": " + fault.sentence};
    };
    const auto program = openProgramFile(file);
    if (!program || !program->bank) {
        const auto parsed = parsePatchRecord(file);
        if (const auto* fault = std::get_if<RecordFault>(&parsed))
            refuse({fault->offset, fault->sentence.data()});
        return showRecord(std::get<PatchRecord>(parsed), "");
    }
    if (const auto fault = judgeSetupFile(file)) refuse(*fault);
    constexpr std::uint64_t versionAt = 4, partsAt = 16;
    constexpr int parts = 16;
    const auto version = program->chunk.at<std::uint32_t>(versionAt);
    for (std::uint64_t part = 0; part < parts; ++part) {
        const auto offset = program->chunk.at<std::uint32_t>(partsAt + 4 * part);
        if (offset == 0) continue;
        std::cout << "Part " << part + 1 << '\n';
        const auto parsed = parseRecordInBank(program->chunk, offset, version);
        if (const auto* record = std::get_if<PatchRecord>(&parsed)) showRecord(*record, "  ");
    }
}

}  // namespace stratovane::content_tool
