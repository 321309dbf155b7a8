#include "content/scene_record.h"

#include <cmath>
#include <limits>

namespace stratovane {

namespace {

// Little-endian. Bytes 36..39, 68..91 and 492..495 are reserved.
constexpr std::size_t nameAt = 4, nameBytes = 32, flagsAt = 40, knobsAt = 44, arpeggiatorAt = 92,
                      stepsAt = 172, lengthAt = 496, countAt = 500, eventsAt = 504;
constexpr std::size_t freshTail = 24;  // zeros behind the events of a record that has no size yet
// An event: time and length (doubles), status, two data bytes, a byte that the first event uses.
constexpr std::size_t eventBytes = 24, noteLengthAt = 8, statusAt = 16, passThroughAt = 19;

template <std::size_t n>
void readValues(ByteView record, std::size_t offset, std::array<float, n>& values) {
    for (std::size_t i = 0; i < n; ++i) {
        values[i] = record.at<float>(offset + 4 * i);
        if (std::isnan(values[i])) values[i] = 0;
    }
}

template <std::size_t n>
void writeValues(ByteWriter& out, std::size_t offset, const std::array<float, n>& values) {
    for (std::size_t i = 0; i < n; ++i) out.putAt(offset + 4 * i, values[i]);
}

Phrase readPhrase(ByteView record) {
    Phrase phrase;
    const auto count = record.at<std::int32_t>(countAt);
    if (count < 0 || !record.has(eventsAt, eventBytes * static_cast<std::uint64_t>(count)))
        return phrase;
    phrase.lengthBeats = record.at<float>(lengthAt);
    phrase.events.reserve(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        const ByteView event = record.part(eventsAt + eventBytes * i, eventBytes);
        phrase.events.push_back({.beats = event.at<double>(0),
                                 .lengthBeats = event.at<double>(noteLengthAt),
                                 .status = event.at<std::uint8_t>(statusAt),
                                 .data1 = event.at<std::uint8_t>(statusAt + 1),
                                 .data2 = event.at<std::uint8_t>(statusAt + 2)});
    }
    phrase.passThrough = count > 0 && record.at<std::uint8_t>(eventsAt + passThroughAt) != 0;
    checkPhrase(phrase);
    return phrase;
}

}  // namespace

std::optional<Scene> readSceneRecord(ByteView bytes) {
    const auto size = bytes.at<std::uint32_t>(0);
    if (size < eventsAt || size > std::numeric_limits<std::int32_t>::max() || !bytes.has(0, size))
        return std::nullopt;
    const ByteView record = bytes.part(0, size);
    Scene scene;
    scene.name = record.part(nameAt, nameBytes - 1).terminatedText();
    scene.flags = record.at<std::uint32_t>(flagsAt);
    readValues(record, knobsAt, scene.knobs);
    readValues(record, arpeggiatorAt, scene.arpeggiator);
    readValues(record, stepsAt, scene.steps);
    scene.phrase = readPhrase(record);
    scene.storedBytes = size;
    return scene;
}

std::size_t sceneRecordBytes(const Scene& scene) {
    const std::size_t events = eventsAt + eventBytes * scene.phrase.events.size();
    return scene.storedBytes == 0 ? events + freshTail
                                  : std::max<std::size_t>(scene.storedBytes, events);
}

Bytes writeSceneRecord(const Scene& scene) {
    ByteWriter out;
    out.put(static_cast<std::uint32_t>(sceneRecordBytes(scene)));
    out.text(scene.name, nameBytes);
    out.putAt(flagsAt, scene.flags);
    writeValues(out, knobsAt, scene.knobs);
    writeValues(out, arpeggiatorAt, scene.arpeggiator);
    writeValues(out, stepsAt, scene.steps);
    out.putAt(lengthAt, scene.phrase.lengthBeats);
    out.putAt(countAt, static_cast<std::int32_t>(scene.phrase.events.size()));
    for (const PhraseEvent& event : scene.phrase.events) {
        const std::size_t start = out.size();
        out.put(event.beats);
        out.put(event.lengthBeats);
        for (const std::uint8_t byte : {event.status, event.data1, event.data2}) out.put(byte);
        const bool isFirst = start == eventsAt;
        out.put(static_cast<std::uint8_t>(isFirst && scene.phrase.passThrough ? 1 : 0));
        out.fillTo(start + eventBytes);
    }
    out.fillTo(sceneRecordBytes(scene));
    return out.take();
}

}  // namespace stratovane
