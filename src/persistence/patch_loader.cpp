#include "persistence/patch_loader.h"

#include <array>

#include "automation/host_parameters.h"
#include "engine/command_ring.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/parameter_ids.h"
#include "patch/record_reader.h"
#include "persistence/program_word.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

// What "Lock MIDI/Mix" keeps while patches are changed, by host row.
constexpr std::array lockedRows{
    strip::mute,
    strip::level,
    strip::pan,
    strip::firstSend,
    strip::firstSend + 1,
    strip::firstSend + 2,
    strip::firstSend + 3,
    strip::keyLow,
    strip::keyLow + 1,
    strip::keyLow + 2,
    strip::velocityLow,
    strip::velocityLow + 1,
    strip::velocityLow + 2,
    strip::coarseTune,
    strip::fineTune,
    strip::polyphony,
    strip::sendMode,
    strip::output,
};

}  // namespace

bool PatchLoader::load(Engine& engine, int part, ByteView block, const Source& source) {
    const ParsedRecord parsed = parsePatchRecord(block);
    if (const auto* fault = std::get_if<RecordFault>(&parsed)) {
        trace_.write(TraceLevel::warning, "patch record refused at %d: %s",
                     static_cast<std::int64_t>(fault->offset), fault->sentence);
        return false;
    }
    return load(engine, part, std::get<PatchRecord>(parsed), source);
}

bool PatchLoader::load(Engine& engine, int part, const PatchRecord& record, const Source& source) {
    trace_.write(TraceLevel::patch, "Engine::loadPatch(ch%d)", part);
    auto instance = engine.makeInstance(part);
    Patch& fresh = instance->patch();
    const ReadResult read =
        fillPatch(fresh, record,
                  {.master = &engine.master(),
                   .masterEffects =
                       source.mode == Mode::load ? MasterEffects::offer : MasterEffects::stepOver,
                   .pianoMode = settings_.memoryUse},
                  trace_);
    if (!source.name.empty()) fresh.setText(0, source.name);

    PartSetup& setup = multi_.part[static_cast<std::size_t>(part)];
    if (source.mode == Mode::restore) {
        const auto location = static_cast<std::int32_t>(record.idWord & 0xFFFF);
        noteLocation(part, location, source.forMessage);
        trace_.write(TraceLevel::patch, "ch.%d restore bankProg %X", part, location);
    }
    constexpr int noSceneRoot = 128, lastUserBank = 99;
    if (choice(fresh.get(0, global::sceneRootNote), 128.9f) == noSceneRoot &&
        source.libraryBank >= 0 && source.libraryBank <= lastUserBank) {
        fresh.recall(0, global::sceneRootNote, static_cast<float>(settings_.sceneRoot) / 128.0f);
        fresh.recall(0, global::sceneMidiSelect, settings_.sceneMidi ? 1.0f : 0.0f);
    }
    if (part > 0) {
        const int link = encodeHostIndex({HostBlock::strip, part, 0, strip::link});
        parameters_.set(link, parameters_.stored(link));
    }
    fresh.recall(0, global::eco, settings_.memoryUse);
    settleMixer(part, fresh, source.mode);
    if (source.mix == Mix::plain)
        for (const PlainMix& row : plainMix)
            fresh.recall(0, hostRow({HostBlock::strip, part, 0, row.row}).target, row.value);
    if (source.forMessage) setup.sets.applyTo(fresh);
    engine.adopt(part, std::move(instance),
                 source.forMessage ? Engine::AskedBy::message : Engine::AskedBy::editor);
    showToHost(part);

    // A record may have brought effects of its own into free slots of the master channel.
    for (int slot = 0; slot < sendSlots; ++slot)
        if (read.filledMaster[static_cast<std::size_t>(slot)]) parameters_.rememberMaster(slot);
    engine.master().applyLoading();
    return true;
}

void PatchLoader::clear(Engine& engine, int part, bool forMessage) {
    engine.patch(part).store(0, global::levelTrim, 0.0f);
    commands_.push(CommandKind::controller, part, CommandRing::allSoundOff, 0);
    auto empty = engine.makeInstance(part);
    empty->patch().recall(0, global::eco, settings_.memoryUse);
    engine.adopt(part, std::move(empty),
                 forMessage ? Engine::AskedBy::message : Engine::AskedBy::editor);
    noteLocation(part, 0, forMessage);
    showToHost(part);
    for (auto& knob : multi_.part[static_cast<std::size_t>(part)].knobs) knob = 0.5f;
}

void PatchLoader::noteLocation(int part, std::int32_t location, bool forMessage) {
    PartSetup& setup = multi_.part[static_cast<std::size_t>(part)];
    setup.location = location;
    if (!forMessage) overrideProgram(setup);  // else whoever loads settles it
}

/// The outgoing patch's values go into the new one before it plays.
void PatchLoader::settleMixer(int part, Patch& fresh, Mode mode) const {
    if (mode == Mode::restore) return;
    const auto keep = [&](int row) {
        const int index = encodeHostIndex({HostBlock::strip, part, 0, row});
        fresh.recall(0, hostRow(decodeHostIndex(index)).target, parameters_.get(index));
    };
    const int lock = encodeHostIndex({HostBlock::strip, part, 0, strip::lock});
    if (!isOn(parameters_.stored(lock))) {
        keep(strip::mute);
        keep(strip::output);
        return;
    }
    // A part that held nothing has no level worth keeping.
    const bool wasEmpty = parameters_.partIsEmpty(part);
    for (const int row : lockedRows) {
        const int index = encodeHostIndex({HostBlock::strip, part, 0, row});
        if (row == strip::level && wasEmpty && parameters_.get(index) == 0.0f) continue;
        keep(row);
    }
}

/// What the host reads back of the part, and the knobs that the editor shows.
void PatchLoader::showToHost(int part) {
    for (int row = 0; row < stripRows; ++row) {
        const HostAddress address{HostBlock::strip, part, 0, row};
        if (hostRow(address).target < 0) continue;
        const int index = encodeHostIndex(address);
        parameters_.remember(index, parameters_.get(index));
    }
    for (int slot = 0; slot < slots; ++slot)
        for (int row = 0; row < effectRows; ++row) {
            const HostAddress address{HostBlock::insert, part, slot, row};
            parameters_.rememberInsert(address);
        }
    PartSetup& setup = multi_.part[static_cast<std::size_t>(part)];
    for (int knob = 0; knob < 6; ++knob)
        setup.knobs[static_cast<std::size_t>(knob)] =
            parameters_.get(encodeHostIndex({HostBlock::strip, part, 0, strip::firstKnob + knob}));
}

}  // namespace stratovane
