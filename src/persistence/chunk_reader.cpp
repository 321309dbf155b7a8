#include "persistence/chunk_reader.h"

#include <cstring>

#include "automation/host_parameters.h"
#include "content/content_library.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/parameter_ids.h"
#include "patch/record_parser.h"
#include "persistence/chunk_layout.h"
#include "persistence/global_block.h"
#include "persistence/message.h"
#include "persistence/patch_loader.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

/// As printf's %.4s shows it.
std::string_view tagOf(ByteView chunk) { return chunk.part(0, 4).terminatedText(); }

bool refuse(const std::string& text) {
    tell(text);
    return false;
}
bool refuseChunk(ByteView chunk) {
    return refuse(printed("Error loading chunk (%s, %d bytes)", tagOf(chunk), chunk.size()));
}
bool refuseLaterVersion() {
    return refuse("Sorry, this bank requires a later version of Stratovane");
}
bool refuseBank(ByteView chunk, std::uint32_t version) {
    return refuse(printed("Error loading bank (%s, version %d.%d.%d)", tagOf(chunk),
                          version / 100000000, version / 1000000 % 10, version % 10000));
}

bool isTable(const CombiTable& combis) {
    for (int slot = 0; slot < globalLayout::combiSlots; ++slot)
        if (combis.at(slot) != CombiTable::none) return true;
    return false;
}

}  // namespace

bool ChunkReader::read(Engine& engine, ByteView chunk, const Source& source) {
    const bool preset = source.wanted == Wanted::preset;
    setup_.trace.write(TraceLevel::lifecycle, "setChunk(%s, %ld bytes)", preset ? "preset" : "bank",
                       chunk.size());
    setup_.multi.defaultPatchWanted = false;
    if (chunk.size() < smallestChunk || chunk.size() > largestChunk ||
        chunk.at<std::uint32_t>(0) != recordLayout::tag)
        return refuseChunk(chunk);
    if (preset || chunk.at<std::uint8_t>(recordLayout::kind) == 'P')
        return readPreset(engine, chunk, source.part);
    return readBank(engine, chunk, source.forMessage);
}

bool ChunkReader::readPreset(Engine& engine, ByteView chunk, int part) {
    const ParsedRecord parsed = parsePatchRecord(chunk);
    if (const auto* fault = std::get_if<RecordFault>(&parsed)) {
        setup_.trace.write(TraceLevel::warning, "patch record refused at %d: %s", fault->offset,
                           fault->sentence);
        return fault->kind == RecordFault::Kind::tooNew ? refuseLaterVersion() : refuseChunk(chunk);
    }
    loader_.load(engine, part, std::get<PatchRecord>(parsed), {});
    PartSetup& setup = setup_.multi.part[static_cast<std::size_t>(part)];
    setup.location = 0;
    setup.pendingProgram.store(0);
    setup_.listener.partsChanged();
    setup_.multi.refresh.bump();
    return true;
}

bool ChunkReader::readBank(Engine& engine, ByteView chunk, bool forMessage) {
    const auto version = chunk.at<std::uint32_t>(recordLayout::version);
    if (version >= recordLayout::firstUnknownVersion) return refuseLaterVersion();
    if (chunk.at<std::uint16_t>(recordLayout::kind) != bankLayout::kindWord ||
        version < bankLayout::oldestVersion)
        return refuseBank(chunk, version);
    for (int part = 0; part < parts; ++part) readPart(engine, chunk, part, forMessage);
    readMasterEffects(engine, chunk);

    const auto globals = chunk.at<std::uint32_t>(bankLayout::globalOffset);
    if (globals >= bankLayout::records && chunk.has(globals, sizeof globalLayout::told))
        apply(engine, readGlobalBlock(chunk.from(globals)));
    else
        setup_.trace.write(TraceLevel::warning, "bank without settings: offset %d", globals);
    for (int part = 0; part < parts; ++part)
        setup_.parameters.set(encodeHostIndex({HostBlock::strip, part, 0, strip::lock}), 0.0f);
    setup_.multi.dirty = true;
    setup_.multi.refresh.bump();
    return true;
}

void ChunkReader::readPart(Engine& engine, ByteView chunk, int part, bool forMessage) {
    const auto offset =
        chunk.at<std::uint32_t>(static_cast<std::uint64_t>(bankLayout::partOffsets + 4 * part));
    if (offset == 0) return loader_.clear(engine, part, forMessage);
    const ParsedRecord parsed =
        parseRecordInBank(chunk, offset, chunk.at<std::uint32_t>(recordLayout::version));
    if (const auto* fault = std::get_if<RecordFault>(&parsed)) {
        setup_.trace.write(TraceLevel::warning, "record of part %d refused at %d: %s", part + 1,
                           fault->offset, fault->sentence);
        return loader_.clear(engine, part, forMessage);
    }
    loader_.load(engine, part, std::get<PatchRecord>(parsed),
                 {.mode = PatchLoader::Mode::restore, .forMessage = forMessage});
}

void ChunkReader::readMasterEffects(Engine& engine, ByteView chunk) {
    const std::uint64_t block = chunk.at<std::uint32_t>(bankLayout::masterOffset);
    Patch& master = engine.master();
    for (int slot = 0; slot < sendSlots; ++slot) {
        const std::uint64_t at =
            block + static_cast<std::uint64_t>(slot) * recordLayout::elementBytes;
        if (block < bankLayout::records || !chunk.has(at, recordLayout::elementBytes)) {
            setup_.trace.write(TraceLevel::warning, "bank without master effect %d: offset %d",
                               slot + 1, at);
            continue;
        }
        const ByteView effect = chunk.part(at, recordLayout::elementBytes);
        const ByteView values = effect.from(recordLayout::elementNameBytes);
        const int number = firstSendSlot + slot;
        master.setText(number, effect.part(0, recordLayout::elementNameBytes).terminatedText());
        for (int i = 0; i < recordLayout::values; ++i)
            master.recall(number, i,
                          i == elementIndex::type
                              ? 0.0f  // whatever it says, a slot holds an effect
                              : values.at<float>(static_cast<std::uint64_t>(i) * sizeof(float)));
        setup_.parameters.rememberMaster(slot);
    }
    master.applyLoading();
}

void ChunkReader::apply(Engine& engine, const GlobalBlock& block) {
    HostParameters& parameters = setup_.parameters;
    Settings& settings = setup_.settings;
    if (block.masterVolume) parameters.set(0, *block.masterVolume);
    for (int part = 1; part < parts; ++part)
        if (const auto link = block.links[static_cast<std::size_t>(part)])
            parameters.set(encodeHostIndex({HostBlock::strip, part, 0, strip::link}),
                           *link ? 1.0f : 0.0f);
    if (block.programName) setup_.setProgramName(*block.programName);
    if (block.curves) {
        settings.velocitySensitivity = block.curves->velocity;
        makeVelocityCurve(settings.velocitySensitivity, settings.velocityCurve);
        settings.touchSensitivity = block.curves->touch;
        makeTouchCurve(settings.touchSensitivity, settings.touchCurve);
        settings.memoryUse = block.curves->memoryUse;
        for (int part = 0; part < parts; ++part)
            engine.patch(part).store(0, global::eco, settings.memoryUse);
    }
    if (block.tuning) {
        setup_.multi.tune.semitones = block.tuning->semitones;
        setup_.multi.tune.fraction = block.tuning->fraction;
        settings.lift = block.tuning->lift;
        engine.setLift(settings.lift);
        parameters.refreshMasterGain();
        setup_.multi.generalMidi = block.tuning->generalMidi;
        applyMasterTune(engine, setup_.shared, setup_.multi.tune);
    }
    applyCombis(block);
}

/// A table that somebody has filled already stays, with all that belongs to it.
void ChunkReader::applyCombis(const GlobalBlock& block) {
    CombiTable& combis = setup_.multi.combis;
    if (!block.combis || isTable(combis)) return;
    Settings& settings = setup_.settings;
    for (std::size_t slot = 0; slot < combis.entries.size(); ++slot)
        combis.entries[slot] = block.combis->table[slot];
    settings.combiPreload = block.combis->preload;
    setup_.library.setPreloadMode(settings.combiPreload);
    if (block.combis->previousController)
        settings.combiPreviousController = *block.combis->previousController;
    if (block.combis->nextController) settings.combiNextController = *block.combis->nextController;
    if (block.combis->stepsKnown) combis.lastController = 63;
    combis.current = CombiTable::none;
}

}  // namespace stratovane
