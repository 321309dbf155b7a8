#include "patch_check.h"

#include <variant>

#include "content/program_files.h"
#include "patch/record_parser.h"

namespace stratovane::content_tool {

namespace {

std::optional<ContentFault> faultOf(const ParsedRecord& parsed) {
    const auto* fault = std::get_if<RecordFault>(&parsed);
    if (fault == nullptr) return std::nullopt;
    return ContentFault{fault->offset, fault->sentence.data()};  // a literal
}

std::optional<ContentFault> judgeSetup(ByteView chunk) {
    constexpr std::uint64_t kindAt = 12, versionAt = 4, partsAt = 16, masterAt = 80, globalAt = 84;
    constexpr std::uint64_t masterBytes = sendSlots * recordLayout::elementBytes;
    constexpr std::uint32_t bankKind = 0x142;  // 'B', 1
    constexpr std::uint32_t oldest = 10030815;
    constexpr int parts = 16;
    if (chunk.at<std::uint32_t>(0) != recordLayout::tag)
        return ContentFault{0, "there is no setup"};
    const auto version = chunk.at<std::uint32_t>(versionAt);
    if (version < oldest) return ContentFault{versionAt, "the setup is of a forgotten version"};
    if (version >= recordLayout::firstUnknownVersion)
        return ContentFault{versionAt, "the setup is of a later version"};
    if (chunk.at<std::uint16_t>(kindAt) != bankKind)
        return ContentFault{kindAt, "a single patch is no setup"};
    for (std::uint64_t part = 0; part < parts; ++part) {
        const std::uint64_t at = partsAt + 4 * part;
        const auto offset = chunk.at<std::uint32_t>(at);
        if (offset == 0) continue;
        if (const auto fault = faultOf(parseRecordInBank(chunk, offset, version))) return fault;
    }
    if (!chunk.has(chunk.at<std::uint32_t>(masterAt), masterBytes))
        return ContentFault{masterAt, "the master effects leave the setup"};
    const auto global = chunk.at<std::uint32_t>(globalAt);
    if (!chunk.has(global, 4) || !chunk.has(global, 4ull + chunk.at<std::uint32_t>(global)))
        return ContentFault{globalAt, "the global values leave the setup"};
    return std::nullopt;
}

std::optional<ContentFault> behind(std::uint64_t bytes, std::optional<ContentFault> fault) {
    if (fault) fault->offset += bytes;
    return fault;
}

/// Whether the header is the host standard's and tells the chunk that follows.
std::optional<ContentFault> judgeHeader(ByteView file, bool bank) {
    const auto program = openProgramFile(file);
    if (!program) return ContentFault{0, "the header is not that of a program file"};
    if (program->bank != bank)
        return ContentFault{
            8, bank ? "this is the file of a single patch" : "this is the file of a whole setup"};
    if (program->announcedBytes > program->chunk.size())
        return ContentFault{(bank ? bankHeaderBytes : presetHeaderBytes) - 4,
                            "the chunk is shorter than the header tells"};
    return std::nullopt;
}

}  // namespace

std::optional<ContentFault> judgePatch(ByteView record) {
    return faultOf(parsePatchRecord(record));
}

std::optional<ContentFault> judgePatchFile(ByteView file) {
    if (auto fault = judgeHeader(file, false)) return fault;
    return behind(presetHeaderBytes, judgePatch(file.from(presetHeaderBytes)));
}

std::optional<ContentFault> judgeSetupFile(ByteView file) {
    if (auto fault = judgeHeader(file, true)) return fault;
    return behind(bankHeaderBytes, judgeSetup(file.from(bankHeaderBytes)));
}

}  // namespace stratovane::content_tool
