#include "persistence/chunk_writer.h"

#include "automation/host_parameters.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/record_writer.h"
#include "persistence/chunk_layout.h"
#include "persistence/global_block.h"
#include "persistence/message.h"
#include "settings/settings.h"

namespace stratovane {

namespace {

void writeMasterEffects(ByteWriter& out, const Patch& master) {
    for (int number = firstSendSlot; number <= elementTotal; ++number) {
        out.text(master.text(number), recordLayout::elementNameBytes);
        for (int i = 0; i < recordLayout::values; ++i) out.put(master.get(number, i));
    }
}

GlobalBlock songSettings(const SetupAccess& setup) {
    const MultiSetup& multi = setup.multi;
    const Settings& settings = setup.settings;
    GlobalBlock block;
    block.masterVolume = setup.parameters.stored(0);
    for (int part = 1; part < parts; ++part)
        block.links[static_cast<std::size_t>(part)] = isOn(
            setup.parameters.stored(encodeHostIndex({HostBlock::strip, part, 0, strip::link})));
    block.programName = setup.programName.data();
    block.curves = {.velocity = settings.velocitySensitivity,
                    .touch = settings.touchSensitivity,
                    .memoryUse = settings.memoryUse};
    block.tuning = {.semitones = multi.tune.semitones,
                    .fraction = multi.tune.fraction,
                    .lift = settings.lift,
                    .generalMidi = multi.generalMidi};
    SongCombis& combis = block.combis.emplace();
    for (std::size_t slot = 0; slot < combis.table.size(); ++slot)
        combis.table[slot] = multi.combis.at(static_cast<int>(slot));
    combis.current = multi.combis.current;
    combis.preload = settings.combiPreload;
    combis.previousController = settings.combiPreviousController;
    combis.nextController = settings.combiNextController;
    return block;
}

}  // namespace

Bytes ChunkWriter::record(Engine& engine, int part) const {
    const PartSetup& setup = setup_.multi.part[static_cast<std::size_t>(part)];
    Patch& patch = engine.patch(part);
    patch.setIdWord(static_cast<std::uint32_t>(setup.location.get()));
    return writePatchRecord(patch, &engine.master());
}

Bytes ChunkWriter::refuse(std::string_view what, std::size_t bytes, std::size_t most) {
    const std::string text =
        printed("The %s is too large to be saved (%d bytes, at most %d)", what, bytes, most);
    setup_.trace.write(TraceLevel::warning, "%s", std::string_view{text});
    if (!refused_) tell(text);
    refused_ = true;
    return {};
}

Bytes ChunkWriter::preset(Engine& engine, int part) {
    if (engine.patch(part).name().empty()) return {};
    Bytes bytes = record(engine, part);
    if (bytes.size() > largestPreset) return refuse("patch", bytes.size(), largestPreset);
    refused_ = false;
    return bytes;
}

Bytes ChunkWriter::bank(Engine& engine) {
    ByteWriter out;
    out.put(recordLayout::tag);
    out.put(recordLayout::currentVersion);
    out.fillTo(recordLayout::kind);
    out.put(bankLayout::kindWord);
    out.fillTo(bankLayout::records);
    for (int part = 0; part < parts; ++part) {
        if (setup_.parameters.partIsEmpty(part)) continue;  // its offset stays 0
        out.putAt(static_cast<std::size_t>(bankLayout::partOffsets + 4 * part),
                  static_cast<std::uint32_t>(out.size()));
        out.append(record(engine, part));
    }
    out.putAt(bankLayout::masterOffset, static_cast<std::uint32_t>(out.size()));
    writeMasterEffects(out, engine.master());
    out.putAt(bankLayout::globalOffset, static_cast<std::uint32_t>(out.size()));
    out.append(writeGlobalBlock(songSettings(setup_)));
    if (out.size() > largestChunk) return refuse("bank", out.size(), largestChunk);
    refused_ = false;
    return out.take();
}

}  // namespace stratovane
