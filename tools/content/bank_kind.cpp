#include "bank_kind.h"

#include <filesystem>

#include "content/file_bytes.h"
#include "content/sample_set.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "content/wavetable.h"

namespace stratovane::content_tool {

std::optional<ContentKind> kindOfFolder(const std::string& path) {
    std::error_code error;
    const auto whole = std::filesystem::absolute(path, error);
    const std::string folder = whole.parent_path().filename().string() + "/";
    for (std::size_t i = 0; i < contentKindFacts.size(); ++i)
        if (folder == contentKindFacts[i].folder) return static_cast<ContentKind>(i + 1);
    return std::nullopt;
}

std::optional<ContentKind> kindOfBank(const std::string& path, const BankFile& bank) {
    if (const auto kind = kindOfFolder(path)) return kind;
    if (!bank.samples.empty()) return ContentKind::samples;
    ContentFault fault;
    for (const auto& item : bank.items) {
        const auto bytes = readFilePart(path, item.normal.offset, item.normal.size);
        if (!bytes || bytes->empty()) continue;
        if (readToneWheels(*bytes, fault)) return ContentKind::drawbars;
        if (readTuningItem(*bytes, fault) && bytes->size() == tuningItemBytes)
            return ContentKind::tunings;
        if (readWavetable(*bytes, fault)) return ContentKind::wavetables;
        if (readSampleSet(*bytes, fault)) return ContentKind::samples;
        break;
    }
    return std::nullopt;
}

}  // namespace stratovane::content_tool
