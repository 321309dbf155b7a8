#include "automation/host_rows.h"

namespace stratovane {

namespace {

constexpr std::array<HostRow, stripRows> stripTable{{
    {"Link to Ch.%d", -1, HostShow::onOff, HostEffect::masterOrLink},
    {" Mute", 0, HostShow::mute, HostEffect::mute},
    {"Level", 67, HostShow::decibels},
    {"Pan", 60, HostShow::pan},
    {" Output", 61, HostShow::outputPair},
    {"FX Send 1", 63, HostShow::decibels},
    {"FX Send 2", 64, HostShow::decibels},
    {"FX Send 3", 65, HostShow::decibels},
    {"FX Send 4", 66, HostShow::decibels},
    {" Edit Knob 1", 14},
    {" Edit Knob 2", 15},
    {" Edit Knob 3", 103},
    {" Edit Knob 4", 105},
    {" Edit Knob 5", 107},
    {" Edit Knob 6", 109},
    {" Key Low", 49},
    {" Key High", 50},
    {" Key Xfade", 51},
    {" Vel Low", 52},
    {" Vel High", 53},
    {" Vel Xfade", 54},
    {" Coarse Tune", 55},
    {" Fine Tune", 56},
    {" Polyphony", 58},
    {"FX Mode", 62, HostShow::sendMode},
    {"Lock MIDI/Mix", -1, HostShow::onOff, HostEffect::nothing},
    {" Level Trim", 59},
    {" Bend Up", 73},
    {" Bend Down", 74},
    {" Mono Mode", 57},
    {" Glide Mode", 3},
    {"Glide Time", 148, HostShow::signedPercent},
    {" Tuning1 Bank", 76},
    {" Tuning1 Scale", 77},
    {" Tuning1 Root", 78},
    {" Tuning2 Bank", 80},
    {" Tuning2 Scale", 81},
    {" Tuning2 Root", 82},
    {" Tuning2 Depth", 83},
    {" Arp. On", 17},
    {" Arp. Latch", 18},
    {" Arp. Mode", 19},
    {" Arp. Octaves", 20},
    {" Arp. Steps", 21},
    {" Arp. Sync", 22},
    {" Arp. Rate", 23, HostShow::percent, HostEffect::write, 0.8f, 0.2f},
    {"Arp. Gate", 24, HostShow::spacedPercent},
    {"Arp. Swing", 25, HostShow::spacedPercent},
    {" ", -1, HostShow::percent, HostEffect::nothing},
    {" ", -1, HostShow::percent, HostEffect::nothing},
    {" ", -1, HostShow::percent, HostEffect::nothing},
    {" ", -1, HostShow::percent, HostEffect::nothing},
    {" ", -1, HostShow::percent, HostEffect::nothing},
    {" ", -1, HostShow::percent, HostEffect::nothing},
    {" ", -1, HostShow::percent, HostEffect::nothing},
    {" ", -1, HostShow::percent, HostEffect::nothing},
}};

constexpr std::array<HostRow, effectRows> insertTable{{
    {" ", 0},
    {" ", 25},
    {" ", 26},
    {" ", 27},
    {" ", 28},
    {" ", 29},
    {" ", 30},
    {" ", 31},
    {" ", 32},
    {" ", 33},
    {" ", 34},
    {" ", 35},
    {" ", 36},
    {" ", 37},
    {" ", 38},
    {" ", 39},
    {" ", 40},
    {" ", 20},
    {"FX Output Mix", 139, HostShow::decibels},
    {"FX Output Pan", 140, HostShow::pan},
    {" ", 21},
    {" ", 22},
    {" ", 23},
    {" ", 24},
}};

constexpr HostRow own(std::string_view name, std::int16_t target) {
    return {name, target, HostShow::element};
}

// An empty name is the element's own name of the parameter, behind a blank.
constexpr std::array<HostRow, effectRows> masterTable{{
    own(" Mute", 0),
    own({}, 25),
    own({}, 26),
    own({}, 27),
    own({}, 28),
    own({}, 29),
    own({}, 30),
    own({}, 31),
    own({}, 32),
    own({}, 33),
    own({}, 34),
    own({}, 35),
    own({}, 36),
    own({}, 37),
    own({}, 38),
    own({}, 39),
    own({}, 40),
    own(" Output", 20),
    own("Output Level", 139),
    own("Output Pan", 140),
    own("Send to FX1", 21),
    own("Send to FX2", 22),
    own("Send to FX3", 23),
    own("Send to FX4", 24),
}};

}  // namespace

const HostRow& hostRow(const HostAddress& address) {
    const auto row = static_cast<std::size_t>(address.row);
    switch (address.block) {
        case HostBlock::strip:
            return stripTable[row];
        case HostBlock::insert:
            return insertTable[row];
        default:
            return masterTable[row];
    }
}

int hostIndexOf(int part, int element, int index) {
    constexpr int firstSlot = 65;  // number of the first send slot's element
    const bool master = part == parts;
    if (part < 0 || part > parts || index < 0 || (master && element == 0)) return -1;
    if (element != 0 && (element < firstSlot || element >= firstSlot + slots)) return -1;
    const HostBlock block = master         ? HostBlock::master
                            : element == 0 ? HostBlock::strip
                                           : HostBlock::insert;
    HostAddress address{block, master ? 0 : part, element == 0 ? 0 : element - firstSlot, 0};
    const int rows = block == HostBlock::strip ? stripRows : effectRows;
    for (; address.row < rows; ++address.row)
        if (hostRow(address).target == index) return encodeHostIndex(address);
    return -1;
}

float hostDefault(int index) {
    const HostAddress a = decodeHostIndex(index);
    if (a.block == HostBlock::strip) {
        if (index == 0) return 0.5f;  // master volume
        switch (a.row) {
            case strip::pan:
                return 0.5f;
            case strip::output:
                return 0.05f;
            case strip::keyHigh:
            case strip::velocityHigh:
                return 1.0f;
            case strip::coarseTune:
            case strip::fineTune:
            case strip::polyphony:
                return 0.5f;
            case strip::levelTrim:
                return 0.7087f;
            default:
                return 0.0f;
        }
    }
    if (hostRow(a).target == 139 || hostRow(a).target == 140) return 0.5f;  // output level and pan
    return a.block == HostBlock::master && hostRow(a).target == 20 ? 0.05f : 0.0f;
}

}  // namespace stratovane
