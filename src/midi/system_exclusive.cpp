#include "midi/system_exclusive.h"

#include <array>

namespace stratovane {

namespace {

using Kind = SystemExclusive::Kind;
constexpr std::uint8_t start = 0xF0, end = 0xF7;

/// Where a message's value stands: behind the four bytes that name it.
enum class Value { none, both, high };  // both: LSB, MSB; high: the second of two bytes

struct Row {
    std::uint32_t name;  // class, device (7F: all), two bytes of what it is
    Kind kind;
    Value value;
};
constexpr Row rows[] = {
    {0x7F7F0401, Kind::masterVolume, Value::both},
    {0x7E7F0901, Kind::generalMidiOn, Value::none},
    {0x7E7F0902, Kind::generalMidiOff, Value::none},
    {0x7E7F0903, Kind::generalMidi2On, Value::none},
    {0x7F7F0403, Kind::masterFineTune, Value::both},
    {0x7F7F0404, Kind::masterCoarseTune, Value::high},
    {0x7F7F0405, Kind::otherParameter, Value::none},
};

/// Global parameter control: by the second byte of the slot path and the parameter.
struct ParameterRow {
    std::uint8_t slot, parameter;
    Kind kind;
};
constexpr ParameterRow parameterRows[] = {
    {1, 0, Kind::reverbType},     {1, 1, Kind::reverbTime},  {2, 0, Kind::chorusType},
    {2, 1, Kind::chorusRate},     {2, 2, Kind::chorusDepth}, {2, 3, Kind::chorusFeedback},
    {2, 4, Kind::chorusToReverb},
};

/// Bytes behind the four that name the message, and whether they came to a proper end.
struct Body {
    const std::uint8_t* bytes;
    std::int32_t count;
    bool complete;
};

Body bodyOf(const std::uint8_t* dump, std::int32_t length) {
    constexpr std::int32_t first = 5;
    std::int32_t at = first;
    while (at < length && dump[at] < 0x80) ++at;
    return {dump + first, at - first, at < length && dump[at] == end};
}

SystemExclusive readParameterControl(const Body& body) {
    // One slot of two bytes, one byte each for parameter and value.
    constexpr std::array<std::uint8_t, 4> shape{1, 1, 1, 1};
    constexpr std::int32_t size = 7;
    const SystemExclusive ignored{Kind::otherParameter, 0};
    if (body.count < size) return ignored;
    for (std::size_t i = 0; i < shape.size(); ++i)
        if (body.bytes[i] != shape[i]) return ignored;
    for (const ParameterRow& row : parameterRows)
        if (row.slot == body.bytes[4] && row.parameter == body.bytes[5])
            return {row.kind, body.bytes[6]};
    return ignored;
}

}  // namespace

SystemExclusive readSystemExclusive(const std::uint8_t* dump, std::int32_t length) {
    if (dump == nullptr || length < 5 || dump[0] != start) return {};
    std::uint32_t name = 0;
    for (int i = 1; i < 5; ++i) name = name << 8 | dump[i];
    for (const Row& row : rows) {
        if (row.name != name) continue;
        const Body body = bodyOf(dump, length);
        if (!body.complete) return {};
        if (row.kind == Kind::otherParameter) return readParameterControl(body);
        if (row.value == Value::none) return {row.kind, 0};
        if (body.count < 2) return {};
        const std::int32_t high = body.bytes[1];
        return {row.kind, row.value == Value::both ? high << 7 | body.bytes[0] : high};
    }
    return {};
}

std::string_view statusOf(Kind kind) {
    switch (kind) {
        case Kind::unknown:
            return {};
        case Kind::masterVolume:
            return "SysEx: Master Volume";
        case Kind::generalMidiOn:
            return "SysEx: General MIDI On";
        case Kind::generalMidiOff:
            return "SysEx: General MIDI Off";
        case Kind::generalMidi2On:
            return "SysEx: General MIDI 2 On";
        case Kind::masterFineTune:
            return "SysEx: Master Fine Tune";
        case Kind::masterCoarseTune:
            return "SysEx: Master Coarse Tune";
        case Kind::otherParameter:
            return "SysEx: Parameter Control (ignored)";
        case Kind::reverbType:
            return "SysEx: Reverb Type";
        case Kind::reverbTime:
            return "SysEx: Reverb Time";
        case Kind::chorusType:
            return "SysEx: Chorus Type";
        case Kind::chorusRate:
            return "SysEx: Chorus Rate";
        case Kind::chorusDepth:
            return "SysEx: Chorus Depth";
        case Kind::chorusFeedback:
            return "SysEx: Chorus Feedback";
        case Kind::chorusToReverb:
            return "SysEx: Chorus Send To Reverb";
    }
    return {};
}

}  // namespace stratovane
