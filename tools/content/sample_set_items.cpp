#include <algorithm>
#include <cmath>
#include <limits>

#include "bank_items.h"
#include "content/sample_set.h"

namespace stratovane::content_tool {

namespace {

constexpr float widestTune = 128;        // semitones
constexpr float largestLevel = 1000.0f;  // factor
constexpr int mostFrames = std::numeric_limits<std::int32_t>::max();
constexpr int lowestRateHz = 1000, highestRateHz = 384000;

/// How the samples of one version are stored.
struct Storage {
    SampleFormat format = SampleFormat::pcm16;
    int rateHz = 0;  // 0: that of the recording
};

/// Length and loop of a zone: told in frames of the recording, kept in frames of the sample.
void setFrames(const JsonNode& node, const SamplePool::Sample& sample, Zone& zone) {
    const auto& loop = sample.sound.loop;
    const auto length = node.find("length"), loopLength = node.find("loop");
    if (!length && !loopLength) {
        if (loop && !loop->forward)
            node.refuse("the loop in the sound file does not run forward; tell \"loop\" yourself");
        zone.frames = static_cast<std::int32_t>(loop ? loop->first + loop->frames : sample.frames);
        zone.loopFrames = static_cast<std::int32_t>(loop ? loop->frames : 0);
        return;
    }
    const int all = static_cast<int>(sample.originalFrames);
    const int frames = length ? length->integer(0, all) : all;
    const int looped = loopLength ? loopLength->integer(0, frames) : 0;
    auto scaled = [&](int count) { return static_cast<int>(std::lround(count * sample.ratio)); };
    zone.frames = std::min(scaled(frames), static_cast<int>(sample.frames));
    zone.loopFrames =
        looped == 0 ? 0 : std::clamp(scaled(looped), std::min(1, zone.frames), zone.frames);
}

Zone buildZone(const JsonNode& node, Storage storage, SamplePool& pool) {
    node.allow({"file", "root", "highKey", "highVelocity", "length", "loop", "tune", "loopTune",
                "pan", "level", "rootFromKeyRange"});
    Zone zone;
    zone.key =
        (node.integer("highKey", 0, 127, 127) * 256 + node.integer("highVelocity", 0, 127, 127)) *
        65536;
    zone.rootKey = static_cast<std::uint8_t>(node.integer("root", 0, 127, zone.rootKey));
    zone.rootFromKeyRange = node.flag("rootFromKeyRange", false);
    zone.tuneSemitones = node.number("tune", -widestTune, widestTune, 0);
    zone.loopTuneSemitones = node.number("loopTune", -widestTune, widestTune, 0);
    zone.pan = node.number("pan", -2, 2, 0);
    zone.level = node.number("level", -largestLevel, largestLevel, 1);
    const auto file = node.find("file");
    if (!file) {  // a zone of silence keeps what it says
        zone.frames = node.integer("length", 0, mostFrames, 0);
        zone.loopFrames = node.integer("loop", 0, mostFrames, 0);
        return zone;
    }
    const SamplePool::Sample& sample = pool.add(*file, storage.format, storage.rateHz);
    zone.sampleNumber = sample.number;
    if (!node.find("root"))
        zone.rootKey = static_cast<std::uint8_t>(sample.sound.rootKey.value_or(zone.rootKey));
    if (!node.find("tune")) zone.tuneSemitones = sample.sound.tuneSemitones;
    setFrames(node, sample, zone);
    return zone;
}

Bytes buildZones(const JsonNode& list, Storage storage, SamplePool& pool) {
    std::vector<Zone> zones;
    for (const JsonNode& node : list.elements()) zones.push_back(buildZone(node, storage, pool));
    std::stable_sort(zones.begin(), zones.end(),
                     [](const Zone& a, const Zone& b) { return a.key < b.key; });
    if (zones.empty() || zones.back().key < Zone::last) zones.push_back({.key = Zone::last});
    return writeSampleSet(zones);
}

}  // namespace

SampleFormat sampleFormat(const JsonNode& node) {
    const std::string name = node.text(longestName);
    for (const FormatName& row : formatNames)
        if (name == row.name) return row.format;
    node.refuse("\"pcm16\", \"float\" or \"delta\" was expected");
}

void buildSampleSet(const JsonNode& item, SampleFormat format, SamplePool& pool,
                    BankFileSource::Item& out) {
    item.allow({"number", "name", "second", "zones", "eco"});
    const JsonNode zones = item.at("zones");
    out.normal = buildZones(zones, {.format = format}, pool);
    const auto eco = item.find("eco");
    if (!eco) return;
    if (eco->isArray()) {
        out.eco = buildZones(*eco, {.format = format}, pool);
        return;
    }
    eco->allow({"rate", "format", "zones"});
    const auto ecoZones = eco->find("zones");
    const auto ecoFormat = eco->find("format");
    out.eco = buildZones(ecoZones ? *ecoZones : zones,
                         {.format = ecoFormat ? sampleFormat(*ecoFormat) : format,
                          .rateHz = eco->integer("rate", lowestRateHz, highestRateHz, 0)},
                         pool);
}

}  // namespace stratovane::content_tool
