// Registered and non-registered parameter numbers, program changes and combi steps.

#include <algorithm>
#include <array>

#include "automation/host_parameters.h"
#include "content/content_library.h"
#include "engine/content_presence.h"
#include "engine/multi_setup.h"
#include "midi/general_midi.h"
#include "midi/message_settings.h"
#include "midi/midi_input.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

constexpr int nrpnBit = 16384;

/// A controller's value as a fraction: 127 is exactly 1.
constexpr float fraction(int value) {
    return value < 127 ? static_cast<float>(value) / 128.0f : 1.0f;
}

/// How a data entry's fraction becomes a host parameter's value.
enum class Mapping { plain, coarse, bend };

float mapped(Mapping mapping, float v) {
    switch (mapping) {
        case Mapping::coarse:
            return std::clamp((v - 0.5f) * 1.78f + 0.5f, 0.0f, 1.0f);
        case Mapping::bend:
            return v * 8.2f > 0.8f ? 1.0f : v * 8.2f;
        default:
            return v;
    }
}

struct Route {
    int number;  // registered number, or the patch parameter a non-registered one names
    int row, secondRow = -1;
    Mapping mapping = Mapping::plain;
};

constexpr std::array registered{
    Route{0, strip::bendUp, strip::bendDown, Mapping::bend},
    Route{1, strip::fineTune},
    Route{2, strip::coarseTune, -1, Mapping::coarse},
    Route{3, strip::tuningScale},
    Route{4, strip::tuningBank},
};

// Patch parameters that the host shows too: it and the mixer must see the change.
constexpr std::array shownByHost{
    Route{0, strip::mute},
    Route{3, strip::glideMode},
    Route{14, strip::firstKnob},
    Route{15, strip::firstKnob + 1},
    Route{17, strip::arpeggiatorOn},
    Route{55, strip::coarseTune, -1, Mapping::coarse},
    Route{56, strip::fineTune},
    Route{57, strip::monoMode},
    Route{60, strip::pan},
    Route{63, strip::firstSend},
    Route{64, strip::firstSend + 1},
    Route{65, strip::firstSend + 2},
    Route{66, strip::firstSend + 3},
    Route{67, strip::level},
    Route{73, strip::bendUp, strip::bendDown, Mapping::bend},
    Route{76, strip::tuningBank},
    Route{77, strip::tuningScale},
    Route{103, strip::firstKnob + 2},
    Route{105, strip::firstKnob + 3},
    Route{107, strip::firstKnob + 4},
    Route{109, strip::firstKnob + 5},
    Route{148, strip::glideTime},
};

template <std::size_t n>
const Route* find(const std::array<Route, n>& routes, int number) {
    const auto at = std::find_if(routes.begin(), routes.end(),
                                 [number](const Route& r) { return r.number == number; });
    return at == routes.end() ? nullptr : &*at;
}

}  // namespace

void MidiInput::dataEntry(int channel, int value, Engine& engine) {
    const std::int32_t selected = multi_.part[static_cast<std::size_t>(channel)].parameterNumber;
    const float v = fraction(value);
    if (selected >= nrpnBit) {
        if (multi_.generalMidi || selected - nrpnBit == nullParameterNumber) return;
        return setByNumber(channel, selected - nrpnBit, v, engine);
    }
    if (const Route* route = find(registered, selected)) {
        constexpr MessageSets::Kind kept[] = {MessageSets::bendRange, MessageSets::fineTune,
                                              MessageSets::coarseTune};
        if (static_cast<std::size_t>(selected) < std::size(kept))
            multi_.part[static_cast<std::size_t>(channel)].sets.note(kept[selected],
                                                                     mapped(route->mapping, v));
        setHost(channel, route->row, mapped(route->mapping, v), engine);
        if (route->secondRow >= 0)
            setHost(channel, route->secondRow, mapped(route->mapping, v), engine);
    }
}

void MidiInput::setByNumber(int channel, int number, float v, Engine& engine) {
    const Route* route = find(shownByHost, number);
    if (route == nullptr)
        return messages_.set(engine,
                             MessageSettings::patchValue(channel, number >> 8, number & 255, v));
    setHost(channel, route->row, mapped(route->mapping, v), engine);
    if (route->secondRow >= 0)
        setHost(channel, route->secondRow, mapped(route->mapping, v), engine);
    multi_.part[static_cast<std::size_t>(channel)].changes.bump();
}

void MidiInput::programChange(int channel, int program, std::int32_t frame) {
    PartSetup& part = multi_.part[static_cast<std::size_t>(channel)];
    const std::int32_t bank = part.bankSelect;
    if (settings_.midiCombis == CombiUse::chain) {
        if (const std::int32_t combi = multi_.combis.at(program); combi != CombiTable::none) {
            request(channel, combi, frame);
            multi_.combis.current = program;
            return;
        }
    }
    std::int32_t location = (bank << 8) + program;
    if (multi_.generalMidi) {
        using namespace generalMidi;
        const int msb = bank >> 7;
        const bool drums = channel == drumPart ? msb != 121 : msb == 120;
        if (drums)
            location = kits << 8 | (presence_.has(kits, program) ? program : 0);
        else
            location = sounds << 8 | program;
        if (msb == 64 || msb == 126) location = combi;
    } else if (bank > 127) {
        return;  // names no library bank
    }
    if ((part.pendingProgram.get() & 0xFFFF) == static_cast<std::uint32_t>(location)) return;
    request(channel, location, frame);
}

void MidiInput::request(int channel, std::int32_t location, std::int32_t frame) {
    const CombiUse combis = settings_.midiCombis;
    const bool loadsCombi = location >= firstCombi && combis != CombiUse::off &&
                            (channel == parts - 1 || combis == CombiUse::chain) &&
                            presence_.has(location >> 8, location & 255);
    if (loadsCombi)
        replaceWaiting(frame);
    else if (!multi_.generalMidi)
        forgetControllers(channel, frame);
    multi_.part[static_cast<std::size_t>(channel)].pendingProgram.store(
        static_cast<std::uint32_t>(location) | programWaits);
    multi_.programRequests.bump();
}

void MidiInput::replaceWaiting(std::int32_t frame) {
    multi_.defaultPatchWanted = false;
    for (int part = 0; part < parts; ++part) {
        multi_.part[static_cast<std::size_t>(part)].pendingProgram.store(noProgram);
        if (!multi_.generalMidi) forgetControllers(part, frame);
    }
}

void MidiInput::forgetControllers(int part, std::int32_t frame) {
    multi_.part[static_cast<std::size_t>(part)].sets.forget();
    append(part, {frame, static_cast<std::uint8_t>(0xC0 | part), 0, 0, 0});
}

bool MidiInput::combiStep(int number, int value, std::int32_t frame) {
    const std::int32_t next = settings_.combiNextController,
                       previous = settings_.combiPreviousController;
    if (number != next && number != previous) return false;
    CombiTable& combis = multi_.combis;
    const std::int32_t last = combis.lastController;
    int direction = 0;
    if (next == previous)
        direction = value > 96 && last < 97 ? 1 : value < 32 && last >= 32 ? -1 : 0;
    else if (value >= 64 && last <= 63)
        direction = number == next ? 1 : -1;
    combis.lastController = value;
    if (direction == 0) return true;

    std::int32_t slot = combis.current;
    const int steps = slot < 0 ? 128 : 127;
    if (slot < 0 && direction < 0) slot = 128;
    for (int step = 0; step < steps; ++step) {
        slot = (slot + direction + 128) % 128;
        const std::int32_t location = combis.at(slot);
        if (location == CombiTable::none) continue;
        combis.current = slot;
        multi_.refresh.bump();
        multi_.dirty = true;
        multi_.part[parts - 1].bankSelect = location >> 8;
        if (!presence_.has(location >> 8, location & 255)) return true;
        if (multi_.requests.hasRoom()) replaceWaiting(frame);
        messages_.ask({Request::Kind::loadCombi, location, 0});
        return true;
    }
    return true;
}

}  // namespace stratovane
