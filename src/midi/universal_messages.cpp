// What the universal system-exclusive messages set and ask for.

#include <algorithm>
#include <cmath>

#include "automation/host_parameters.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "midi/general_midi.h"
#include "midi/message_settings.h"
#include "midi/midi_input.h"
#include "midi/status_line.h"
#include "mrx/events.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

using Kind = SystemExclusive::Kind;

// The master effects that the messages address, and the rows of what they set there.
constexpr int reverb = 0, chorus = 2;
constexpr int timeRow = 3, rateRow = 3, depthRow = 4, feedbackRow = 7, toReverbRow = 20;

/// A type is a preset; a negative one is not known.
constexpr int reverbPreset(int type) {
    return (type >= 0 && type <= 5) || type == 8 ? 100 + type : -1;
}
constexpr int chorusPreset(int type) { return type >= 0 && type <= 5 ? 110 + type : -1; }

Request effectValue(int slot, int row, float value) {
    return MessageSettings::hostValue(encodeHostIndex({HostBlock::master, 0, slot, row}), value);
}

}  // namespace

void MidiInput::systemExclusive(const SystemExclusiveEvent& event, Engine& engine) {
    const SystemExclusive message = readSystemExclusive(event.dump, event.dumpLength);
    act(message, std::max(event.head.frame, 0), engine);
    status_.tell(message.kind);
    multi_.refresh.bump();
    multi_.dirty = true;
}

void MidiInput::act(const SystemExclusive& message, std::int32_t frame, Engine& engine) {
    const auto value = static_cast<float>(message.value);
    switch (message.kind) {
        case Kind::unknown:
        case Kind::otherParameter:
            return;
        case Kind::masterVolume:
            return messages_.set(
                engine, MessageSettings::hostValue(0, value * 6.1e-5f * settings_.masterVolume));
        case Kind::generalMidiOn:
        case Kind::generalMidi2On:
            messages_.set(engine, {Request::Kind::generalMidi, 1, 0});
            return resetGeneralMidi(frame);
        case Kind::generalMidiOff:
            return messages_.set(engine, {Request::Kind::generalMidi, 0, 0});
        case Kind::masterFineTune:
            return messages_.set(engine, {Request::Kind::tuneFraction, 0,
                                          static_cast<float>(message.value - 8192) * 0.00012207f});
        case Kind::masterCoarseTune:
            return messages_.set(engine, {Request::Kind::tuneSemitones,
                                          std::clamp(message.value - 64, -MasterTune::mostSemitones,
                                                     MasterTune::mostSemitones),
                                          0});
        case Kind::reverbType:
            return askForEffect(reverb, reverbPreset(message.value), 0.43f);
        case Kind::reverbTime:
            return messages_.set(engine, effectValue(reverb, timeRow, value * 0.004f));
        case Kind::chorusType:
            return askForEffect(chorus, chorusPreset(message.value), 0.54f);
        case Kind::chorusRate:
            return messages_.set(engine, effectValue(chorus, rateRow, value * 0.004f));
        case Kind::chorusDepth:
            return messages_.set(engine, effectValue(chorus, depthRow, std::sqrt(value * 0.007f)));
        case Kind::chorusFeedback:
            return messages_.set(engine, effectValue(chorus, feedbackRow, value * 0.007f));
        case Kind::chorusToReverb:
            return messages_.set(engine, effectValue(chorus, toReverbRow, value * 0.004f));
    }
}

void MidiInput::askForEffect(int slot, int preset, float level) {
    if (preset >= 0) messages_.ask({Request::Kind::loadEffect, preset << 2 | slot, level});
}

/// What the reset is about to load stands in the parts' words at once, so that program changes
/// behind it are compared with that.
void MidiInput::resetGeneralMidi(std::int32_t frame) {
    if (multi_.requests.hasRoom()) {
        GeneralMidi::announceReset(multi_);
        for (int part = 0; part < parts; ++part) forgetControllers(part, frame);
    }
    messages_.ask({Request::Kind::resetGeneralMidi, 1, 0});
}

}  // namespace stratovane
