#include "content/sample_set.h"

#include <algorithm>
#include <cmath>

namespace stratovane {

namespace {

// A zone record, little-endian.
constexpr std::size_t recordBytes = 64;
constexpr std::size_t flagsAt = 4, sampleAt = 8, framesAt = 16, loopAt = 20, tuneAt = 24,
                      loopTuneAt = 28, panAt = 32, levelAt = 36;
constexpr std::int32_t rootMask = 0x7F, rootFromKeyRange = 1 << 9;

float finiteAt(ByteView record, std::size_t offset) {
    const auto value = record.at<float>(offset);
    return std::isfinite(value) ? value : 0.0f;
}

}  // namespace

std::int32_t Zone::playedFrames(const SampleData& data) const {
    return std::clamp(frames, 0, data.frames());
}

std::int32_t Zone::playedLoop(const SampleData& data) const {
    return std::clamp(loopFrames, 0, playedFrames(data));
}

const Zone* SampleSet::find(int note, int velocity, const Zone* from) const {
    const std::int32_t wanted =
        (std::clamp(note, 0, 127) * 256 + std::clamp(velocity, 0, 127)) * 65536;
    // No key wanted is above Zone::last, so both searches end at the last zone at the latest.
    auto firstFrom = [](const Zone* zone, std::int32_t key) {
        while (zone->key < key) ++zone;
        return zone;
    };
    const Zone* group = firstFrom(from != nullptr ? from : zones.data(), wanted);
    const std::int32_t groupNote = group->key >> 24;
    return firstFrom(group, groupNote << 24 | (wanted & 0xFFFFFF));
}

std::unique_ptr<SampleSet> readSampleSet(ByteView item, ContentFault& fault) {
    auto set = std::make_unique<SampleSet>();
    for (std::uint64_t at = 0; item.has(at, recordBytes); at += recordBytes) {
        const ByteView record = item.part(at, recordBytes);
        const auto flags = record.at<std::int32_t>(flagsAt);
        set->zones.push_back({.key = record.at<std::int32_t>(0),
                              .sampleNumber = record.at<std::int32_t>(sampleAt),
                              .rootKey = static_cast<std::uint8_t>(flags & rootMask),
                              .rootFromKeyRange = (flags & rootFromKeyRange) != 0,
                              .frames = record.at<std::int32_t>(framesAt),
                              .loopFrames = record.at<std::int32_t>(loopAt),
                              .tuneSemitones = finiteAt(record, tuneAt),
                              .loopTuneSemitones = finiteAt(record, loopTuneAt),
                              .pan = finiteAt(record, panAt),
                              .level = finiteAt(record, levelAt)});
        if (set->zones.back().key >= Zone::last) return set;
    }
    fault = {item.size() - item.size() % recordBytes, "the zones do not end inside the item"};
    return nullptr;
}

Bytes writeSampleSet(std::span<const Zone> zones) {
    ByteWriter out;
    for (const Zone& zone : zones) {
        const std::size_t start = out.size();
        out.put(zone.key);
        out.put(static_cast<std::int32_t>((zone.rootKey & rootMask) |
                                          (zone.rootFromKeyRange ? rootFromKeyRange : 0)));
        out.put(zone.sampleNumber);
        out.zeros(framesAt - sampleAt - 4);
        out.put(zone.frames);
        out.put(zone.loopFrames);
        out.put(zone.tuneSemitones);
        out.put(zone.loopTuneSemitones);
        out.put(zone.pan);
        out.put(zone.level);
        out.fillTo(start + recordBytes);
    }
    return out.take();
}

}  // namespace stratovane
