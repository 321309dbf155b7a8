#include "item_check.h"

#include "content/sample_set.h"
#include "content/scene_record.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "content/wavetable.h"
#include "patch_check.h"

namespace stratovane::content_tool {

namespace {

std::optional<ContentFault> judgePhrase(ByteView file) {
    constexpr std::uint64_t lengthAt = 496, countAt = 500;
    const auto scene = readSceneRecord(file);
    if (!scene) return ContentFault{0, "the phrase's size does not fit the file"};
    const auto stored = file.at<std::int32_t>(countAt);
    if (scene->phrase.events.empty())
        return ContentFault{stored == 0 ? countAt : lengthAt, "the phrase has no usable event"};
    if (static_cast<std::size_t>(stored) != scene->phrase.events.size())
        return ContentFault{countAt, "some of the phrase's events are not usable"};
    return std::nullopt;
}

std::optional<ContentFault> judgeTuning(ByteView file) {
    if (file.text().find("note") == std::string_view::npos)
        return ContentFault{0, "the tuning has no line \"note N=CENTS\""};
    return std::nullopt;
}

}  // namespace

std::optional<ContentFault> judgeItem(ContentKind kind, ByteView item) {
    ContentFault fault;
    switch (kind) {
        case ContentKind::patches:
            return judgePatch(item);
        case ContentKind::phrases:
            return judgePhrase(item);
        case ContentKind::samples:
            return readSampleSet(item, fault) ? std::nullopt : std::optional{fault};
        case ContentKind::wavetables:
            return readWavetable(item, fault) ? std::nullopt : std::optional{fault};
        case ContentKind::tunings:
            return readTuningItem(item, fault) ? std::nullopt : std::optional{fault};
        case ContentKind::drawbars:
            return readToneWheels(item, fault) ? std::nullopt : std::optional{fault};
    }
    return std::nullopt;
}

std::optional<ContentFault> judgeFile(ItemFile type, ByteView file) {
    switch (type) {
        case ItemFile::patch:
            return judgePatchFile(file);
        case ItemFile::patchBank:
            return judgeSetupFile(file);
        case ItemFile::tuning:
            return judgeTuning(file);
        case ItemFile::phrase:
            return judgePhrase(file);
    }
    return std::nullopt;
}

}  // namespace stratovane::content_tool
