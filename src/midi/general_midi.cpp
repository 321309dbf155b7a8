#include "midi/general_midi.h"

#include "automation/host_parameters.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "midi/message_settings.h"
#include "patch/effect_preset.h"
#include "persistence/library_loader.h"
#include "persistence/patch_loader.h"
#include "persistence/program_word.h"

namespace stratovane {

namespace {

constexpr int reverbSlot = 0, chorusSlot = 2;
constexpr int reverbPreset = 98, chorusPreset = 99;
constexpr float reverbLevel = 0.5f, chorusLevel = 0.61f;
constexpr int outputLevelRow = 18;

constexpr int stripIndex(int part, int row) {
    return encodeHostIndex({HostBlock::strip, part, 0, row});
}

}  // namespace

void GeneralMidi::announceReset(MultiSetup& multi) {
    for (int part = 0; part < parts; ++part) {
        PartSetup& setup = multi.part[static_cast<std::size_t>(part)];
        const std::int32_t location = generalMidi::startLocation(part);
        setup.pendingProgram.store(static_cast<std::uint32_t>(location));
        setup.bankSelect = location >> 8;
    }
    multi.defaultPatchWanted = false;
}

void GeneralMidi::reset(Engine& engine, AskedBy by) {
    multi_.defaultPatchWanted = false;
    if (multi_.generalMidi)
        loadSounds(engine, by);
    else
        clearAll(engine);
    multi_.tune.semitones = 0;
    settings_.apply(engine, {Request::Kind::tuneFraction, 0, 0.0f});
}

void GeneralMidi::loadSounds(Engine& engine, AskedBy by) {
    const auto asked =
        by == AskedBy::message ? LibraryLoader::AskedBy::message : LibraryLoader::AskedBy::editor;
    for (int part = 0; part < parts; ++part) {
        if (part > 0) parameters_.set(stripIndex(part, strip::link), 0.0f);
        parameters_.set(stripIndex(part, strip::mute), 0.0f);
        parameters_.set(stripIndex(part, strip::lock), 0.0f);
        // The mix is part of what is handed over: a controller that came behind the reset and acts
        // on the new patch as soon as it plays must not be undone.
        const std::int32_t location = generalMidi::startLocation(part);
        if (library_.load(engine, part, location, asked, PatchLoader::Mix::plain) == 0)
            setPlainMix(part);
        settleProgram(multi_.part[static_cast<std::size_t>(part)],
                      static_cast<std::uint32_t>(location));
    }
    loadMasterEffect(engine, reverbSlot, reverbPreset, reverbLevel);
    emptyMasterEffect(engine, 1);
    loadMasterEffect(engine, chorusSlot, chorusPreset, chorusLevel);
    emptyMasterEffect(engine, 3);
}

void GeneralMidi::clearAll(Engine& engine) {
    for (int index = 0; index < hostParameters; ++index) parameters_.set(index, 0.0f);
    for (int part = 0; part < parts; ++part) patches_.clear(engine, part);
    for (int slot = 0; slot < slots; ++slot) emptyMasterEffect(engine, slot);
    for (int index = masterFirst; index < hostParameters; ++index)
        parameters_.set(index, hostDefault(index));
    for (int part = 0; part < parts; ++part) setPlainMix(part);
}

void GeneralMidi::setPlainMix(int part) {
    for (const PlainMix& row : plainMix) parameters_.set(stripIndex(part, row.row), row.value);
}

void GeneralMidi::loadMasterEffect(Engine& engine, int slot, int preset, float level) {
    loadEffectPreset(engine.master(), firstSendSlot + slot, preset);
    parameters_.refreshMaster(slot);
    parameters_.set(encodeHostIndex({HostBlock::master, 0, slot, outputLevelRow}), level);
}

void GeneralMidi::emptyMasterEffect(Engine& engine, int slot) {
    emptyEffect(engine.master(), firstSendSlot + slot);
    parameters_.refreshMaster(slot);
}

void GeneralMidi::loadCombi(Engine& engine, std::int32_t location) {
    multi_.defaultPatchWanted = false;
    library_.load(engine, parts - 1, location, LibraryLoader::AskedBy::message);
    multi_.refresh.bump();
}

void GeneralMidi::carryOut(Engine& engine, const Request& request) {
    switch (request.kind) {
        case Request::Kind::loadCombi:
            return loadCombi(engine, request.argument);
        case Request::Kind::resetGeneralMidi:
            multi_.generalMidi = request.argument != 0;
            return reset(engine, AskedBy::message);
        case Request::Kind::loadEffect:
            return loadMasterEffect(engine, request.argument & 3, request.argument >> 2,
                                    request.value);
        default:
            return settings_.apply(engine, request);
    }
}

}  // namespace stratovane
